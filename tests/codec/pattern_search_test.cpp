#include "codec/pattern_search.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "models/pattern_search_model.h"
#include "support/shaped_bytes.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Place = std::optional<std::size_t>;

Place Search(const Bytes& text, const Bytes& pattern, qv::ScanForPattern scan) {
    return qv::SearchPattern(text.data(), text.size(), pattern.data(), pattern.size(), scan);
}

TEST(PatternSearch, FindsWhatThePlainStepsFind) {
    qvtest::ShapedBytes random(31);
    for (int round = 0; round < 100'000; ++round) {
        const Bytes text = random.Make(random.SomeSize(3000));
        Bytes pattern = random.Make(random.Below(round % 2 == 0 ? 6 : 60));
        if (pattern.size() < text.size() && random.Below(2) == 0) {
            // One that does occur, perhaps with a byte changed.
            std::copy_n(
                text.begin() + static_cast<std::ptrdiff_t>(random.Below(text.size() - pattern.size())),
                pattern.size(), pattern.begin());
            if (!pattern.empty() && random.Below(4) == 0) ++pattern[random.Below(pattern.size())];
        }
        const Place expected = qv::model::SearchPattern(text, pattern);
        ASSERT_EQ(Search(text, pattern, nullptr), expected) << "round " << round;
        ASSERT_EQ(Search(text, pattern, qv::GetScanForPattern()), expected) << "round " << round;
        ASSERT_EQ(qv::SearchPattern(text.data(), text.size(), pattern.data(), pattern.size()), expected);
    }
}

TEST(PatternSearch, IsRightForOccurrencesAtEveryPlaceOfShortAndLongTexts) {
    const Bytes pattern = {'n', 'e', 'e', 'd', 'l', 'e'};
    for (const std::size_t size : {6, 20, 63, 64, 69, 70, 127, 128, 129, 200, 333}) {
        for (std::size_t at = 0; at + pattern.size() <= size; ++at) {
            Bytes text(size, '.');
            std::copy(pattern.begin(), pattern.end(), text.begin() + static_cast<std::ptrdiff_t>(at));
            ASSERT_EQ(Search(text, pattern, qv::GetScanForPattern()),
                      qv::model::SearchPattern(text, pattern));
            ASSERT_EQ(Search(text, pattern, nullptr), qv::model::SearchPattern(text, pattern));
        }
    }
}

TEST(PatternSearch, StepsOverPlacesWhereThePatternStands) {
    // In "abcab" the text byte "a" moves the pattern by 4, its distance from the leftmost "a".
    const std::string text = "xxxabcab" + std::string(300, '.');
    const Bytes bytes(text.begin(), text.end());
    const Bytes pattern = {'a', 'b', 'c', 'a', 'b'};
    const Place expected = qv::model::SearchPattern(bytes, pattern);
    EXPECT_EQ(expected, std::nullopt);
    EXPECT_EQ(Search(bytes, pattern, qv::GetScanForPattern()), expected);
}

TEST(PatternSearch, StaysFastOnTextsMadeOfLookalikes) {
    // All places look alike; the scan must give up instead of comparing each of them in full.
    const Bytes text(1 << 16, 'a');
    Bytes pattern(20'000, 'a');
    pattern[10'000] = 'b';
    EXPECT_EQ(qv::SearchPattern(text.data(), text.size(), pattern.data(), pattern.size()), std::nullopt);
}

}  // namespace
