// The Mac OS Roman character set: one byte each, the upper half by table.
#pragma once

#include <cstddef>

namespace qv {

// Decodes `size` bytes into as many characters at `out`. Every byte has a character.
void DecodeMacRoman(const char* bytes, size_t size, wchar_t* out) noexcept;

// Encodes `count` characters into as many bytes at `out`; a character without a byte becomes "?".
void EncodeMacRoman(const wchar_t* text, size_t count, char* out) noexcept;

}  // namespace qv
