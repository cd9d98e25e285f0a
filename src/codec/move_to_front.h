// The move-to-front coder, with its own rule of exchange.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qv {

// Writes the place of each byte of in[0 .. size - 1] in a list of the byte values that occur in it, which
// begins in ascending order. A byte found behind the front changes places with the front; the bytes between
// stay where they are (it is not moved there past them, as the usual method does: the exchange is required).
// `out` may be `in`.
void EncodeMoveToFront(const uint8_t* in, size_t size, uint8_t* out);

}  // namespace qv
