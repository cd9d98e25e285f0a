#include <bit>
#include <cstdlib>
#include <gtest/gtest.h>

#include <QVFoundation/QVLibrary.h>

namespace {

TEST(ByteOrder, IsTheProcessors) {
    EXPECT_EQ(QVByteOrderGetNativeOrder(), std::endian::native == std::endian::little ? 1 : 2);
}

TEST(Random, DrawsFromTheCLibrarysGenerator) {
    QVRandom();  // the first call seeds
    std::srand(1234);
    const int expected = std::rand();
    std::srand(1234);
    EXPECT_EQ(QVRandom(), expected);
}

TEST(Random, StaysInTheGeneratorsRange) {
    for (int i = 0; i < 1000; ++i) {
        const int value = QVRandom();
        EXPECT_GE(value, 0);
        EXPECT_LE(value, RAND_MAX);
    }
}

}  // namespace
