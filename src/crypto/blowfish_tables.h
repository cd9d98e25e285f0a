// The numbers that every Blowfish key schedule starts from.
#pragma once

#include <array>
#include <cstdint>

namespace qv {

// The P-array: one word for each of the sixteen rounds and two for the end.
using BlowfishSubkeys = std::array<std::uint32_t, 18>;

// The S-boxes S0, S1, S2, S3 one after the other, 256 words each.
using BlowfishSubstitutes = std::array<std::uint32_t, 4 * 256>;

// What a key schedule starts from: the fraction of pi, read as 32-bit words.
extern const BlowfishSubkeys kBlowfishInitialSubkeys;
extern const BlowfishSubstitutes kBlowfishInitialSubstitutes;

}  // namespace qv
