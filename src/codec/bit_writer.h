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
        waiting_ |= value << (63 - waitingBits_ - count)
                          << 1;  // in two shifts, since 64 at once is undefined
        waitingBits_ += count;
        StoreBig64(waiting_, next_);
        const unsigned bytes = waitingBits_ / 8;
        next_ += bytes;
        waiting_ <<= 8 * bytes;
        waitingBits_ -= 8 * bytes;
    }

    // The number of bytes written, the last one filled up with zero bits.
    [[nodiscard]] std::size_t Size() const noexcept {
        return static_cast<std::size_t>(next_ - begin_) + (waitingBits_ != 0 ? 1 : 0);
    }

private:
    std::uint8_t* begin_;
    std::uint8_t* next_;
    std::uint64_t waiting_ = 0;  // in the top bits
    unsigned waitingBits_ = 0;   // 0 .. 7 between calls
};

}  // namespace qv
