#include "support/failing_files.h"

#include <algorithm>

using qv::FileError;

namespace qvtest {

FailingFiles::FailingFiles() : system_(qv::Files()) {
    qv::ReplaceFiles(this);
}

// A file system that replaced the system's own was not built to be stacked upon, so the system's own comes
// back.
FailingFiles::~FailingFiles() {
    qv::ReplaceFiles(nullptr);
}

void FailingFiles::Fail(FileOperation operation, FileError error, std::size_t after, bool allLater) {
    failing_ = operation;
    error_ = error;
    after_ = after;
    allLater_ = allLater;
    hasFailed_ = false;
}

std::size_t FailingFiles::Calls(FileOperation operation) const {
    return callsOf_[static_cast<int>(operation)];
}

FileError FailingFiles::Meet(FileOperation operation) {
    ++calls_;
    ++callsOf_[static_cast<int>(operation)];
    if (error_ == FileError::kNone) return FileError::kNone;
    if (failing_ != FileOperation::kAny && failing_ != operation) return FileError::kNone;
    if (hasFailed_ && !allLater_) return FileError::kNone;
    if (after_ > 0) {
        --after_;
        return FileError::kNone;
    }
    hasFailed_ = true;
    return error_;
}

FileError FailingFiles::LookUp(const std::string& path, qv::LinkRule rule, qv::ItemInfo& info) {
    const FileError error = Meet(FileOperation::kLookUp);
    return error != FileError::kNone ? error : system_.LookUp(path, rule, info);
}

FileError FailingFiles::Canonicalise(const std::string& path, std::string& canonical) {
    const FileError error = Meet(FileOperation::kCanonicalise);
    return error != FileError::kNone ? error : system_.Canonicalise(path, canonical);
}

FileError FailingFiles::ListDirectory(const std::string& path, std::vector<std::string>& names) {
    const FileError error = Meet(FileOperation::kListDirectory);
    return error != FileError::kNone ? error : system_.ListDirectory(path, names);
}

FileError FailingFiles::ReadLink(const std::string& path, std::string& target) {
    const FileError error = Meet(FileOperation::kReadLink);
    return error != FileError::kNone ? error : system_.ReadLink(path, target);
}

FileError FailingFiles::Open(const std::string& path, qv::FileAccess access, int& descriptor,
                             qv::ItemInfo& info) {
    FileError error = Meet(FileOperation::kOpen);
    if (error == FileError::kNone) error = system_.Open(path, access, descriptor, info);
    if (error == FileError::kNone) ++openDescriptors_;
    return error;
}

FileError FailingFiles::CreateExclusively(const std::string& path, std::uint32_t permissions, int& descriptor,
                                          qv::ItemInfo& info) {
    FileError error = Meet(FileOperation::kCreateExclusively);
    if (error == FileError::kNone) error = system_.CreateExclusively(path, permissions, descriptor, info);
    if (error == FileError::kNone) ++openDescriptors_;
    return error;
}

FileError FailingFiles::ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                               std::size_t& moved) {
    const FileError error = Meet(FileOperation::kReadAt);
    if (error != FileError::kNone) return error;
    return system_.ReadAt(descriptor, buffer, std::min(size, transferLimit_), offset, moved);
}

FileError FailingFiles::WriteAt(int descriptor, const void* buffer, std::size_t size, std::uint64_t offset,
                                std::size_t& moved) {
    FileError error = Meet(FileOperation::kWriteAt);
    if (error != FileError::kNone) return error;
    if (diskRoom_ == 0 && size > 0) return FileError::kOther;
    const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(size, diskRoom_));
    error = system_.WriteAt(descriptor, buffer, std::min(count, transferLimit_), offset, moved);
    if (error == FileError::kNone) diskRoom_ -= moved;
    return error;
}

FileError FailingFiles::GetSize(int descriptor, std::uint64_t& size) {
    const FileError error = Meet(FileOperation::kGetSize);
    return error != FileError::kNone ? error : system_.GetSize(descriptor, size);
}

FileError FailingFiles::SetSize(int descriptor, std::uint64_t size) {
    const FileError error = Meet(FileOperation::kSetSize);
    return error != FileError::kNone ? error : system_.SetSize(descriptor, size);
}

FileError FailingFiles::Flush(int descriptor) {
    const FileError error = Meet(FileOperation::kFlush);
    return error != FileError::kNone ? error : system_.Flush(descriptor);
}

FileError FailingFiles::Close(int descriptor) {
    --openDescriptors_;
    const FileError error = Meet(FileOperation::kClose);
    const FileError closing = system_.Close(descriptor);
    return error != FileError::kNone ? error : closing;
}

FileError FailingFiles::MakeDirectory(const std::string& path, std::uint32_t permissions) {
    const FileError error = Meet(FileOperation::kMakeDirectory);
    return error != FileError::kNone ? error : system_.MakeDirectory(path, permissions);
}

FileError FailingFiles::MakeLink(const std::string& target, const std::string& path) {
    const FileError error = Meet(FileOperation::kMakeLink);
    return error != FileError::kNone ? error : system_.MakeLink(target, path);
}

FileError FailingFiles::RemoveFile(const std::string& path) {
    const FileError error = Meet(FileOperation::kRemoveFile);
    return error != FileError::kNone ? error : system_.RemoveFile(path);
}

FileError FailingFiles::RemoveDirectory(const std::string& path) {
    const FileError error = Meet(FileOperation::kRemoveDirectory);
    return error != FileError::kNone ? error : system_.RemoveDirectory(path);
}

FileError FailingFiles::SetAttributes(const std::string& path, const qv::ItemInfo& info) {
    const FileError error = Meet(FileOperation::kSetAttributes);
    return error != FileError::kNone ? error : system_.SetAttributes(path, info);
}

FileError FailingFiles::MoveWithoutReplacing(const std::string& from, const std::string& to) {
    const FileError error = Meet(FileOperation::kMoveWithoutReplacing);
    return error != FileError::kNone ? error : system_.MoveWithoutReplacing(from, to);
}

}  // namespace qvtest
