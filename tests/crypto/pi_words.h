// The words Blowfish starts from, computed afresh: tests do not trust the library's own tables.
#pragma once

#include <cstdint>
#include <vector>

#include "pi_digits.h"

namespace qvtest {

inline const std::vector<std::uint32_t>& PiWords() {
    static const std::vector<std::uint32_t> words = blowfish_tables::FractionOfPi(18 + 4 * 256);
    return words;
}

}  // namespace qvtest
