// One chunk's bytes as a list of literals and matches.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/sliding_window.h"

namespace qv {

// A token list is a row of 16-bit values. A literal is one value, its byte; a match is two: its length plus
// this number, so that the shortest match (3) comes right behind the last byte (255), and its offset in the
// window.
inline constexpr int kMatchTokenBase = 253;
inline constexpr int kLastLiteral = 255;

// Fills `tokens`, which has room for `size` values (a match is at least 3 bytes long and takes 2 values), and
// answers how many there are. The window is reset first: every chunk starts with an empty dictionary.
//
// Only the first byte of a match enters the dictionary. This is required, because offsets count in the
// dictionary's contents.
std::size_t Tokenize(SlidingWindow& window, const std::uint8_t* bytes, std::size_t size,
                     std::uint16_t* tokens) noexcept;

}  // namespace qv
