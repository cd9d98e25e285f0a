#include "io/QVFileMacImpl.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QVFoundation/QVString.h>

#include "io/file_codes.h"
#include "io/items.h"
#include "io/path_text.h"
#include "io/trash.h"
#include "runtime/Guard.h"

using qv::FileAccess;
using qv::FileCode;
using qv::FileError;
using qv::Files;
using qv::ItemInfo;
using qv::LinkRule;

namespace {

// The n-th candidate for a name that nothing has yet: the path itself, then path.2, path.3, and so on.
// Temporary.
void* UniqueCandidate(void* path, std::uint32_t number) {
    if (number == 1) return path;
    const qv::Owned format(QVStringCreateWithWideString(L"%u"));
    const qv::Owned extension(QVStringCreateWithFormat(format.Get(), number));
    return qv::RequireObject(QVStringByAppendingPathExtension(path, qv::RequireObject(extension.Get())));
}

// Whether something stands at the path, be it a link that leads nowhere.
FileError LookForAnything(void* path) {
    const std::optional<std::string> bytes = qv::PathBytes(path);
    if (!bytes) return FileError::kOther;
    ItemInfo info;
    return Files().LookUp(*bytes, LinkRule::kLookAtLink, info);
}

}  // namespace

QVFileMacImpl::~QVFileMacImpl() {
    qv::Guard([this] {
        Close();
        if (isTemporary_ && IsCreationInPlace()) Delete(false);
    });
}

std::uint16_t QVFileMacImpl::GetTypeID() const {
    return QVTypeIDFile;
}

int QVFileMacImpl::OpenForReading() {
    Close();
    if (!path_) return QVErrFileNotFound;
    if (!hasReference_) {
        const int code = Resolve();
        if (code != QVNoErr) return code;
    }
    return Open(FileAccess::kRead);
}

int QVFileMacImpl::OpenForWriting() {
    Close();
    if (!path_) return QVErrFileNotFound;
    if (isNameChosen_ && !created_) return CreateFile();
    if (!hasReference_ && Resolve() != QVNoErr) return CreateFile();
    return Open(FileAccess::kReadAndWrite);
}

int QVFileMacImpl::Close() {
    Flush();
    if (!IsOpen()) return QVNoErr;
    fork_ = 0;
    return Files().Close(std::exchange(descriptor_, -1)) == FileError::kNone ? QVNoErr : QVErrBusy;
}

int QVFileMacImpl::SetPath(void* path) {
    if (IsOpen()) return QVErrBusy;
    KeepPath(path);
    return Resolve();
}

// The new string is retained before the old one goes, as they may be the same.
void QVFileMacImpl::KeepPath(void* path) {
    path_.Reset(QVRetain(path));
    hasReference_ = false;
    isNameChosen_ = false;
    created_.reset();
}

int QVFileMacImpl::Resolve() {
    std::optional<std::string> bytes = qv::PathBytes(path_.Get());
    if (!bytes) return QVErrIO;
    if (bytes->empty()) return QVErrFileNotFound;
    ItemInfo info;
    const FileError error = Files().LookUp(*bytes, LinkRule::kFollow, info);
    if (error != FileError::kNone) return FileCode(error);
    reference_ = {qv::AbsolutePath(std::move(*bytes)), info.kind};
    hasReference_ = true;
    return QVNoErr;
}

int QVFileMacImpl::Open(FileAccess access) {
    // Some devices act on being opened, so only files are tried.
    if (reference_.kind != qv::ItemKind::kRegularFile) return QVErrIO;
    int descriptor = -1;
    ItemInfo info;
    const FileError error = Files().Open(reference_.path, access, descriptor, info);
    if (error != FileError::kNone) return FileCode(error);
    BecomeOpen(descriptor, access == FileAccess::kReadAndWrite, info);
    return QVNoErr;
}

// The parent is looked at first, so that its code and not the new file's is reported when it is not there.
int QVFileMacImpl::CreateFile() {
    const std::wstring_view text = qv::CharactersOf(path_.Get());
    const std::size_t nameStart = text.rfind(L'/') + 1;  // no "/" gives npos, and npos + 1 is 0
    const std::optional<std::string> parent = qv::PathBytes(text.substr(0, nameStart));
    if (!parent) return QVErrIO;
    if (!parent->empty()) {
        ItemInfo info;
        const FileError error = Files().LookUp(*parent, LinkRule::kFollow, info);
        if (error != FileError::kNone) return FileCode(error);
    }
    const std::optional<std::string> name = qv::PathBytes(text.substr(nameStart));
    if (!name || name->empty()) return QVErrFileNotFound;

    Reference reference = {qv::AbsolutePath(*parent + *name), qv::ItemKind::kRegularFile};
    int descriptor = -1;
    ItemInfo info;
    const FileError error = Files().CreateExclusively(
        reference.path, isTemporary_ ? qv::kPrivateFile : qv::kOrdinaryFile, descriptor, info);
    if (error != FileError::kNone) return FileCode(error);
    reference_ = std::move(reference);
    hasReference_ = true;
    created_ = info.identity;
    BecomeOpen(descriptor, true, info);
    return QVNoErr;
}

