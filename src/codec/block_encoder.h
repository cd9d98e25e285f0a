// One chunk's token list as a compressed block. docs/compressed-blocks.md describes the layout.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codec/bit_writer.h"
#include "codec/huffman_tables.h"
#include "codec/token_list.h"

namespace qv {

class BlockEncoder {
public:
    // Allocates everything that encoding needs. Throws std::bad_alloc.
    BlockEncoder();

    struct Block {
        std::uint16_t tokenCount;  // modulo 65536; it precedes the body as two bytes
        const std::uint8_t* body;  // lent until the next Encode
        std::size_t bodySize;
    };

    [[nodiscard]] Block Encode(const TokenList& tokens) noexcept;

private:
    // The number of significant bits of an offset; 14 and 15 never occur.
    static constexpr std::size_t kDistanceSymbols = 16;
    // The alphabet in which the literal table's lengths are written: three runs and the lengths 1 to 16.
    static constexpr std::size_t kLengthSymbols = 19;
    // A literal is at most 16 bits and a match of at least 3 bytes at most 16 + 16 + 12, so a byte of the
    // source takes at most 2; the length tables take at most 512 x 25 and 4 + 16 x 13 bits.
    static constexpr std::size_t kMostBodyBytes = 2 * kChunkSize + 2048;

    // Codes, ready to be written. An offset's low bits follow the code of its class.
    struct LiteralCode {
        std::uint32_t pattern;
        std::uint32_t length;
    };
    struct OffsetCode {
        std::uint32_t pattern;
        std::uint16_t length;
        std::uint16_t offsetMask;
    };
    struct Codes {
        std::array<LiteralCode, kTokenSymbols> literals;
        std::array<OffsetCode, kOffsetBuckets> offsets;
    };

    void BuildDistances(const TokenList& tokens) noexcept;
    [[nodiscard]] Codes MakeCodes() const noexcept;
    void EncodeLiteralBitLengthTable(BitWriter& bits, const std::vector<std::uint32_t>& lengths) noexcept;
    static void EncodeDistanceBitLengthTable(BitWriter& bits,
                                             const std::vector<std::uint32_t>& lengths) noexcept;
    void EncodeTokens(BitWriter& bits, const TokenList& tokens) const noexcept;

    HuffmanTables literals_;
    HuffmanTables distances_;
    HuffmanTables lengthCodes_;
    std::vector<std::uint8_t> body_;
};

}  // namespace qv
