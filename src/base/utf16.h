// UTF-16 bytes to wide characters (one code point each) and back, in either byte order and without a mark.
#pragma once

#include <bit>
#include <cstddef>
#include <optional>

namespace qv {

// The most characters that `size` bytes hold.
constexpr size_t Utf16ToWideMax(size_t size) noexcept {
    return size / 2;
}

// The bytes that EncodeUtf16 writes for these characters.
size_t Utf16Size(const wchar_t* text, size_t count) noexcept;

// Decodes into `out`, which has room for Utf16ToWideMax(size) characters. The characters written, or nothing
// when the size is odd or a surrogate stands alone.
std::optional<size_t> DecodeUtf16(const char* bytes, size_t size, std::endian order, wchar_t* out) noexcept;

// Encodes into `out`, which has room for Utf16Size bytes; each surrogate and each value above U+10FFFF
// becomes one "?".
void EncodeUtf16(const wchar_t* text, size_t count, std::endian order, char* out) noexcept;

}  // namespace qv
