// A file system for tests: the system's own, with failures, short transfers and a full disk on request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "platform/file_system.h"

namespace qvtest {

enum class FileOperation {
    kLookUp,
    kCanonicalise,
    kListDirectory,
    kReadLink,
    kOpen,
    kCreateExclusively,
    kReadAt,
    kWriteAt,
    kGetSize,
    kSetSize,
    kFlush,
    kClose,
    kMakeDirectory,
    kMakeLink,
    kRemoveFile,
    kRemoveDirectory,
    kSetAttributes,
    kMoveWithoutReplacing,
    kAny
};

// Stands in for the library's file system while it lives.
class FailingFiles : public qv::FileSystem {
public:
    FailingFiles();
    virtual ~FailingFiles();

    // Lets one call fail: the one of that operation that comes after `after` others. With `allLater`, the
    // later ones fail too. A descriptor that fails to close is closed all the same.
    void Fail(FileOperation operation, qv::FileError error, std::size_t after = 0, bool allLater = false);
    // Lets no transfer move more bytes at a time.
    void LimitTransfers(std::size_t bytes) { transferLimit_ = bytes; }
    // Lets the disk be full after so many more bytes: the last write moves what fits, the next one fails.
    void LimitDisk(std::uint64_t bytes) { diskRoom_ = bytes; }

    // Whether a call was made to fail.
    [[nodiscard]] bool HasFailed() const { return hasFailed_; }
    // Calls of any operation so far.
    [[nodiscard]] std::size_t Calls() const { return calls_; }
    [[nodiscard]] std::size_t Calls(FileOperation operation) const;
    // Descriptors opened and not closed.
    [[nodiscard]] int OpenDescriptors() const { return openDescriptors_; }

    qv::FileError LookUp(const std::string& path, qv::LinkRule rule, qv::ItemInfo& info) override;
    qv::FileError Canonicalise(const std::string& path, std::string& canonical) override;
    qv::FileError ListDirectory(const std::string& path, std::vector<std::string>& names) override;
    qv::FileError ReadLink(const std::string& path, std::string& target) override;
    qv::FileError Open(const std::string& path, qv::FileAccess access, int& descriptor,
                       qv::ItemInfo& info) override;
    qv::FileError CreateExclusively(const std::string& path, std::uint32_t permissions, int& descriptor,
                                    qv::ItemInfo& info) override;
    qv::FileError ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                         std::size_t& moved) override;
    qv::FileError WriteAt(int descriptor, const void* buffer, std::size_t size, std::uint64_t offset,
                          std::size_t& moved) override;
    qv::FileError GetSize(int descriptor, std::uint64_t& size) override;
    qv::FileError SetSize(int descriptor, std::uint64_t size) override;
    qv::FileError Flush(int descriptor) override;
    qv::FileError Close(int descriptor) override;
    qv::FileError MakeDirectory(const std::string& path, std::uint32_t permissions) override;
    qv::FileError MakeLink(const std::string& target, const std::string& path) override;
    qv::FileError RemoveFile(const std::string& path) override;
    qv::FileError RemoveDirectory(const std::string& path) override;
    qv::FileError SetAttributes(const std::string& path, const qv::ItemInfo& info) override;
    qv::FileError MoveWithoutReplacing(const std::string& from, const std::string& to) override;

private:
    // The error that this call is to give, if any.
    qv::FileError Meet(FileOperation operation);

    qv::FileSystem& system_;
    FileOperation failing_ = FileOperation::kAny;
    qv::FileError error_ = qv::FileError::kNone;
    std::size_t after_ = 0;
    bool allLater_ = false;
    bool hasFailed_ = false;
    std::size_t transferLimit_ = std::numeric_limits<std::size_t>::max();
    std::uint64_t diskRoom_ = std::numeric_limits<std::uint64_t>::max();
    std::size_t calls_ = 0;
    std::size_t callsOf_[static_cast<int>(FileOperation::kAny)] = {};
    int openDescriptors_ = 0;
};

// Runs `attempt` with the first, second, ... file-system call failing in turn, until it runs through without
// meeting the failure. Answers how many calls were made to fail. `attempt(files)` is called without a failure
// last.
template <class Attempt>
std::size_t FailEachFileCall(qv::FileError error, Attempt attempt) {
    for (std::size_t k = 0;; ++k) {
        FailingFiles files;
        files.Fail(FileOperation::kAny, error, k);
        attempt(files);
        if (!files.HasFailed()) return k;
    }
}

}  // namespace qvtest
