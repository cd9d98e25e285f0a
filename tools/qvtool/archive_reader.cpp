#include "archive_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>

#include "tool.h"

namespace tool {

namespace {

constexpr char kSignature[] = "10449C48896D45A9";
constexpr std::size_t kSignatureSize = 16;
constexpr std::size_t kFixedHeaderSize = 22;  // signature, two format bytes, length of the options
constexpr std::uint64_t kCodeSize = 8;
constexpr std::uint64_t kItemHeaderSize = 18;

// The little-endian number in `size` bytes.
std::uint64_t Little(const unsigned char* bytes, unsigned size) {
    std::uint64_t value = 0;
    for (unsigned i = size; i-- > 0;) {
        value = value << 8 | bytes[i];
    }
    return value;
}

// A problem inside an archive, told with its place.
class Damaged : public std::runtime_error {
public:
    Damaged(std::uint64_t offset, const std::string& what)
        : std::runtime_error("damaged archive at offset " + std::to_string(offset) + ": " + what) {}
};

}  // namespace

std::uint64_t ArchiveItem::BodyOffset() const {
    return offset + kItemHeaderSize + attributeLength;
}

// Without O_NONBLOCK the opening of a pipe would wait for its writer.
ArchiveReader::ArchiveReader(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status {};
    if (descriptor_.Get() < 0 || fstat(descriptor_.Get(), &status) != 0) throw Failure(SystemText(path));
    if (!S_ISREG(status.st_mode)) throw Failure(path + ": not a regular file");
    size_ = static_cast<std::uint64_t>(status.st_size);
    ReadHeader();
    try {
        ReadItems();
        CheckEntries();
    } catch (const Damaged& damaged) {
        damage_ = damaged.what();
    }
}

void ArchiveReader::ReadAt(std::uint64_t offset, void* buffer, std::size_t size) const {
    auto* target = static_cast<unsigned char*>(buffer);
    while (size > 0) {
        const ssize_t done = pread(descriptor_.Get(), target, size, static_cast<off_t>(offset));
        if (done < 0) {
            throw Failure(SystemText(path_));
        }
        if (done == 0) {
            throw Failure(path_ + ": the file ends too early");
        }
        target += done;
        offset += static_cast<std::uint64_t>(done);
        size -= static_cast<std::size_t>(done);
    }
}

void ArchiveReader::ReadHeader() {
    std::array<unsigned char, kFixedHeaderSize> header{};
    if (size_ < kFixedHeaderSize + kCodeSize) {
        throw Failure(path_ + ": not an archive (shorter than an archive's header)");
    }
    ReadAt(0, header.data(), header.size());
    if (std::memcmp(header.data(), kSignature, kSignatureSize) != 0) {
        throw Failure(path_ + ": not an archive (wrong signature)");
    }
    if (header[16] != 0 || header[17] != 1) {
        throw Failure(path_ + ": an archive of an unknown format version");
    }
    optionsLength_ = static_cast<std::uint32_t>(Little(&header[18], 4));
    if (optionsLength_ > size_ - kFixedHeaderSize - kCodeSize) {
        throw Failure(path_ + ": damaged archive at offset 18: the options (" + Grouped(optionsLength_) +
                      " bytes) run past the end of the file");
    }
    std::array<unsigned char, kCodeSize> code{};
    ReadAt(kFixedHeaderSize + optionsLength_, code.data(), code.size());
    code_ = Little(code.data(), kCodeSize);
    firstItem_ = kFixedHeaderSize + optionsLength_ + kCodeSize;
}

void ArchiveReader::ReadItems() {
    std::unordered_set<std::uint32_t> ids;
    for (std::uint64_t offset = firstItem_; offset < size_;) {
        if (size_ - offset < kItemHeaderSize) {
            throw Damaged(offset, "the file ends inside an item's header");
        }
        std::array<unsigned char, kItemHeaderSize> header{};
        ReadAt(offset, header.data(), header.size());
        ArchiveItem item;
        item.offset = offset;
        item.id = static_cast<std::uint32_t>(Little(&header[0], 4));
        item.type = static_cast<std::uint16_t>(Little(&header[4], 2));
        item.attributeLength = static_cast<std::uint32_t>(Little(&header[6], 4));
        item.bodyLength = Little(&header[10], 8);

        // Compared by subtraction: the announced lengths may be anything, their sum may wrap.
        const std::uint64_t room = size_ - offset - kItemHeaderSize;
        if (item.attributeLength > room) {
            throw Damaged(offset, "the attributes (" + Grouped(item.attributeLength) +
                                      " bytes) run past the end of the file");
        }
        if (item.bodyLength > room - item.attributeLength) {
            throw Damaged(offset,
                          "the body (" + Grouped(item.bodyLength) + " bytes) runs past the end of the file");
        }
        if (item.type != ArchiveItem::kFile && item.type != ArchiveItem::kDirectory) {
            throw Damaged(offset, "unknown item type " + std::to_string(item.type));
        }
        if (item.id == 0 || item.id == 0xFFFFFFFF || !ids.insert(item.id).second) {
            throw Damaged(offset, "the item ID " + std::to_string(item.id) + " is invalid or not unique");
        }
        if (item.type == ArchiveItem::kDirectory) {
            ReadDirectory(item);
        }
        offset = item.BodyOffset() + item.bodyLength;
        items_.push_back(std::move(item));
    }
}

void ArchiveReader::ReadDirectory(ArchiveItem& item) {
    std::array<unsigned char, 4> count{};
    if (item.bodyLength < count.size()) {
        throw Damaged(item.offset, "the directory's body is too short for its entry count");
    }
    ReadAt(item.BodyOffset(), count.data(), count.size());
    const std::uint64_t entries = Little(count.data(), 4);
    if (entries > item.Capacity()) {
        throw Damaged(item.offset, "the directory counts " + Grouped(entries) + " entries but has room for " +
                                       Grouped(item.Capacity()));
    }
    std::vector<unsigned char> bytes(MemorySize(4 * entries));
    ReadAt(item.BodyOffset() + 4, bytes.data(), bytes.size());
    item.entries.reserve(bytes.size() / 4);
    for (std::size_t i = 0; i < entries; ++i) {
        item.entries.push_back(static_cast<std::uint32_t>(Little(&bytes[4 * i], 4)));
    }
}

void ArchiveReader::CheckEntries() {
    std::unordered_set<std::uint32_t> ids;
    for (const ArchiveItem& item : items_) {
        ids.insert(item.id);
    }
    for (const ArchiveItem& item : items_) {
        for (const std::uint32_t entry : item.entries) {
            if (ids.count(entry) == 0) {
                throw Damaged(item.offset, "the directory names the item " + std::to_string(entry) +
                                               ", which is not there");
            }
        }
    }
}

}  // namespace tool
