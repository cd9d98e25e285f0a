// Standard output for whole lines.
#pragma once

#include <cstddef>

namespace qv {

// Flushes what the C library has buffered for standard output, then writes the bytes to its descriptor in one
// go, so that order is kept and the stream's orientation is never set. A failure is dropped: there is nowhere
// to report it.
void WriteToStandardOutput(const char* bytes, std::size_t size) noexcept;

}  // namespace qv
