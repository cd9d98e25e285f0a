// One chunk's token list as a compressed block. docs/compressed-blocks.md describes the layout.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codec/bit_writer.h"
#include "codec/huffman_tables.h"

namespace qv {

// The compressor cuts its source into chunks of this many bytes; each makes a block of its own.
inline constexpr std::size_t kChunkSize = 32768;

class BlockEncoder {
public:
    // Allocates everything that encoding needs. Throws std::bad_alloc.
    BlockEncoder();

    struct Block {
        std::uint16_t tokenCount;  // modulo 65536; it precedes the body as two bytes
        const std::uint8_t* body;  // lent until the next Encode
        std::size_t bodySize;
    };

    // Encodes the token list of at most kChunkSize bytes (see tokenizer.h).
    [[nodiscard]] Block Encode(const std::uint16_t* tokens, std::size_t valueCount) noexcept;

private:
    // Bytes and match lengths; 509 to 511 never occur.
    static constexpr std::size_t kLiteralSymbols = 512;
    // The number of significant bits of an offset; 14 and 15 never occur.
    static constexpr std::size_t kDistanceSymbols = 16;
    // A literal is at most 16 bits and a match of at least 3 bytes at most 16 + 16 + 12, so a byte of the
    // source takes at most 2; the length tables take at most 512 x 25 and 4 + 16 x 13 bits.
    static constexpr std::size_t kMostBodyBytes = 2 * kChunkSize + 2048;

    // A symbol's code, ready to be written.
    struct Code {
        std::uint32_t pattern = 0;
        std::uint32_t length = 0;
    };

    std::size_t CountTokens(const std::uint16_t* tokens, std::size_t valueCount) noexcept;
    void EncodeLiteralBitLengthTable(BitWriter& bits, const std::vector<std::uint32_t>& lengths) noexcept;
    static void EncodeDistanceBitLengthTable(BitWriter& bits,
                                             const std::vector<std::uint32_t>& lengths) noexcept;
    void EncodeTokens(BitWriter& bits, const std::uint16_t* tokens, std::size_t valueCount) noexcept;

    std::array<std::uint32_t, kLiteralSymbols> literalCounts_{};
    std::array<std::uint32_t, kDistanceSymbols> distanceCounts_{};
    HuffmanTables literals_;
    HuffmanTables distances_;
    HuffmanTables lengthCodes_;
    std::vector<std::uint8_t> body_;
};

}  // namespace qv
