// Strings for paths, and files over them.
#pragma once

#include <string>

#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVString.h>

#include "base/utf8.h"
#include "runtime/Owned.h"

namespace qvtest {

inline qv::Owned Text(const std::string& utf8) {
    return qv::Owned(QVStringCreateWithCString(utf8.c_str()));
}

inline qv::Owned WideText(const std::wstring& text) {
    return qv::Owned(QVStringCreateWithWideStringAndLength(text.data(), text.size()));
}

// The path of a file object, as UTF-8.
inline std::string PathOf(void* file) {
    return qv::ToUtf8(QVStringGetBuffer(QVFileGetPath(file))).value_or("not text");
}

inline qv::Owned FileAt(const std::string& path) {
    qv::Owned file(QVFileCreate());
    QVFileSetPath(file.Get(), Text(path).Get());
    return file;
}

// Text that cannot name a file, because no bytes stand for it.
inline qv::Owned SurrogateText() {
    return WideText({L'a', static_cast<wchar_t>(0xD800)});
}

}  // namespace qvtest
