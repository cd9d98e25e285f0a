// One chunk's token list as a compressed block. docs/compressed-blocks.md describes the layout.
#pragma once

#include <algorithm>
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
    // The alphabet in which the literal table's lengths are written: three runs and the lengths 1 to 16.
    static constexpr std::size_t kLengthSymbols = 19;
    // A literal is at most 16 bits and a match of at least 3 bytes at most 16 + 16 + 12, so a byte of the
    // source takes at most 2; the length tables take at most 512 x 25 and 4 + 16 x 13 bits.
    static constexpr std::size_t kMostBodyBytes = 2 * kChunkSize + 2048;

    // A token's two values side by side. A literal's offset is one that does not occur, so that both kinds of
    // token can be treated alike: whether the next one is a literal or a match is hard to predict.
    struct Token {
        std::uint16_t symbol;
        std::uint16_t offset;
    };
    static constexpr std::uint16_t kNoOffset = 8192;
    // The same for several literals in a row.
    static constexpr std::size_t kRun = 4;
    [[nodiscard]] static bool AreLiterals(const Token* tokens) noexcept {
        return (tokens[0].offset & tokens[1].offset & tokens[2].offset & tokens[3].offset & kNoOffset) != 0;
    }

    // All offsets of a bucket are of one class: those below 128 have buckets of their own, and the others
    // share one with the offsets that differ from them only in the low 7 bits.
    static constexpr std::size_t kBuckets = 193;
    [[nodiscard]] static std::size_t BucketOf(unsigned offset) noexcept {
        return std::min(offset, 128u) + offset / 128;
    }
    [[nodiscard]] static unsigned ClassOf(std::size_t bucket) noexcept;

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
        std::array<LiteralCode, kLiteralSymbols> literals;
        std::array<OffsetCode, kBuckets> offsets;
    };

    void TakeTokens(const std::uint16_t* values, std::size_t count) noexcept;
    void CountDistances() noexcept;
    [[nodiscard]] Codes MakeCodes() const noexcept;
    void EncodeLiteralBitLengthTable(BitWriter& bits, const std::vector<std::uint32_t>& lengths) noexcept;
    static void EncodeDistanceBitLengthTable(BitWriter& bits,
                                             const std::vector<std::uint32_t>& lengths) noexcept;
    void EncodeTokens(BitWriter& bits) const noexcept;

    std::array<Token, kChunkSize> tokens_;
    std::size_t tokenCount_ = 0;
    std::array<std::uint32_t, kLiteralSymbols> literalCounts_{};
    std::array<std::uint32_t, kBuckets> bucketCounts_{};
    std::array<std::uint32_t, kDistanceSymbols> distanceCounts_{};
    HuffmanTables literals_;
    HuffmanTables distances_;
    HuffmanTables lengthCodes_;
    std::vector<std::uint8_t> body_;
};

}  // namespace qv
