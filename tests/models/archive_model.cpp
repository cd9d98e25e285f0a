#include "models/archive_model.h"

namespace qvmodel {

namespace {

void Put(std::string& bytes, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> 8 * i & 0xFF);
    }
}

// Reads from the front of the bytes; once they do not suffice, everything read is empty.
class Reader {
public:
    explicit Reader(const std::string& bytes) : bytes_(bytes) {}

    std::string Take(std::uint64_t size) {
        if (size > bytes_.size() - at_) {
            failed_ = true;
            return {};
        }
        at_ += static_cast<std::size_t>(size);
        return bytes_.substr(at_ - static_cast<std::size_t>(size), static_cast<std::size_t>(size));
    }
    std::uint64_t Number(int size) {
        const std::string taken = Take(static_cast<std::uint64_t>(size));
        std::uint64_t value = 0;
        for (std::size_t i = taken.size(); i-- > 0;) {
            value = value << 8 | static_cast<unsigned char>(taken[i]);
        }
        return value;
    }
    [[nodiscard]] bool Failed() const { return failed_; }
    [[nodiscard]] bool AtEnd() const { return at_ == bytes_.size(); }

private:
    const std::string& bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

}  // namespace

std::string EncodeArchive(const Archive& archive) {
    std::string bytes = "10449C48896D45A9";
    Put(bytes, 0x00, 1);
    Put(bytes, 0x01, 1);
    Put(bytes, archive.options.size(), 4);
    bytes += archive.options;
    Put(bytes, archive.code, 8);
    for (const ArchiveItem& item : archive.items) {
        Put(bytes, item.id, 4);
        Put(bytes, item.type, 2);
        Put(bytes, item.attributes.size(), 4);
        Put(bytes, item.body.size(), 8);
        bytes += item.attributes;
        bytes += item.body;
    }
    return bytes;
}

std::optional<Archive> DecodeArchive(const std::string& bytes) {
    Reader reader(bytes);
    Archive archive;
    if (reader.Take(16) != "10449C48896D45A9" || reader.Number(1) != 0 || reader.Number(1) != 1)
        return std::nullopt;
    archive.options = reader.Take(reader.Number(4));
    archive.code = reader.Number(8);
    while (!reader.Failed() && !reader.AtEnd()) {
        ArchiveItem item;
        item.id = static_cast<std::uint32_t>(reader.Number(4));
        item.type = static_cast<std::uint16_t>(reader.Number(2));
        const std::uint64_t attributeLength = reader.Number(4);
        const std::uint64_t bodyLength = reader.Number(8);
        item.attributes = reader.Take(attributeLength);
        item.body = reader.Take(bodyLength);
        archive.items.push_back(item);
    }
    if (reader.Failed()) return std::nullopt;
    return archive;
}

std::string DirectoryBody(const std::vector<std::uint32_t>& entries, std::size_t capacity) {
    std::string body;
    Put(body, entries.size(), 4);
    for (const std::uint32_t entry : entries) {
        Put(body, entry, 4);
    }
    body.resize(4 + 4 * capacity, '\0');
    return body;
}

std::size_t CapacityAfter(std::size_t entries, std::size_t oldCapacity) {
    if (entries <= oldCapacity) return oldCapacity;
    std::size_t length = 0;
    while (length < 4 + 4 * entries) {
        length += 160;
    }
    return (length - 4) / 4;
}

}  // namespace qvmodel
