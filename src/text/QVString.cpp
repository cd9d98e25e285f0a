#include <cstdarg>
#include <cstring>
#include <cwchar>

#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Guard.h"
#include "text/QVStringImpl.h"
#include "text/format_text.h"

using qv::With;

namespace {

// A new string's way to the caller's temporary pool.
template <class CreateString>
void* Temporary(void* string, CreateString createString) {
    void* created = With<QVStringImpl, void*>(string, nullptr, createString);
    return created ? QVTEMPOBJ(created) : nullptr;
}

// -1, 0 or 1 when one of the handles is null (null stands below every string), else what `compare` says.
template <class CompareStrings>
int Ordered(void* string1, void* string2, CompareStrings compare) {
    if (!string1 || !string2) return (string1 ? 1 : 0) - (string2 ? 1 : 0);
    return With<QVStringImpl>(string1, 0, compare);
}

}  // namespace

void* QVStringCreate() noexcept {
    return QVStringImpl::CreateWithText({});
}

void* QVStringCreateWithCString(const char* text) noexcept {
    return QVStringCreateWithCStringAndLength(text, text ? std::strlen(text) : 0);
}

void* QVStringCreateWithCStringAndLength(const char* text, unsigned long length) noexcept {
    return QVStringImpl::CreateWithUtf8({text, text ? length : 0});
}

void* QVStringCreateWithWideString(const wchar_t* text) noexcept {
    return QVStringCreateWithWideStringAndLength(text, text ? std::wcslen(text) : 0);
}

void* QVStringCreateWithWideStringAndLength(const wchar_t* text, unsigned long length) noexcept {
    return QVStringImpl::CreateWithText({text, text ? length : 0});
}

void* QVStringCreateWithFormat(void* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    void* string = With<QVStringImpl, void*>(format, nullptr, [&](const QVStringImpl& f) {
        return QVStringImpl::CreateWithText(qv::FormatText(f.GetBuffer(), f.GetLength(), arguments).get());
    });
    va_end(arguments);
    return string;
}

void* QVStringCreateWithHashValue128(QVHashValue128 value) noexcept {
    return QVStringImpl::CreateWithHashValue128(value);
}

void* QVStringCreateCopy(void* string) noexcept {
    return With<QVStringImpl, void*>(string, nullptr,
                                     [](const QVStringImpl& s) { return s.CreateCopyString(); });
}

void* QVStringCreateSubString(void* string, QVRange range) noexcept {
    return With<QVStringImpl, void*>(string, nullptr,
                                     [&](const QVStringImpl& s) { return s.CreateSubString(range); });
}

const wchar_t* QVStringGetBuffer(void* string) noexcept {
    return string ? qv::FromHandle<QVStringImpl>(string)->GetBuffer() : nullptr;
}

unsigned long QVStringGetLength(void* string) noexcept {
    return With<QVStringImpl>(string, 0UL, [](const QVStringImpl& s) { return s.GetLength(); });
}

wchar_t QVStringGetCharacterAtIndex(void* string, unsigned long index) noexcept {
    return With<QVStringImpl>(string, L'\0',
                              [&](const QVStringImpl& s) { return s.GetCharacterAtIndex(index); });
}

int QVStringCompare(void* string1, void* string2) noexcept {
    return Ordered(string1, string2, [&](const QVStringImpl& s) { return s.Compare(string2); });
}

int QVStringCaseInsensitiveCompare(void* string1, void* string2) noexcept {
    return Ordered(string1, string2,
                   [&](const QVStringImpl& s) { return s.CaseInsensitiveCompare(string2); });
}

void* QVStringUpperCaseString(void* string) noexcept {
    return Temporary(string, [](const QVStringImpl& s) { return s.CreateUpperCaseString(); });
}

void* QVStringLowerCaseString(void* string) noexcept {
    return Temporary(string, [](const QVStringImpl& s) { return s.CreateLowerCaseString(); });
}

void* QVStringLastPathComponent(void* string) noexcept {
    return Temporary(string, [](const QVStringImpl& s) { return s.CreateLastPathComponent(); });
}

void* QVStringByDeletingLastPathComponent(void* string) noexcept {
    return Temporary(string, [](const QVStringImpl& s) { return s.CreateByDeletingLastPathComponent(); });
}

void* QVStringByAppendingPathComponent(void* string, void* component) noexcept {
    return Temporary(string, [&](const QVStringImpl& s) {
        return component ? s.CreateByAppendingPathComponent(component) : s.CreateCopyString();
    });
}

void* QVStringByAppendingPathExtension(void* string, void* extension) noexcept {
    return Temporary(string, [&](const QVStringImpl& s) {
        return extension ? s.CreateByAppendingPathExtension(extension) : s.CreateCopyString();
    });
}

void* QVStringByExpandingTildeInPath(void* string) noexcept {
    return Temporary(string, [](const QVStringImpl& s) { return s.CreateByExpandingTildeInPath(); });
}

unsigned long QVStringHexUIntValue(void* string) noexcept {
    return With<QVStringImpl>(string, 0UL, [](const QVStringImpl& s) { return s.HexUIntValue(); });
}

void QVStringAppendString(void* string, void* other) noexcept {
    if (!other) return;
    With<QVStringImpl>(string, [&](QVStringImpl& s) { s.AppendString(other); });
}

void QVStringTrimLeft(void* string) noexcept {
    With<QVStringImpl>(string, [](QVStringImpl& s) { s.TrimLeft(); });
}

void QVStringTrimRight(void* string) noexcept {
    With<QVStringImpl>(string, [](QVStringImpl& s) { s.TrimRight(); });
}

void QVStringTrim(void* string) noexcept {
    QVStringTrimLeft(string);
    QVStringTrimRight(string);
}

void QVStringErase(void* string, unsigned long location, unsigned long length) noexcept {
    With<QVStringImpl>(string, [&](QVStringImpl& s) { s.Erase(location, length); });
}

void QVStringReplaceString(void* string, void* replacement, unsigned long location,
                           unsigned long length) noexcept {
    if (!replacement) return;
    With<QVStringImpl>(string, [&](QVStringImpl& s) { s.ReplaceString(replacement, location, length); });
}

unsigned long QVStringFindString(void* string, void* searched, unsigned long start) noexcept {
    if (!searched) return QVStringNotFound;
    return With<QVStringImpl>(string, QVStringNotFound,
                              [&](const QVStringImpl& s) { return s.FindString(searched, start); });
}

QVLineBreakType QVStringGetLineBreakType(void* string) noexcept {
    return With<QVStringImpl, QVLineBreakType>(string, QVLineBreakNone,
                                               [](const QVStringImpl& s) { return s.GetLineBreakType(); });
}

void QVStringConvertLineBreak(void* string, QVLineBreakType from, QVLineBreakType to) noexcept {
    With<QVStringImpl>(string, [&](QVStringImpl& s) { s.ConvertLineBreak(from, to); });
}
