// The data that the benchmarks work on: the same on every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<std::uint8_t>;

// Prose: the licence texts that every Debian system has, repeated as often as it takes.
Bytes English(std::size_t size);
// Source text: the headers of the C++ library that this program was compiled with.
Bytes SourceText(std::size_t size);
// A list of small records as JSON.
Bytes Json(std::size_t size);
// Runs of one byte value, up to 200 long.
Bytes Runs(std::size_t size);
// Binary records of 32 bytes: counters, small numbers and flags.
Bytes Records(std::size_t size);
Bytes Random(std::size_t size);
// Random bytes of `values` different values.
Bytes FewSymbols(std::size_t size, unsigned values);

}  // namespace bench
