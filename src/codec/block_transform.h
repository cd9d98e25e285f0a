// The block transform: rotations sorted by their first byte only, the bytes before them written out. Sorting
// by one byte is required; so is the order among rotations that begin with the same byte (introsort.h). The
// inverse therefore restores the input only where that order happens to be the full order, for example when
// all bytes differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qv {

// Writes the transform of in[0 .. size - 1] to `out`, which may be `in`. The place, among the sorted
// rotations, of the rotation that starts at byte 1 (not 0); nothing when there is none, that is for sizes 0
// and 1. Throws std::bad_alloc when its array of `size` words cannot be had; nothing is written then.
std::optional<size_t> EncodeBlockTransform(const uint8_t* in, size_t size, uint8_t* out);

// The inverse, into out[0 .. size - 1], which may be `in`, for primaryIndex < size. Throws std::bad_alloc as
// above.
void DecodeBlockTransform(const uint8_t* in, size_t size, size_t primaryIndex, uint8_t* out);

}  // namespace qv
