// The block transform, its inverse and the move-to-front coder written down as plainly as possible: every
// step is the step of the definition, one element at a time, with a real array of rotation numbers and a
// real list of byte values. Slow, and the judge of the fast code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qv::model {

// Sorts the numbers 0 .. in.size() - 1 by in[number] alone, in the order that the described introsort leaves
// equal elements in. `depthLimit` replaces 2 * floor(log2 size) when it is not negative, so that tests can
// reach the heap path with small inputs.
std::vector<size_t> SortRotationsByFirstByte(const std::vector<uint8_t>& in, int depthLimit = -1);

struct BlockTransform {
    std::vector<uint8_t> bytes;
    bool hasPrimaryIndex = false;
    size_t primaryIndex = 0;
};

BlockTransform EncodeBlock(const std::vector<uint8_t>& in);
std::vector<uint8_t> DecodeBlock(const std::vector<uint8_t>& in, size_t primaryIndex);
std::vector<uint8_t> EncodeMoveToFront(const std::vector<uint8_t>& in);

// An input of `size` bytes (size <= 256 gives distinct values, above that neighbouring values are shared)
// that always offers the sort the worst of pivots, so that the recursion uses its whole depth and ends in
// the heap.
std::vector<uint8_t> MakeIntrosortKiller(size_t size);

}  // namespace qv::model
