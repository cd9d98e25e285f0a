// The text in which qvtool keeps names.
#include "qvtool/member_index.h"

#include <gtest/gtest.h>

namespace {

using tool::DecodeMemberIndex;
using tool::EncodeMemberIndex;
using tool::Member;

TEST(MemberIndex, IsALineForEachMember) {
    EXPECT_EQ(
        EncodeMemberIndex({{2, false, 0644, 1234, "docs/readme.txt"}, {4294967294, true, 0755, 99, "a b"}}),
        "qvtool member index 1\n2 S 644 1234 docs/readme.txt\n4294967294 C 755 99 a b\n");
}

TEST(MemberIndex, NamesOfAnyBytesAreOneLineAndComeBack) {
    std::string every;
    for (int byte = 1; byte < 256; ++byte)
        every += static_cast<char>(byte);
    const std::string text = EncodeMemberIndex({{2, false, 0600, 0, every}});
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_NE(text.find("\\012"), std::string::npos);
    const auto members = DecodeMemberIndex(text);
    ASSERT_TRUE(members.has_value());
    ASSERT_EQ(members->size(), 1U);
    EXPECT_EQ((*members)[0].name, every);
}

TEST(MemberIndex, AnEmptyOneIsItsFirstLine) {
    const auto members = DecodeMemberIndex("qvtool member index 1\n");
    ASSERT_TRUE(members.has_value());
    EXPECT_TRUE(members->empty());
}

TEST(MemberIndex, TextThatIsNotWellFormedIsNone) {
    const std::string first = "qvtool member index 1\n";
    for (const char* rest :
         {"2 S 644 1 no end", "\n", " 2 S 644 1 x\n", "2 S 644 1\n", "-2 S 644 1 x\n",
          "4294967296 S 644 1 x\n", "2 S 648 1 x\n", "2 S 644 18446744073709551616 x\n", "2 S 644 1 \\01\n",
          "2 S 644 1 \\777\n", "2 S 644 1 \\\n", "2  S 644 1 x\n", "2 SC 644 1 x\n"}) {
        EXPECT_FALSE(DecodeMemberIndex(first + rest).has_value()) << rest;
    }
    EXPECT_FALSE(DecodeMemberIndex("").has_value());
    EXPECT_FALSE(DecodeMemberIndex("qvtool member index 2\n").has_value());
}

}  // namespace
