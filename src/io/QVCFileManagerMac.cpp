#include "io/QVCFileManagerMac.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVScanner.h>
#include <QVFoundation/QVString.h>

#include "io/file_codes.h"
#include "io/items.h"
#include "io/path_text.h"
#include "runtime/Owned.h"

using qv::FileError;
using qv::Files;
using qv::ItemInfo;
using qv::ItemKind;
using qv::LinkRule;
using qv::ManagerCode;
using qv::Owned;
using qv::PathBytes;

namespace {

bool LookUp(void* path, ItemInfo& info) {
    const std::optional<std::string> bytes = PathBytes(path);
    return bytes && Files().LookUp(*bytes, LinkRule::kFollow, info) == FileError::kNone;
}

int MakeOneDirectory(const std::string& path) {
    ItemInfo info;
    if (Files().LookUp(path, LinkRule::kFollow, info) == FileError::kNone) {
        return info.kind == ItemKind::kDirectory ? QVNoErr : QVErrDuplicate;
    }
    return ManagerCode(Files().MakeDirectory(path, qv::kOrdinaryDirectory));
}

// A scanned piece holds the separator it was scanned up to.
void* CreateWithoutSeparator(void* piece) {
    const std::wstring_view text = qv::CharactersOf(piece);
    const std::size_t length = text.ends_with(L'/') ? text.size() - 1 : text.size();
    return qv::RequireObject(QVStringCreateWithWideStringAndLength(text.data(), length));
}

}  // namespace

std::uint16_t QVCFileManagerMac::GetTypeID() const {
    return QVTypeIDFileManager;
}

bool QVCFileManagerMac::IsExistsAtPath(void* path) {
    ItemInfo info;
    return LookUp(path, info);
}

bool QVCFileManagerMac::IsDirectory(void* path) {
    ItemInfo info;
    return LookUp(path, info) && info.kind == ItemKind::kDirectory;
}

int QVCFileManagerMac::MakeDirectory(void* path, bool intermediate) {
    const std::optional<std::string> bytes = PathBytes(path);
    if (!bytes) return QVErrIO;
    if (bytes->empty()) return QVErrFileNotFound;
    if (!intermediate) return MakeOneDirectory(*bytes);

    const qv::LocalPool pool;
    const Owned components(TokenizePathComponents(path));
    const unsigned long count = QVArrayGetCount(components.Get());
    // The first component of an absolute path is empty; without the "/" the rest would be relative.
    std::string current = bytes->starts_with('/') ? "/" : "";
    for (unsigned long i = 0; i < count; ++i) {
        const std::optional<std::string> component = PathBytes(QVArrayGetObjectAtIndex(components.Get(), i));
        if (!component || component->empty()) continue;
        current = qv::ItemPath(current, *component);
        const int code = MakeOneDirectory(current);
        if (code != QVNoErr) return code;
    }
    return QVNoErr;
}

void* QVCFileManagerMac::TokenizePathComponents(void* path) {
    // A component that is lost for lack of memory would make the rest name another directory, so room for all
    // of them is made at once, and a scan that ends early is noticed.
    const std::wstring_view text = qv::CharactersOf(path);
    const auto separators = static_cast<unsigned long>(std::count(text.begin(), text.end(), L'/'));
    Owned components(qv::RequireObject(QVArrayCreateWithCapacity(separators + 1)));
    const Owned scanner(qv::RequireObject(QVScannerCreateWithString(path)));
    for (void* piece = nullptr; QVScannerScanUpToCharacters(scanner.Get(), L"/", &piece) != 0;) {
        const Owned component(CreateWithoutSeparator(qv::RequireObject(piece)));
        QVArrayAddObject(components.Get(), component.Get());
    }
    if (static_cast<std::size_t>(QVScannerGetMarker(scanner.Get())) != text.size()) throw std::bad_alloc();
    return components.Detach();
}

int QVCFileManagerMac::DeleteItem(void* path) {
    const std::optional<std::string> bytes = PathBytes(path);
    if (!bytes) return QVErrIO;
    return ManagerCode(qv::RemoveItem(*bytes));
}

int QVCFileManagerMac::CopyItem(void* source, void* destination) {
    const std::optional<std::string> from = PathBytes(source);
    const std::optional<std::string> to = PathBytes(destination);
    if (!from || !to) return QVErrIO;
    return ManagerCode(qv::CopyItem(*from, *to));
}

int QVCFileManagerMac::EncodeToXML(void*) {
    return QVNoErr;
}
