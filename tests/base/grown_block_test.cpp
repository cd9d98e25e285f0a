#include "base/grown_block.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(GrownBlock, ReceivesEveryByteOfTheOldBlockAndNoMore) {
    for (const std::size_t size : {0, 1, 7, 2047, 2048, 2049, 4096, 6145, 10'000}) {
        std::vector<char> from(size);
        for (std::size_t i = 0; i < size; ++i)
            from[i] = static_cast<char>(i * 31 + i / 256);
        std::vector<char> to(size + 1, '#');
        qv::CopyToGrownBlock(to.data(), from.data(), size);
        EXPECT_TRUE(std::equal(from.begin(), from.end(), to.begin())) << size;
        EXPECT_EQ(to.back(), '#') << size;
    }
}

TEST(GrownBlock, TakesNoBlockWhenThereIsNothingToCopy) {
    char byte = 'a';
    qv::CopyToGrownBlock(&byte, nullptr, 0);
    EXPECT_EQ(byte, 'a');
}

}  // namespace
