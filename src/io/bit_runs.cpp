#include "io/bit_runs.h"

namespace qv {
namespace {

void StoreTop(std::uint64_t word, std::uint8_t* target, unsigned bits) noexcept {
    for (unsigned i = 0; 8 * i < bits; ++i)
        target[i] = static_cast<std::uint8_t>(word >> (56 - 8 * i));
}

}  // namespace

void CopyBits(const std::uint8_t* source, unsigned first, std::uint8_t* target, std::size_t count) noexcept {
    constexpr unsigned kStep = 56;
    for (; count > kStep; count -= kStep) {
        StoreTop(LoadBits(source, first, kStep), target, kStep);
        source += kStep / 8;
        target += kStep / 8;
    }
    if (count == 0) return;
    const auto rest = static_cast<unsigned>(count);
    StoreTop(LoadBits(source, first, rest), target, rest);
}

}  // namespace qv
