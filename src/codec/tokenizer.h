// One chunk's bytes as a list of literals and matches.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/sliding_window.h"
#include "codec/token_list.h"

namespace qv {

// Makes the tokens of `size` bytes, at most kChunkSize. The list is cleared and the window reset first: every
// chunk starts with an empty dictionary.
//
// Only the first byte of a match enters the dictionary. This is required, because offsets count in the
// dictionary's contents.
void Tokenize(SlidingWindow& window, const std::uint8_t* bytes, std::size_t size, TokenList& tokens) noexcept;

}  // namespace qv
