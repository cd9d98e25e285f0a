#include "codec/prefix_index.h"

namespace qv {

PrefixIndex::PrefixIndex() : levels_(new std::array<Level, kLevelCount>) {
    Reset();
}

void PrefixIndex::Reset() noexcept {
    (*levels_)[0].buckets.fill(kEmpty);
    newestBytes_ = 0;
    activeLevels_ = 1;
    wastedSteps_ = 0;
}

// `prefixes` are the 8 bytes before the newest one.
void PrefixIndex::AppendToHigherLevels(const std::uint8_t* window, int end, std::uint64_t prefixes) noexcept {
    for (int i = 1; i < activeLevels_; ++i) {
        const int length = kPrefixLengths[i];
        const int place = end - length - 1;
        if (place < 0) return;
        const Key key = length <= 8 ? KeyOf(prefixes & (~std::uint64_t{0} >> (64 - 8 * length)))
                                    : KeyAt(window + place, length);
        Enter((*levels_)[i], key, place);
    }
}

void PrefixIndex::SwitchNextLevelOn(const std::uint8_t* window, int base, int end) noexcept {
    wastedSteps_ = 0;
    if (activeLevels_ == kLevelCount) return;
    const int length = kPrefixLengths[activeLevels_];
    Level& level = (*levels_)[activeLevels_];
    ++activeLevels_;
    level.buckets.fill(kEmpty);
    for (int place = base; place + length + 1 <= end; ++place)
        Enter(level, KeyAt(window + place, length), place);
}

}  // namespace qv
