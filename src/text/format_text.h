// Formatting wide text of any length.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <memory>

namespace qv {

// What the C library makes of a wide format of `formatLength` characters and its arguments, ended by a 0.
// When an argument cannot be converted, the text in front of it; beyond 2^26 characters the text is cut.
// Throws std::bad_alloc.
std::unique_ptr<wchar_t[]> FormatText(const wchar_t* format, size_t formatLength, va_list arguments);

}  // namespace qv
