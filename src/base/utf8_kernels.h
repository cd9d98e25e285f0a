// The loops behind utf8.h, one set per instruction set. Each converts as far as it can and says how far it
// came, always up to the end of a character. The plain loops stop only at the end or in front of what is not
// valid (or does not fit); the vector loops may stop anywhere, so the plain ones go on behind them.
#pragma once

#include <cstddef>

#include "base/utf8.h"

namespace qv {

namespace plain {

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept;
Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room,
                        Utf8Progress from) noexcept;
Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                        Utf8Progress from) noexcept;

}  // namespace plain

namespace avx2 {

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept;
Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept;
Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                        Utf8Progress from) noexcept;

}  // namespace avx2

namespace avx512 {

Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept;
Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                        Utf8Progress from) noexcept;

}  // namespace avx512

}  // namespace qv
