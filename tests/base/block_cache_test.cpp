#include "base/block_cache.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

#include "support/failing_allocator.h"

namespace {

TEST(BlockCache, BlocksDoNotOverlapAndKeepTheirBytes) {
    struct Block {
        unsigned char* bytes;
        std::size_t size;
        unsigned char fill;
    };
    std::mt19937 random(1);
    std::vector<Block> blocks;
    for (int step = 0; step < 20000; ++step) {
        if (blocks.empty() || random() % 5 < 3) {
            const std::size_t size = random() % 300;
            auto* bytes = static_cast<unsigned char*>(qv::AllocateBlock(size));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 8, 0U);
            const auto fill = static_cast<unsigned char>(step);
            if (size > 0) std::memset(bytes, fill, size);
            blocks.push_back({bytes, size, fill});
        } else {
            const std::size_t place = random() % blocks.size();
            const Block block = blocks[place];
            for (std::size_t i = 0; i < block.size; ++i)
                ASSERT_EQ(block.bytes[i], block.fill);
            qv::FreeBlock(block.bytes, block.size);
            blocks[place] = blocks.back();
            blocks.pop_back();
        }
    }
    for (const Block& block : blocks)
        qv::FreeBlock(block.bytes, block.size);
}

TEST(BlockCache, NothingIsLeftAfterAThreadThatKeptBlocks) {
    const std::size_t before = qvtest::LiveAllocations();
    std::thread([] {
        std::vector<void*> blocks;
        for (int i = 0; i < 5000; ++i)
            blocks.push_back(qv::AllocateBlock(48));
        for (void* block : blocks)
            qv::FreeBlock(block, 48);
    }).join();
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(BlockCache, WhatAThreadKeepsIsLimitedAndGoesBackOnRequest) {
    constexpr std::size_t kMostBytesKept = 4 * 1024 * 1024;
    constexpr std::size_t kSizes[] = {32, 80, 384};
    std::thread([&] {
        const std::size_t before = qvtest::LiveAllocations();
        for (const std::size_t size : kSizes) {
            std::vector<void*> blocks(2 * kMostBytesKept / size);
            for (void*& block : blocks)
                block = qv::AllocateBlock(size);
            for (void* block : blocks)
                qv::FreeBlock(block, size);
        }
        EXPECT_LE(qvtest::LiveAllocations() - before, kMostBytesKept / kSizes[0]);
        qv::ReleaseKeptBlocks();
        EXPECT_EQ(qvtest::LiveAllocations(), before);
    }).join();
}

TEST(BlockCache, AnotherThreadMayGiveABlockBack) {
    const std::size_t before = qvtest::LiveAllocations();
    void* block = qv::AllocateBlock(64);
    std::thread([block] { qv::FreeBlock(block, 64); }).join();
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(BlockCache, AFailedAllocationThrows) {
    qvtest::FailAllocation failing(0);
    EXPECT_THROW((void)qv::AllocateBlock(40), std::bad_alloc);
}

}  // namespace
