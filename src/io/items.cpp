#include "io/items.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "io/path_text.h"

namespace qv {
namespace {

// Large enough that the system calls do not count, small enough to stay in the cache.
constexpr std::size_t kCopyPiece = std::size_t{256} * 1024;

class OpenDescriptor {
public:
    OpenDescriptor() = default;
    OpenDescriptor(const OpenDescriptor&) = delete;
    OpenDescriptor& operator=(const OpenDescriptor&) = delete;
    ~OpenDescriptor() {
        if (number != -1) static_cast<void>(Files().Close(number));
    }
    FileError Close() { return Files().Close(std::exchange(number, -1)); }

    int number = -1;
};

// One copy in progress. Works from lists and not by recursion, so that depth costs no stack.
class ItemCopier {
public:
    ItemCopier() = default;
    ItemCopier(const ItemCopier&) = delete;
    ItemCopier& operator=(const ItemCopier&) = delete;
    // Takes back what an unfinished copy has made.
    ~ItemCopier() {
        for (; !made_.empty(); made_.pop_back()) {
            if (made_.back().isMade) static_cast<void>(RemoveItem(made_.back().path));
        }
    }

    // A link is followed here and copied as a link further down.
    FileError Copy(const std::string& from, const std::string& to) {
        ItemInfo info;
        FileError error = Files().LookUp(from, LinkRule::kFollow, info);
        if (error != FileError::kNone) return error;
        error = CopyOne(from, to, info);
        while (error == FileError::kNone && !open_.empty()) {
            const Directory directory = std::move(open_.back());
            open_.pop_back();
            error = CopyContents(directory);
        }
        if (error == FileError::kNone) Finish();
        return error;
    }

private:
    struct Directory {
        std::string from;
        std::string to;
    };
    struct Copied {
        std::string path;
        ItemInfo source;
        bool isMade = false;  // until then, what stands at the path is not ours to take back
    };

    FileError CopyContents(const Directory& directory) {
        std::vector<std::string> names;
        FileError error = Files().ListDirectory(directory.from, names);
        for (const std::string& name : names) {
            if (error != FileError::kNone) break;
            const std::string from = ItemPath(directory.from, name);
            ItemInfo info;
            error = Files().LookUp(from, LinkRule::kLookAtLink, info);
            if (error == FileError::kNone) error = CopyOne(from, ItemPath(directory.to, name), info);
        }
        return error;
    }

    FileError CopyOne(const std::string& from, const std::string& to, const ItemInfo& info) {
        made_.push_back({to, info});
        switch (info.kind) {
            case ItemKind::kRegularFile:
                return CopyFile(from, made_.back());
            case ItemKind::kDirectory:
                return OpenDirectory(from, made_.back());
            case ItemKind::kLink:
                return CopyLink(from, made_.back());
            case ItemKind::kOther:
                break;
        }
        return FileError::kOther;
    }

    FileError OpenDirectory(const std::string& from, Copied& item) {
        open_.push_back({from, item.path});
        const FileError error = Files().MakeDirectory(item.path, kPrivateDirectory);
        item.isMade = error == FileError::kNone;
        return error;
    }

    static FileError CopyLink(const std::string& from, Copied& item) {
        std::string target;
        FileError error = Files().ReadLink(from, target);
        if (error == FileError::kNone) error = Files().MakeLink(target, item.path);
        item.isMade = error == FileError::kNone;
        return error;
    }

    FileError CopyFile(const std::string& from, Copied& item) {
        OpenDescriptor source;
        OpenDescriptor target;
        ItemInfo info;
        FileError error = Files().Open(from, FileAccess::kRead, source.number, info);
        if (error != FileError::kNone) return error;
        error = Files().CreateExclusively(item.path, kPrivateFile, target.number, info);
        if (error != FileError::kNone) return error;
        item.isMade = true;
        error = CopyBytes(source.number, target.number);
        const FileError closing = target.Close();
        return error != FileError::kNone ? error : closing;
    }

    FileError CopyBytes(int from, int to) {
        buffer_.resize(kCopyPiece);
        for (std::uint64_t offset = 0;;) {
            std::size_t count = 0;
            FileError error = Files().ReadAt(from, buffer_.data(), buffer_.size(), offset, count);
            if (error != FileError::kNone || count == 0) return error;
            error = WriteAll(to, count, offset);
            if (error != FileError::kNone) return error;
            offset += count;
        }
    }

    FileError WriteAll(int to, std::size_t count, std::uint64_t offset) {
        for (std::size_t written = 0; written < count;) {
            std::size_t moved = 0;
            const FileError error =
                Files().WriteAt(to, buffer_.data() + written, count - written, offset + written, moved);
            if (error != FileError::kNone) return error;
            if (moved == 0) return FileError::kOther;
            written += moved;
        }
        return FileError::kNone;
    }

    // Attributes go on last and inside out: a directory may be read-only, and its time changes with each item
    // made in it. Not every file system can keep them, which makes the copy no worse.
    void Finish() {
        for (; !made_.empty(); made_.pop_back()) {
            const Copied& item = made_.back();
            if (item.source.kind != ItemKind::kLink) {
                static_cast<void>(Files().SetAttributes(item.path, item.source));
            }
        }
    }

    std::vector<Directory> open_;  // made, but their contents are still to be copied
    std::vector<Copied> made_;
    std::vector<char> buffer_;
};

// Whether the directory is the item or lies inside it.
FileError IsInside(const std::string& item, const std::string& directory, bool& isInside) {
    std::string outer;
    std::string inner;
    FileError error = Files().Canonicalise(item, outer);
    if (error == FileError::kNone) error = Files().Canonicalise(directory, inner);
    if (error == FileError::kNone) isInside = ItemPath(inner, "").starts_with(ItemPath(outer, ""));
    return error;
}

}  // namespace

FileError RemoveItem(const std::string& path) {
    ItemInfo info;
    const FileError error = Files().LookUp(path, LinkRule::kLookAtLink, info);
    if (error != FileError::kNone) return error;
    return info.kind == ItemKind::kDirectory ? Files().RemoveDirectory(path) : Files().RemoveFile(path);
}

FileError CopyItem(const std::string& source, const std::string& directory) {
    bool isInside = false;
    const FileError error = IsInside(source, directory, isInside);
    if (error != FileError::kNone) return error;
    if (isInside) return FileError::kBadArgument;
    return ItemCopier().Copy(source, ItemPath(directory, LastComponent(source)));
}

}  // namespace qv
