// Reads archive files by their byte layout (docs/archive-format.md), independently of the library that writes
// them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "descriptor.h"

namespace tool {

struct ArchiveItem {
    static constexpr std::uint16_t kFile = 1;
    static constexpr std::uint16_t kDirectory = 2;

    std::uint64_t offset = 0;  ///< of the item's header, from the start of the file
    std::uint32_t id = 0;
    std::uint16_t type = 0;
    std::uint32_t attributeLength = 0;
    std::uint64_t bodyLength = 0;
    std::vector<std::uint32_t> entries;  ///< a directory's item IDs

    [[nodiscard]] std::uint64_t BodyOffset() const;
    /// How many IDs a directory's body has room for.
    [[nodiscard]] std::uint64_t Capacity() const { return (bodyLength - 4) / 4; }
};

class ArchiveReader final {
public:
    /// Opens the file and reads its header and all item headers. Throws a Failure when the file cannot be
    /// read or is no archive; damage further on ends the items early and is told by Damage().
    explicit ArchiveReader(const std::string& path);

    [[nodiscard]] std::uint64_t FileSize() const { return size_; }
    [[nodiscard]] std::uint32_t OptionsLength() const { return optionsLength_; }
    [[nodiscard]] std::uint64_t Code() const { return code_; }
    [[nodiscard]] const std::vector<ArchiveItem>& Items() const { return items_; }
    /// What is wrong with the archive and where; empty when it is sound.
    [[nodiscard]] const std::string& Damage() const { return damage_; }

    /// Reads exactly `size` bytes; throws a Failure when they are not there.
    void ReadAt(std::uint64_t offset, void* buffer, std::size_t size) const;

private:
    void ReadHeader();
    void ReadItems();
    void ReadDirectory(ArchiveItem& item);
    void CheckEntries();

    std::string path_;
    Descriptor descriptor_;
    std::uint64_t size_ = 0;
    std::uint32_t optionsLength_ = 0;
    std::uint64_t code_ = 0;
    std::uint64_t firstItem_ = 0;
    std::vector<ArchiveItem> items_;
    std::string damage_;
};

}  // namespace tool
