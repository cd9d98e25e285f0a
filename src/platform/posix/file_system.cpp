#include "platform/file_system.h"

#include <algorithm>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <memory>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qv {
namespace {

static_assert(sizeof(off_t) == 8, "files reach beyond 4 GiB on every host");

// Linux moves at most this many bytes in one call.
constexpr std::size_t kLargestTransfer = 0x7ffff000;

constexpr int kOpenFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

FileError ErrorOf(int number) noexcept {
    switch (number) {
        case 0:
            return FileError::kNone;
        case ENOENT:
        case ENOTDIR:
            return FileError::kNotFound;
        case EINVAL:
            return FileError::kBadArgument;
        case EACCES:
        case EPERM:
        case EROFS:
        case EBADF:
        case ETXTBSY:
            return FileError::kPermission;
        case EEXIST:
            return FileError::kExists;
        default:
            return FileError::kOther;
    }
}

// The outcome of a call that answers -1 on failure.
FileError OutcomeOf(int result) noexcept {
    return result == -1 ? ErrorOf(errno) : FileError::kNone;
}

// Repeats a call that a signal broke off.
template <class Call>
auto Retry(Call&& call) noexcept {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR) return result;
    }
}

ItemKind KindOf(mode_t mode) noexcept {
    if (S_ISREG(mode)) return ItemKind::kRegularFile;
    if (S_ISDIR(mode)) return ItemKind::kDirectory;
    if (S_ISLNK(mode)) return ItemKind::kLink;
    return ItemKind::kOther;
}

