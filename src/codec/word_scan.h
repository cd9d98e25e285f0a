// Comparing a block of words with one bound, the inner loop of the block sort's partition.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/processor.h"

namespace qv {

// The largest block: one bit of a mask for each word.
inline constexpr size_t kWordScanBlock = 64;

// Bit i of the result tells whether words[i] > bound, for i < count <= kWordScanBlock; higher bits are 0.
// Up to kWordScanBlock words are read whatever `count` is.
using ScanGreater = uint64_t (*)(const int32_t* words, size_t count, int32_t bound);

// The fastest of the functions below that this processor can run.
ScanGreater GetScanGreater() noexcept;

// The bits below `count`.
constexpr uint64_t LowBits(size_t count) {
    return count >= 64 ? ~uint64_t{0} : (uint64_t{1} << count) - 1;
}

uint64_t ScanGreaterPlain(const int32_t* words, size_t count, int32_t bound);
#if QV_X86
uint64_t ScanGreaterAvx2(const int32_t* words, size_t count, int32_t bound);
uint64_t ScanGreaterAvx512(const int32_t* words, size_t count, int32_t bound);
#endif

}  // namespace qv
