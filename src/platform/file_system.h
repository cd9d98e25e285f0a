// The file system as the library needs it: every path and every byte on disk passes through this one
// interface. Paths are bytes as the system takes them. Nothing here blocks: only regular files open.
// Transfers may move fewer bytes than asked; whoever needs all of them calls again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qv {

enum class [[nodiscard]] FileError{
    kNone,
    kNotFound,     // no such item, or a component of its path is no directory
    kBadArgument,  // the system refused the request itself
    kPermission,   // no permission, a read-only place, or the file is not open for this access
    kExists,       // an item of that name is there already
    kOther};

enum class ItemKind { kRegularFile, kDirectory, kLink, kOther };

// Tells one item from every other one that exists at the same time.
struct ItemIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    bool operator==(const ItemIdentity&) const = default;
};

struct ItemInfo {
    ItemKind kind = ItemKind::kOther;
    ItemIdentity identity;
    std::uint64_t size = 0;         // bytes
    std::uint32_t owner = 0;        // user ID
    std::uint32_t permissions = 0;  // the nine access bits
    std::int64_t modified = 0;      // seconds since 1970
    std::int32_t modifiedNanoseconds = 0;
};

enum class LinkRule { kFollow, kLookAtLink };
enum class FileAccess { kRead, kReadAndWrite };

// Access bits of new items, before the process's mask.
inline constexpr std::uint32_t kOrdinaryFile = 0666;
inline constexpr std::uint32_t kPrivateFile = 0600;
inline constexpr std::uint32_t kOrdinaryDirectory = 0777;
inline constexpr std::uint32_t kPrivateDirectory = 0700;

class FileSystem {
public:
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;

    // What stands at the path.
    virtual FileError LookUp(const std::string& path, LinkRule rule, ItemInfo& info) = 0;
    // The absolute path of an existing item without links, "." and "..".
    virtual FileError Canonicalise(const std::string& path, std::string& canonical) = 0;
    // The names in a directory, without "." and "..", in no particular order.
    virtual FileError ListDirectory(const std::string& path, std::vector<std::string>& names) = 0;
    virtual FileError ReadLink(const std::string& path, std::string& target) = 0;

    // Opening gives a descriptor and what it stands for. Directories, FIFOs and devices do not open (kOther).
    virtual FileError Open(const std::string& path, FileAccess access, int& descriptor, ItemInfo& info) = 0;
    // Makes a file that was not there and opens it for reading and writing; a link in its place counts as
    // there.
    virtual FileError CreateExclusively(const std::string& path, std::uint32_t permissions, int& descriptor,
                                        ItemInfo& info) = 0;

    // One transfer at an offset. Reading 0 of a non-zero size means the end of the file.
    virtual FileError ReadAt(int descriptor, void* buffer, std::size_t size, std::uint64_t offset,
                             std::size_t& moved) = 0;
    virtual FileError WriteAt(int descriptor, const void* buffer, std::size_t size, std::uint64_t offset,
                              std::size_t& moved) = 0;
    virtual FileError GetSize(int descriptor, std::uint64_t& size) = 0;
    virtual FileError SetSize(int descriptor, std::uint64_t size) = 0;
    // Hands everything written to the system, so that every other program sees it. Does not wait for the
    // disk.
    virtual FileError Flush(int descriptor) = 0;
    // The descriptor is gone afterwards, whatever the answer.
    virtual FileError Close(int descriptor) = 0;

    virtual FileError MakeDirectory(const std::string& path, std::uint32_t permissions) = 0;
    virtual FileError MakeLink(const std::string& target, const std::string& path) = 0;
    virtual FileError RemoveFile(const std::string& path) = 0;
    virtual FileError RemoveDirectory(const std::string& path) = 0;
    // Gives a file or directory the access bits and the modification time of another one.
    virtual FileError SetAttributes(const std::string& path, const ItemInfo& info) = 0;
    // Renames within one file system; what stands at the new path is never replaced.
    virtual FileError MoveWithoutReplacing(const std::string& from, const std::string& to) = 0;

protected:
    constexpr FileSystem() = default;
    ~FileSystem() = default;
};

// The file system that the library works on.
[[nodiscard]] FileSystem& Files() noexcept;

// Puts another one in its place and answers the one before; null stands for the system's own. For tests.
FileSystem* ReplaceFiles(FileSystem* replacement) noexcept;

}  // namespace qv
