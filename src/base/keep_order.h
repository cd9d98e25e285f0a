// For chains of dependent operations, where the order of sums decides the speed.
#pragma once

namespace qv {

// A value that stands as computed: compilers may not regroup what comes before with what comes after it. It
// costs no instruction.
template <class Word>
[[gnu::always_inline]] inline void KeepOrder(Word& word) noexcept {
    asm("" : "+r"(word));
}

}  // namespace qv
