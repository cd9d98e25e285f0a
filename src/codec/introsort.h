// The block sort's order. Words are compared by their key alone, and words with equal keys end in the order
// in which one fixed introsort leaves them: that order is part of the block transform's output. The sort:
//
// - while more than 16 words are left: the pivot is the median key of the first, the middle (the later of
//   two) and the last word; a partition of the whole range that stops at keys equal to the pivot and
//   exchanges; the right part is sorted first, the left part next, each with one level less;
// - with no level left (there are 2 * floor(log2 count)): the range becomes a heap that is popped until
//   empty, where the hole sinks to the bottom before the value rises;
// - ranges of up to 16 words are sorted by insertion, which keeps the order of equal keys.
//
// This code takes the same exchanges in the same order, without comparing word by word: 64 words give a mask
// of places to stop at, and a range in which all keys are equal, where each partition only reverses it, goes
// straight to its final order.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/word_scan.h"

namespace qv {

// A word's key is what stands from this bit on; the bits below travel with it. Words are not negative.
inline constexpr int kIntrosortKeyShift = 16;

// Readable words that must follow the last word of the range to be sorted. Their values do not matter.
inline constexpr size_t kIntrosortPadding = kWordScanBlock;

// Sorts words[0 .. count - 1].
void Introsort(int32_t* words, size_t count);

// The same with everything chosen by the caller, for tests of each path.
void Introsort(int32_t* words, size_t count, int depthLimit, ScanGreater greater);

}  // namespace qv
