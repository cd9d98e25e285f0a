#include "collections/handle_scan.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using Scan = std::size_t (*)(void* const*, std::size_t, const void*) noexcept;

std::vector<Scan> AvailableScans() {
    std::vector<Scan> scans = {qv::FindHandlePlain, qv::FindHandle};
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) scans.push_back(qv::FindHandleAvx2);
#endif
    return scans;
}

void* HandleNumber(std::size_t number) {
    return reinterpret_cast<void*>(16 * number);
}

TEST(HandleScan, FindsEveryPlaceAtEveryLength) {
    for (const Scan scan : AvailableScans()) {
        for (std::size_t count = 0; count < 70; ++count) {
            std::vector<void*> handles;
            for (std::size_t i = 0; i < count; ++i)
                handles.push_back(HandleNumber(i));
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(scan(handles.data(), count, HandleNumber(i)), i) << "count " << count;
            }
            ASSERT_EQ(scan(handles.data(), count, HandleNumber(count)), count);
        }
    }
}

TEST(HandleScan, FindsTheFirstOfSeveralAsThePlainLoopDoes) {
    constexpr unsigned kSeed = 20261;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 2000; ++round) {
        std::vector<void*> handles(random() % 100);
        for (void*& handle : handles)
            handle = HandleNumber(random() % 60);
        void* wanted = HandleNumber(random() % 60);
        std::size_t expected = 0;
        while (expected < handles.size() && handles[expected] != wanted)
            ++expected;
        for (const Scan scan : AvailableScans()) {
            ASSERT_EQ(scan(handles.data(), handles.size(), wanted), expected)
                << "seed " << kSeed << " round " << round;
        }
    }
}

// Half of a handle that looks right is not enough.
TEST(HandleScan, ComparesWholeHandles) {
    if (sizeof(void*) < 8) return;
    const auto wide = static_cast<std::uintptr_t>(0x1122334455667788U);
    const std::vector<void*> handles(32, reinterpret_cast<void*>(wide ^ 1U));
    const std::vector<void*> others(
        32, reinterpret_cast<void*>(wide ^ (static_cast<std::uintptr_t>(1) << (sizeof(void*) * 8 - 1))));
    for (const Scan scan : AvailableScans()) {
        EXPECT_EQ(scan(handles.data(), 32, reinterpret_cast<void*>(wide)), 32U);
        EXPECT_EQ(scan(others.data(), 32, reinterpret_cast<void*>(wide)), 32U);
    }
}

}  // namespace