void QVFileMacImpl::BecomeOpen(int descriptor, bool isWritable, const ItemInfo& info) {
    fork_ = 1;
    descriptor_ = descriptor;
    isWritable_ = isWritable;
    marker_ = 0;
    knownSize_ = info.size;
}

int QVFileMacImpl::SetMarker(int origin, long long offset) {
    if (!IsOpen()) return QVErrFileNotFound;
    Flush();
    if (origin < 0 || origin > 2) return QVErrParam;
    std::uint64_t start = 0;
    if (origin == 1) {
        const FileError error = Files().GetSize(descriptor_, start);
        if (error != FileError::kNone) return FileCode(error);
        knownSize_ = start;
    }
    long long marker = 0;
    if (__builtin_add_overflow(static_cast<long long>(start), offset, &marker)) return QVErrIO;
    if (marker < 0) return QVErrParam;
    marker_ = static_cast<std::uint64_t>(marker);
    return QVNoErr;
}

unsigned long long QVFileMacImpl::GetMarker() const {
    return IsOpen() ? marker_ : 0;
}

int QVFileMacImpl::ReadBytes(void* buffer, unsigned long size, unsigned long* done, bool) {
    if (!IsOpen()) return QVErrFileNotFound;
    if (buffer == nullptr && size > 0) return QVErrParam;
    auto* to = static_cast<char*>(buffer);
    unsigned long total = 0;
    std::size_t moved = 1;
    while (total < size && moved > 0) {
        const FileError error = Files().ReadAt(descriptor_, to + total, size - total, marker_, moved);
        if (error != FileError::kNone) return FileCode(error);
        marker_ += moved;
        total += moved;
    }
    if (done != nullptr) *done = total;
    if (total == size) return QVNoErr;
    knownSize_ = std::min(knownSize_, marker_);
    return QVErrEOF;
}

int QVFileMacImpl::WriteBytes(const void* buffer, unsigned long size, unsigned long* done, bool) {
    if (!IsOpen()) return QVErrFileNotFound;
    if (buffer == nullptr && size > 0) return QVErrParam;
    if (!isWritable_) return QVErrPermission;
    const auto* from = static_cast<const char*>(buffer);
    unsigned long total = 0;
    while (total < size) {
        std::size_t moved = 0;
        const FileError error = Files().WriteAt(descriptor_, from + total, size - total, marker_, moved);
        if (error != FileError::kNone) return FileCode(error);
        if (moved == 0) return QVErrIO;
        marker_ += moved;
        total += moved;
        knownSize_ = std::max(knownSize_, marker_);
    }
    if (done != nullptr) *done = total;
    return QVNoErr;
}

int QVFileMacImpl::Flush() {
    if (!IsOpen()) return QVErrFileNotFound;
    return FileCode(Files().Flush(descriptor_));
}

unsigned long long QVFileMacImpl::GetSize() const {
    std::uint64_t size = 0;
    if (!IsOpen() || Files().GetSize(descriptor_, size) != FileError::kNone) return 0;
    return size;
}

int QVFileMacImpl::SetSize(unsigned long long size) {
    if (!IsOpen()) return QVErrFileNotFound;
    if (!isWritable_) return QVErrPermission;
    const FileError error = Files().SetSize(descriptor_, size);
    if (error == FileError::kNone) knownSize_ = size;
    return FileCode(error);
}

int QVFileMacImpl::Delete(bool toTrash) {
    if (!hasReference_) return QVErrFileNotFound;
    if (toTrash) return MoveToTrash();
    const FileError error = qv::RemoveItem(reference_.path);
    if (error != FileError::kNone) return FileCode(error);
    hasReference_ = false;
    created_.reset();
    return QVNoErr;
}

// The name is the path's, even when an earlier move has given the file another one.
int QVFileMacImpl::MoveToTrash() {
    const std::optional<std::string> bytes = qv::PathBytes(path_.Get());
    if (!bytes) return QVErrIO;
    return FileCode(qv::MoveToTrash(reference_.path, qv::LastComponent(*bytes)));
}

int QVFileMacImpl::SetPathForUnique(void* path, bool temporary) {
    if (IsOpen()) return QVErrBusy;
    isTemporary_ = temporary;
    for (std::uint32_t number = 1; number < std::numeric_limits<std::uint32_t>::max(); ++number) {
        const qv::LocalPool pool;
        void* candidate = UniqueCandidate(path, number);
        const FileError error = LookForAnything(candidate);
        if (error == FileError::kNone) continue;
        if (error != FileError::kNotFound) return QVErrPermission;
        KeepPath(candidate);
        isNameChosen_ = true;
        return QVNoErr;
    }
    return QVErrPermission;
}

int QVFileMacImpl::EncodeToXML(void*) {
    return QVNoErr;
}

// Another file may have taken the place of the one that was made here; that one is not ours to delete.
bool QVFileMacImpl::IsCreationInPlace() const {
    if (!created_ || !hasReference_) return false;
    ItemInfo info;
    return Files().LookUp(reference_.path, LinkRule::kLookAtLink, info) == FileError::kNone &&
           info.identity == *created_;
}
