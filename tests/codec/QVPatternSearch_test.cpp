#include <climits>
#include <cstring>
#include <string>

#include <QVFoundation/QVPatternSearch.h>

namespace {

struct Found {
    bool found;
    unsigned long position;
};

constexpr unsigned long kUnset = 12345;

Found Search(const std::string& text, const std::string& pattern) {
    unsigned long position = kUnset;
    const bool found = QVBMSearchPattern(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                                         reinterpret_cast<const unsigned char*>(pattern.data()),
                                         pattern.size(), &position) != 0;
    return {found, position};
}

TEST(QVPatternSearch, FindsAPatternAtTheEnd) {
    const Found result = Search("xxabc", "abc");
    EXPECT_TRUE(result.found);
    EXPECT_EQ(result.position, 2UL);
}

TEST(QVPatternSearch, FindsBytesOfAnyValue) {
    const Found result = Search(std::string("a\0\xFF\0b", 5), std::string("\xFF\0", 2));
    EXPECT_TRUE(result.found);
    EXPECT_EQ(result.position, 2UL);
}

TEST(QVPatternSearch, LeavesThePositionAloneWhereNothingIsFound) {
    for (const auto& [text, pattern] :
         {std::pair<std::string, std::string>{"abc", ""}, {"", ""}, {"", "a"}, {"ab", "abc"}, {"abc", "d"}}) {
        const Found result = Search(text, pattern);
        EXPECT_FALSE(result.found) << text << " / " << pattern;
        EXPECT_EQ(result.position, kUnset);
    }
}

TEST(QVPatternSearch, StepsOverAPlaceWhereThePatternStands) {
    // The first comparison ends at the third "x", which is not in the pattern: the search moves on by 5.
    const std::string text = "xxxabcab..";
    EXPECT_EQ(text.find("abcab"), 3U);
    EXPECT_FALSE(Search(text, "abcab").found);
}

TEST(QVPatternSearch, AcceptsNullArguments) {
    const auto* text = reinterpret_cast<const unsigned char*>("abc");
    unsigned long position = kUnset;
    EXPECT_EQ(QVBMSearchPattern(nullptr, 3, text, 1, &position), 0);
    EXPECT_EQ(QVBMSearchPattern(text, 3, nullptr, 1, &position), 0);
    EXPECT_EQ(QVBMSearchPattern(nullptr, 0, nullptr, 0, &position), 0);
    EXPECT_EQ(position, kUnset);
    EXPECT_EQ(QVBMSearchPattern(text, 3, text + 1, 1, nullptr), 1);
}

TEST(QVPatternSearch, FindsNoPatternLongerThanTheTextHoweverLong) {
    const auto* text = reinterpret_cast<const unsigned char*>("abc");
    EXPECT_EQ(QVBMSearchPattern(text, 3, text, ULONG_MAX, nullptr), 0);
}

}  // namespace
