#include "platform/large_pages.h"

#include <algorithm>
#include <cerrno>
#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(LargePages, LeaveEveryByteAsItIs) {
    for (const std::size_t size : {1, 4095, 4096, 20'000, 5'000'000}) {
        std::vector<unsigned char> block(size + 2, 0xA5);
        qv::PreferLargePages(block.data() + 1, size);
        EXPECT_TRUE(std::all_of(block.begin(), block.end(), [](unsigned char byte) { return byte == 0xA5; }));
    }
}

TEST(LargePages, NothingIsAskedOfNoBlock) {
    errno = 0;
    qv::PreferLargePages(nullptr, 0);
    EXPECT_EQ(errno, 0);
}

}  // namespace
