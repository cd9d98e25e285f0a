// The archive file's layout: every length, offset and rounding rule stands here. docs/archive-format.md shows
// the same as tables.
#pragma once

#include <cstddef>
#include <cstdint>

// What an item begins with. The fields stand in the file in this order, 4, 2, 4 and 8 bytes wide, without
// padding.
struct QVArchiveItemHeader {
    std::uint32_t itemID = 0;
    std::uint16_t itemType = 0;
    std::uint32_t attributeLength = 0;
    std::uint64_t bodyLength = 0;
};

namespace qv {

// The archive's header: signature, two format bytes, length of the options, options, archive code.
inline constexpr char kArchiveSignature[] = "10449C48896D45A9";
inline constexpr std::size_t kArchiveSignatureSize = sizeof kArchiveSignature - 1;
inline constexpr std::uint8_t kArchiveFormat[] = {0x00, 0x01};

inline constexpr std::uint64_t kItemHeaderSize = 4 + 2 + 4 + 8;
inline constexpr std::uint16_t kFileItem = 1;
inline constexpr std::uint16_t kDirectoryItem = 2;

inline constexpr std::uint32_t kNoItemID = 0;
inline constexpr std::uint32_t kRootItemID = 1;
inline constexpr std::uint32_t kFirstItemID = 2;
inline constexpr std::uint32_t kItemIDLimit = 0xFFFFFFFF;  // never handed out

// A directory's body: the count of entries, the entries, and zeros up to its length.
inline constexpr std::uint64_t kDirectoryCountSize = 4;
inline constexpr std::uint64_t kDirectoryEntrySize = 4;

[[nodiscard]] constexpr std::uint64_t DirectoryBodyLength(std::uint64_t entries) {
    return kDirectoryCountSize + kDirectoryEntrySize * entries;
}

// A directory that is too small grows to a multiple of this many bytes (room for 39, 79, 119 ... entries), so
// that not every new entry moves the rest of the archive.
inline constexpr std::uint64_t kDirectoryGrowthStep = 160;

[[nodiscard]] constexpr std::uint64_t GrownBodyLength(std::uint64_t needed) {
    const std::uint64_t reached = needed + (kDirectoryGrowthStep - 1);
    return reached - reached % kDirectoryGrowthStep;
}

[[nodiscard]] constexpr std::uint64_t BodyPosition(std::uint64_t itemPosition,
                                                   const QVArchiveItemHeader& header) {
    return itemPosition + kItemHeaderSize + header.attributeLength;
}

// Whether the item lies whole inside a file of that size. The lengths may be anything: their sum may wrap
// around.
[[nodiscard]] constexpr bool LiesInFile(std::uint64_t itemPosition, const QVArchiveItemHeader& header,
                                        std::uint64_t fileSize) {
    if (itemPosition > fileSize || fileSize - itemPosition < kItemHeaderSize) return false;
    const std::uint64_t room = fileSize - itemPosition - kItemHeaderSize;
    return header.attributeLength <= room && header.bodyLength <= room - header.attributeLength;
}

// Where the next item begins. Only for an item that lies in the file.
[[nodiscard]] constexpr std::uint64_t NextItemPosition(std::uint64_t itemPosition,
                                                       const QVArchiveItemHeader& header) {
    return BodyPosition(itemPosition, header) + header.bodyLength;
}

// The piece in which files and the rest of an archive are copied: large enough that the cost of the calls
// vanishes.
inline constexpr std::size_t kCopyBufferSize = 1048576;

}  // namespace qv