ItemInfo InfoOf(const struct stat& status) noexcept {
    ItemInfo info;
    info.kind = KindOf(status.st_mode);
    info.identity = {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
    info.size = static_cast<std::uint64_t>(status.st_size);
    info.owner = status.st_uid;
    info.permissions = status.st_mode & 0777;
    info.modified = status.st_mtim.tv_sec;
    info.modifiedNanoseconds = static_cast<std::int32_t>(status.st_mtim.tv_nsec);
    return info;
}

// Offsets that the system's signed type cannot hold are refused before they turn negative.
bool IsOffset(std::uint64_t offset) noexcept {
    return offset <= static_cast<std::uint64_t>(INT64_MAX);
}

// Keeps the descriptor of a regular file and closes any other.
FileError Accept(int opened, int& descriptor, ItemInfo& info) noexcept {
    if (opened == -1) return ErrorOf(errno);
    struct stat status;
    FileError error = OutcomeOf(fstat(opened, &status));
    if (error == FileError::kNone) {
        info = InfoOf(status);
        if (info.kind != ItemKind::kRegularFile) error = FileError::kOther;
    }
    if (error != FileError::kNone) {
        close(opened);
        return error;
    }
    descriptor = opened;
    return FileError::kNone;
}

// For file systems that cannot rename without replacing: a second name, then the first one goes. Never
// replaces either, but works for files only.
FileError LinkAndUnlink(const char* from, const char* to) noexcept {
    if (link(from, to) == -1) return ErrorOf(errno);
    if (unlink(from) == 0) return FileError::kNone;
    const FileError error = ErrorOf(errno);
    unlink(to);
    return error;
}

class PosixFileSystem final : public FileSystem {
public:
    constexpr PosixFileSystem() = default;

    FileError LookUp(const std::string& path, LinkRule rule, ItemInfo& info) override {
        struct stat status;
        const int result =
            rule == LinkRule::kFollow ? stat(path.c_str(), &status) : lstat(path.c_str(), &status);
        if (result == -1) return ErrorOf(errno);
        info = InfoOf(status);
        return FileError::kNone;
    }

    FileError Canonicalise(const std::string& path, std::string& canonical) override {
        const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), free);
        if (resolved == nullptr) return ErrorOf(errno);
        canonical = resolved.get();
        return FileError::kNone;
    }

    FileError ListDirectory(const std::string& path, std::vector<std::string>& names) override {
        const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
        if (directory == nullptr) return ErrorOf(errno);
        names.clear();
        for (;;) {
            errno = 0;
            const dirent* entry = readdir(directory.get());
            if (entry == nullptr) return ErrorOf(errno);
            std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(std::move(name));
        }
    }

    FileError ReadLink(const std::string& path, std::string& target) override {
        std::string text(PATH_MAX, '\0');
        const ssize_t size = readlink(path.c_str(), text.data(), text.size());
        if (size == -1) return ErrorOf(errno);
        text.resize(static_cast<std::size_t>(size));
        target = std::move(text);
        return FileError::kNone;
    }

    FileError Open(const std::string& path, FileAccess access, int& descriptor, ItemInfo& info) override {
        const int flags = kOpenFlags | (access == FileAccess::kRead ? O_RDONLY : O_RDWR);
        return Accept(Retry([&] { return open(path.c_str(), flags); }), descriptor, info);
    }

    FileError CreateExclusively(const std::string& path, std::uint32_t permissions, int& descriptor,
                                ItemInfo& info) override {
        const int flags = kOpenFlags | O_RDWR | O_CREAT | O_EXCL;
        return Accept(Retry([&] { return open(path.c_str(), flags, static_cast<mode_t>(permissions)); }),
                      descriptor, info);
    }

    FileError ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                     std::size_t& moved) override {
        return Transfer(size, offset, moved,
                        [&](std::size_t count, off_t at) { return pread(descriptor, buffer, count, at); });
    }

    FileError WriteAt(int descriptor, const void* buffer, std::size_t size, std::uint64_t offset,
                      std::size_t& moved) override {
        return Transfer(size, offset, moved,
                        [&](std::size_t count, off_t at) { return pwrite(descriptor, buffer, count, at); });
    }

    FileError GetSize(int descriptor, std::uint64_t& size) override {
        struct stat status;
        if (fstat(descriptor, &status) == -1) return ErrorOf(errno);
        size = static_cast<std::uint64_t>(status.st_size);
        return FileError::kNone;
    }

    FileError SetSize(int descriptor, std::uint64_t size) override {
        if (!IsOffset(size)) return FileError::kBadArgument;
        return OutcomeOf(Retry([&] { return ftruncate(descriptor, static_cast<off_t>(size)); }));
    }

    // Transfers reach the system at once, so nothing is left to hand over.
    FileError Flush(int) override { return FileError::kNone; }

    FileError Close(int descriptor) override {
        if (close(descriptor) == 0 || errno == EINTR) return FileError::kNone;
        return ErrorOf(errno);
    }

    FileError MakeDirectory(const std::string& path, std::uint32_t permissions) override {
        return OutcomeOf(mkdir(path.c_str(), static_cast<mode_t>(permissions)));
    }

    FileError MakeLink(const std::string& target, const std::string& path) override {
        return OutcomeOf(symlink(target.c_str(), path.c_str()));
    }

    FileError RemoveFile(const std::string& path) override { return OutcomeOf(unlink(path.c_str())); }

    FileError RemoveDirectory(const std::string& path) override {
        const FileError error = OutcomeOf(rmdir(path.c_str()));
        // Some systems say "exists" for a directory that is not empty.
        return error == FileError::kExists ? FileError::kOther : error;
    }

    FileError SetAttributes(const std::string& path, const ItemInfo& info) override {
        const FileError error = OutcomeOf(chmod(path.c_str(), static_cast<mode_t>(info.permissions)));
        if (error != FileError::kNone) return error;
        const timespec modified = {static_cast<time_t>(info.modified), info.modifiedNanoseconds};
        const timespec times[2] = {{0, UTIME_OMIT}, modified};
        return OutcomeOf(utimensat(AT_FDCWD, path.c_str(), times, 0));
    }

    FileError MoveWithoutReplacing(const std::string& from, const std::string& to) override {
#ifdef RENAME_NOREPLACE
        if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
            return FileError::kNone;
        if (errno != EINVAL && errno != ENOSYS) return ErrorOf(errno);
#endif
        return LinkAndUnlink(from.c_str(), to.c_str());
    }

private:
    template <class Call>
    static FileError Transfer(std::size_t size, std::uint64_t offset, std::size_t& moved, Call&& call) {
        moved = 0;
        if (!IsOffset(offset)) return FileError::kBadArgument;
        const std::size_t count = std::min(size, kLargestTransfer);
        const ssize_t result = Retry([&] { return call(count, static_cast<off_t>(offset)); });
        if (result == -1) return ErrorOf(errno);
        moved = static_cast<std::size_t>(result);
        return FileError::kNone;
    }
};

constinit PosixFileSystem systemFiles;
constinit FileSystem* replacedFiles = nullptr;

}  // namespace

FileSystem& Files() noexcept {
    return replacedFiles != nullptr ? *replacedFiles : systemFiles;
}

FileSystem* ReplaceFiles(FileSystem* replacement) noexcept {
    return std::exchange(replacedFiles, replacement);
}

}  // namespace qv
