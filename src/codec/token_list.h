// One chunk's bytes as a list of literals and matches, with the counts that its codes are made from.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

// The compressor cuts its source into chunks of this many bytes; each makes a block of its own.
inline constexpr std::size_t kChunkSize = 32768;

// A match's symbol is its length plus this number, so that the shortest match (3) comes right behind the last
// byte (255).
inline constexpr int kMatchTokenBase = 253;
inline constexpr int kLastLiteral = 255;
// Bytes and match lengths; 509 to 511 never occur.
inline constexpr std::size_t kTokenSymbols = 512;

// A literal has an offset as well, one that does not occur in a match, so that both kinds can be treated
// alike: which of them comes next is hard to predict.
struct Token {
    static constexpr std::uint16_t kNoOffset = 8192;

    std::uint16_t symbol;
    std::uint16_t offset;  // of a match, in the window
};

// Offsets are counted in buckets. All offsets of a bucket are of one class: those below 128 have buckets of
// their own, and the others share one with the offsets that differ from them only in the low 7 bits. The last
// bucket is that of kNoOffset.
inline constexpr std::size_t kOffsetBuckets = 193;
[[nodiscard]] inline std::size_t OffsetBucket(unsigned offset) noexcept {
    return std::min(offset, 128u) + offset / 128;
}

class TokenList {
public:
    void Clear() noexcept {
        count_ = 0;
        symbolCounts_.fill(0);
        offsetCounts_.fill(0);
    }

    // There is room for the tokens of kChunkSize bytes.
    void AddLiteral(std::uint8_t byte) noexcept {
        tokens_[count_++] = {byte, Token::kNoOffset};
        ++symbolCounts_[byte];
    }
    void AddMatch(unsigned length, std::uint16_t offset) noexcept {
        const auto symbol = static_cast<std::uint16_t>(length + kMatchTokenBase);
        tokens_[count_++] = {symbol, offset};
        ++symbolCounts_[symbol];
        ++offsetCounts_[OffsetBucket(offset)];
    }

    [[nodiscard]] std::size_t Size() const noexcept { return count_; }
    [[nodiscard]] const Token* begin() const noexcept { return tokens_.data(); }
    [[nodiscard]] const Token* end() const noexcept { return tokens_.data() + count_; }
    [[nodiscard]] const std::array<std::uint32_t, kTokenSymbols>& SymbolCounts() const noexcept {
        return symbolCounts_;
    }
    // By bucket; literals are not counted.
    [[nodiscard]] const std::array<std::uint32_t, kOffsetBuckets>& OffsetCounts() const noexcept {
        return offsetCounts_;
    }

private:
    std::array<Token, kChunkSize> tokens_;
    std::size_t count_ = 0;
    std::array<std::uint32_t, kTokenSymbols> symbolCounts_{};
    std::array<std::uint32_t, kOffsetBuckets> offsetCounts_{};
};

}  // namespace qv
