// Bits into a byte buffer, most significant first: the compressor's fast way to what an output bit stream
// writes in its default mode.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/big_endian.h"

namespace qv {

class BitWriter {
public:
    // Bytes behind the last one written that the writer may overwrite.
    static constexpr std::size_t kSlack = 8;
    // The most bits of one Put: seven may be waiting, and not all 64 may be in use.
    static constexpr unsigned kMostBits = 56;

    // The buffer must have room for all that is put, and kSlack bytes more.
    explicit BitWriter(std::uint8_t* buffer) noexcept : begin_(buffer), next_(buffer) {}

    // Writes the low `count` bits of `value`, whose other bits are zero; count is 0 .. kMostBits.
    void Put(std::uint64_t value, unsigned count) noexcept {
        collected_ = collected_ << count | value;
        waitingBits_ += count;
        StoreBig64(collected_ << 1 << (63 - waitingBits_), next_);  // in two shifts: 64 at once is undefined
        next_ += waitingBits_ / 8;
        waitingBits_ %= 8;
    }

    // The number of bytes written, the last one filled up with zero bits.
    [[nodiscard]] std::size_t Size() const noexcept {
        return static_cast<std::size_t>(next_ - begin_) + (waitingBits_ != 0 ? 1 : 0);
    }

private:
    std::uint8_t* begin_;
    std::uint8_t* next_;
    std::uint64_t collected_ = 0;  // the newest bit lowest; bits that have been written may stand above
    unsigned waitingBits_ = 0;     // not in a full byte yet: 0 .. 7 between calls
};

}  // namespace qv
