// UTF-8 as it was first laid out: up to six bytes, for any 31-bit value, surrogates included.
#pragma once

#include <cstddef>

namespace qv {

// The bytes that EncodeExtendedUtf8 writes.
size_t ExtendedUtf8Size(const wchar_t* characters, size_t count) noexcept;

// Encodes into `out`, which has room for ExtendedUtf8Size bytes. A negative value becomes one byte, its low
// seven bits.
void EncodeExtendedUtf8(const wchar_t* characters, size_t count, char* out) noexcept;

}  // namespace qv
