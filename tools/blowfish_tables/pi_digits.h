// Computes the tables that a Blowfish key schedule starts from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace blowfish_tables {

// The fraction of pi in binary, cut into 32-bit words: word 0 holds the first eight hexadecimal digits
// after the point (243F6A88), word 1 the next eight, and so on. Every word is exact.
std::vector<std::uint32_t> FractionOfPi(std::size_t wordCount);

// The complete text of src/crypto/blowfish_tables.cpp: the first 18 words become the P-array, the
// next four times 256 the S-boxes.
std::string TablesSource();

}  // namespace blowfish_tables
