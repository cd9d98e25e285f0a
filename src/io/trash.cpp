#include "io/trash.h"

#include <ctime>
#include <optional>
#include <utility>

#include "io/path_text.h"
#include "platform/clock.h"
#include "platform/user_data.h"

namespace qv {
namespace {

struct TrashedItem {
    std::string path;      // where it lies now
    std::string original;  // the same place from the root, without links
    std::string_view name;
};

// One trash directory, with its two folders.
struct Trash {
    std::string files;
    std::string info;
    std::string root;  // what the paths in info/ are relative to; empty when they are absolute
};

std::string DateText() {
    const std::tm now = LocalTimeNow();
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &now));
}

std::string_view ParentOf(std::string_view path) noexcept {
    if (path.ends_with('/')) path.remove_suffix(1);
    return path.substr(0, path.rfind('/') + 1);
}

// The item's place without links on the way; the item itself may be one.
FileError OriginalPlace(const std::string& path, std::string& place) {
    const std::string parent(ParentOf(path));
    std::string canonical;
    const FileError error = Files().Canonicalise(parent.empty() ? "." : parent, canonical);
    if (error == FileError::kNone) place = ItemPath(canonical, LastComponent(path));
    return error;
}

// A directory that may be there already.
FileError MakePrivateDirectory(const std::string& path) {
    const FileError error = Files().MakeDirectory(path, kPrivateDirectory);
    if (error != FileError::kExists) return error;
    ItemInfo info;
    const FileError looking = Files().LookUp(path, LinkRule::kFollow, info);
    if (looking != FileError::kNone) return looking;
    return info.kind == ItemKind::kDirectory ? FileError::kNone : FileError::kOther;
}

// A directory and those on the way to it.
FileError MakePrivateDirectories(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const FileError error = MakePrivateDirectory(path.substr(0, end));
        if (error != FileError::kNone || end == path.npos) return error;
    }
}

FileError OpenFolders(const std::string& directory, Trash& trash) {
    trash.files = ItemPath(directory, "files");
    trash.info = ItemPath(directory, "info");
    const FileError error = MakePrivateDirectory(trash.files);
    return error != FileError::kNone ? error : MakePrivateDirectory(trash.info);
}

FileError OpenUserTrash(Trash& trash) {
    const std::string data = UserDataDirectory();
    if (data.empty()) return FileError::kOther;
    const std::string directory = ItemPath(data, "Trash");
    const FileError error = MakePrivateDirectories(directory);
    return error != FileError::kNone ? error : OpenFolders(directory, trash);
}

std::string ParentDirectory(std::string_view path) {
    std::string parent(ParentOf(path));
    if (parent.size() > 1) parent.pop_back();
    return parent;
}

// The highest directory above the place that lies on the same file system as the directory around it.
FileError FileSystemRoot(const std::string& place, std::string& root) {
    root = ParentDirectory(place);
    ItemInfo info;
    FileError error = Files().LookUp(root, LinkRule::kFollow, info);
    const std::uint64_t device = info.identity.device;
    while (error == FileError::kNone && root != "/") {
        std::string parent = ParentDirectory(root);
        error = Files().LookUp(parent, LinkRule::kFollow, info);
        if (info.identity.device != device) break;
        root = std::move(parent);
    }
    return error;
}

// The trash at the root of the item's file system. Others may be able to write there, so a directory that is
// not this user's own is not trusted.
FileError OpenFileSystemTrash(const TrashedItem& item, Trash& trash) {
    FileError error = FileSystemRoot(item.original, trash.root);
    if (error != FileError::kNone) return error;
    const std::string directory = ItemPath(trash.root, ".Trash-" + std::to_string(UserNumber()));
    error = Files().MakeDirectory(directory, kPrivateDirectory);
    if (error != FileError::kNone && error != FileError::kExists) return error;
    ItemInfo info;
    error = Files().LookUp(directory, LinkRule::kLookAtLink, info);
    if (error != FileError::kNone) return error;
    if (info.kind != ItemKind::kDirectory || info.owner != UserNumber()) return FileError::kPermission;
    return OpenFolders(directory, trash);
}

FileError WriteNewFile(const std::string& path, std::string_view text) {
    int descriptor = -1;
    ItemInfo info;
    FileError error = Files().CreateExclusively(path, kPrivateFile, descriptor, info);
    if (error != FileError::kNone) return error;
    for (std::size_t written = 0; error == FileError::kNone && written < text.size();) {
        std::size_t moved = 0;
        error = Files().WriteAt(descriptor, text.data() + written, text.size() - written, written, moved);
        if (error == FileError::kNone && moved == 0) error = FileError::kOther;
        written += moved;
    }
    const FileError closing = Files().Close(descriptor);
    if (error == FileError::kNone) error = closing;
    if (error != FileError::kNone) static_cast<void>(Files().RemoveFile(path));
    return error;
}

std::string Candidate(std::string_view name, int number) {
    std::string candidate(name);
    if (!candidate.empty() && candidate.back() != '.') candidate += '.';
    return candidate += std::to_string(number);
}

// The info text is made first: making it claims the name. A name is free only when files/ does not have it
// either.
FileError MoveInto(const Trash& trash, TrashedItem& item) {
    std::string_view shown = item.original;
    if (!trash.root.empty()) shown.remove_prefix(ItemPath(trash.root, "").size());
    const std::string infoText = TrashInfoText(shown, DateText());
    for (int number = 1;; ++number) {
        const std::string candidate = Candidate(item.name, number);
        const std::string infoPath = ItemPath(trash.info, candidate + ".trashinfo");
        std::string place = ItemPath(trash.files, candidate);
        FileError error = WriteNewFile(infoPath, infoText);
        if (error == FileError::kExists) continue;
        if (error != FileError::kNone) return error;
        error = Files().MoveWithoutReplacing(item.path, place);
        if (error == FileError::kNone) {
            item.path = std::move(place);
            return error;
        }
        static_cast<void>(Files().RemoveFile(infoPath));
        if (error != FileError::kExists) return error;
    }
}

FileError MoveToUserTrash(TrashedItem& item) {
    Trash trash;
    const FileError error = OpenUserTrash(trash);
    return error != FileError::kNone ? error : MoveInto(trash, item);
}

FileError MoveToFileSystemTrash(TrashedItem& item) {
    Trash trash;
    const FileError error = OpenFileSystemTrash(item, trash);
    return error != FileError::kNone ? error : MoveInto(trash, item);
}

}  // namespace

FileError MoveToTrash(std::string& path, std::string_view name) {
    ItemInfo info;
    FileError error = Files().LookUp(path, LinkRule::kLookAtLink, info);
    if (error != FileError::kNone) return error;
    TrashedItem item = {path, "", name};
    error = OriginalPlace(path, item.original);
    if (error != FileError::kNone) return error;
    const FileError first = MoveToUserTrash(item);
    const FileError second = first == FileError::kNone ? FileError::kNone : MoveToFileSystemTrash(item);
    if (second != FileError::kNone) {
        const bool isPermission = first == FileError::kPermission || second == FileError::kPermission;
        return isPermission ? FileError::kPermission : FileError::kOther;
    }
    path = std::move(item.path);
    return FileError::kNone;
}

std::string TrashInfoText(std::string_view path, std::string_view date) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "[Trash Info]\nPath=";
    for (const char c : path) {
        if (kPlain.find(c) != kPlain.npos) {
            text += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            text += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    text += "\nDeletionDate=";
    text += date;
    return text += "\n";
}

}  // namespace qv
