// The archive file, written and read literally from its layout, byte by byte: what the tests compare with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qvmodel {

struct ArchiveItem {
    std::uint32_t id = 0;
    std::uint16_t type = 0;
    std::string attributes;
    std::string body;

    bool operator==(const ArchiveItem&) const = default;
};

struct Archive {
    std::uint64_t code = 0;
    std::vector<ArchiveItem> items;
    std::string options;
};

// The archive's bytes.
[[nodiscard]] std::string EncodeArchive(const Archive& archive);

// The archive in the bytes; nothing when they are not exactly an archive.
[[nodiscard]] std::optional<Archive> DecodeArchive(const std::string& bytes);

// A directory's body with room for `capacity` entries.
[[nodiscard]] std::string DirectoryBody(const std::vector<std::uint32_t>& entries, std::size_t capacity);

// The capacity of a directory after `entries` have been entered: the old one while they fit, else what the
// least multiple of 160 bytes that holds them has room for.
[[nodiscard]] std::size_t CapacityAfter(std::size_t entries, std::size_t oldCapacity);

}  // namespace qvmodel
