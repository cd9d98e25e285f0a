// UTF-32 bytes to wide characters and back, in either byte order and without a mark.
#pragma once

#include <bit>
#include <cstddef>
#include <optional>

namespace qv {

// The most characters that `size` bytes hold.
constexpr size_t Utf32ToWideMax(size_t size) noexcept {
    return size / 4;
}

// The bytes that EncodeUtf32 writes for `count` characters.
constexpr size_t Utf32Size(size_t count) noexcept {
    return 4 * count;
}

// Decodes into `out`, which has room for Utf32ToWideMax(size) characters. The characters written, or nothing
// when the size is no multiple of 4, or a value is a surrogate or above U+10FFFF.
std::optional<size_t> DecodeUtf32(const char* bytes, size_t size, std::endian order, wchar_t* out) noexcept;

// Encodes into `out`, which has room for Utf32Size(count) bytes; each surrogate and each value above U+10FFFF
// becomes one "?".
void EncodeUtf32(const wchar_t* text, size_t count, std::endian order, char* out) noexcept;

}  // namespace qv
