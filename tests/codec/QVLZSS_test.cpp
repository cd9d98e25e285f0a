#include <gtest/gtest.h>
#include <string_view>
#include <vector>

#include <QVFoundation/QVLZSS.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"

namespace {

using qv::Owned;

Owned MakeDictionary(std::string_view contents) {
    Owned dictionary{QVLZSSCreate()};
    for (const char c : contents)
        QVLZSSAppendValue(dictionary.Get(), static_cast<unsigned char>(c));
    return dictionary;
}

TEST(LZSS, AMatchIsNeverLongerThanTheBytesHeld) {
    const Owned dictionary = MakeDictionary("abcabc");
    EXPECT_EQ(QVGetTypeID(dictionary.Get()), QVTypeIDLZSS);
    unsigned short offset = 99;
    unsigned char length = 99;
    EXPECT_TRUE(QVLZSSSearchSlideDic(dictionary.Get(), "abcabcabcX", 10, &offset, &length));
    EXPECT_EQ(offset, 0);
    EXPECT_EQ(length, 6);
}

TEST(LZSS, ShortDictionariesAndLookaheadsHaveNoMatch) {
    unsigned short offset = 99;
    unsigned char length = 99;
    EXPECT_FALSE(QVLZSSSearchSlideDic(MakeDictionary("ab").Get(), "ab\0\0", 4, &offset, &length));
    EXPECT_FALSE(QVLZSSSearchSlideDic(MakeDictionary("abcabc").Get(), "abc", 2, &offset, &length));
    EXPECT_FALSE(QVLZSSSearchSlideDic(MakeDictionary("abcabc").Get(), "", 0, &offset, &length));
    EXPECT_EQ(offset, 99) << "without a match nothing is set";
    EXPECT_EQ(length, 99);
}

TEST(LZSS, AmongEqualLengthsTheOldestPlaceWins) {
    unsigned short offset = 99;
    unsigned char length = 99;
    EXPECT_TRUE(QVLZSSSearchSlideDic(MakeDictionary("1abc2abc3abc4").Get(), "abcZ", 4, &offset, &length));
    EXPECT_EQ(offset, 1);
    EXPECT_EQ(length, 3);
}

TEST(LZSS, OffsetsCountFromTheOldestByteHeld) {
    Owned dictionary = MakeDictionary("abcdefgh");
    for (int i = 0; i < 8186; ++i)
        QVLZSSAppendValue(dictionary.Get(), '.');
    unsigned short offset = 99;
    unsigned char length = 99;
    EXPECT_TRUE(QVLZSSSearchSlideDic(dictionary.Get(), "cdefgh", 6, &offset, &length));
    EXPECT_EQ(offset, 0) << "two bytes have been dropped";
    EXPECT_EQ(length, 6);
    EXPECT_FALSE(QVLZSSSearchSlideDic(dictionary.Get(), "bcdefgh", 7, &offset, &length));
}

TEST(LZSS, NullArgumentsAreHarmless) {
    unsigned short offset = 0;
    unsigned char length = 0;
    QVLZSSAppendValue(nullptr, 1);
    EXPECT_FALSE(QVLZSSSearchSlideDic(nullptr, "abc", 3, &offset, &length));
    const Owned dictionary = MakeDictionary("abcabc");
    EXPECT_FALSE(QVLZSSSearchSlideDic(dictionary.Get(), nullptr, 3, &offset, &length));
    EXPECT_TRUE(QVLZSSSearchSlideDic(dictionary.Get(), "abc", 3, nullptr, nullptr));
}

TEST(LZSS, WithoutMemoryThereIsNoDictionary) {
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([] {
        const Owned dictionary = MakeDictionary("abcabc");
        if (dictionary) {
            EXPECT_TRUE(QVLZSSSearchSlideDic(dictionary.Get(), "abc", 3, nullptr, nullptr));
        }
    });
    EXPECT_GE(failures, 5u);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace
