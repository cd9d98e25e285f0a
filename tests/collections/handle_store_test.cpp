#include "collections/handle_store.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <stdexcept>

#include "support/failing_allocator.h"

namespace {

void* HandleNumber(std::size_t number) {
    return reinterpret_cast<void*>(number);
}

void ExpectEqual(const qv::HandleStore& store, const std::deque<void*>& model) {
    ASSERT_EQ(store.Count(), model.size());
    ASSERT_TRUE(std::equal(store.begin(), store.end(), model.begin()));
}

TEST(HandleStore, DoesWhatADequeDoes) {
    constexpr unsigned kSeed = 4711;
    std::mt19937 random(kSeed);
    qv::HandleStore store;
    std::deque<void*> model;
    std::size_t next = 1;
    for (int step = 0; step < 120000; ++step) {
        // Phases of growth, of decay, and of work at one end or both.
        const unsigned phase = static_cast<unsigned>(step / 2000) % 5;
        const bool grows = random() % 100 < (phase == 0 ? 70 : phase == 1 ? 30 : 50);
        const std::size_t size = model.size();
        std::size_t at = random() % (size + 1);
        if (phase == 2) at = 0;
        if (phase == 3) at = grows ? size : 0;
        if (phase == 4) at = random() % 2 == 0 ? 0 : size;
        if (grows || size == 0) {
            store.Insert(at, HandleNumber(next));
            model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), HandleNumber(next++));
        } else {
            at = std::min(at, size - 1);
            ASSERT_EQ(store.Remove(at), model[at]) << "seed " << kSeed << " step " << step;
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        }
        if (step % 97 == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(store, model)) << "seed " << kSeed << " step " << step;
        }
    }
    ExpectEqual(store, model);
}

TEST(HandleStore, WhatWasReservedNeedsNoMoreMemory) {
    qv::HandleStore store;
    store.Reserve(100);
    const qvtest::FailAllocation failing(0, true);
    for (std::size_t i = 0; i < 90; ++i)
        store.Append(HandleNumber(i));
    for (std::size_t i = 0; i < 5; ++i)
        store.Remove(0);
    for (std::size_t i = 0; i < 10; ++i)
        store.Insert(0, HandleNumber(1000 + i));
    for (std::size_t i = 0; i < 5; ++i)
        store.Append(HandleNumber(2000 + i));
    EXPECT_EQ(store.Count(), 100U);
    EXPECT_EQ(store.At(0), HandleNumber(1009));
    EXPECT_EQ(store.At(10), HandleNumber(5));
    EXPECT_EQ(store.At(99), HandleNumber(2004));
    EXPECT_THROW(store.Append(nullptr), std::bad_alloc);
    EXPECT_EQ(store.Count(), 100U);
}

TEST(HandleStore, AFailedInsertionChangesNothing) {
    qv::HandleStore store;
    std::deque<void*> model;
    for (std::size_t i = 0; i < 64; ++i) {
        store.Append(HandleNumber(i));
        model.push_back(HandleNumber(i));
    }
    const qvtest::FailAllocation failing(0, true);
    EXPECT_THROW(store.Insert(0, nullptr), std::bad_alloc);
    EXPECT_THROW(store.Insert(40, nullptr), std::bad_alloc);
    ExpectEqual(store, model);
}

TEST(HandleStore, ImpossibleCapacitiesThrow) {
    qv::HandleStore store;
    EXPECT_THROW(store.Reserve(std::numeric_limits<std::size_t>::max()), std::length_error);
    EXPECT_THROW(store.Reserve(std::numeric_limits<std::size_t>::max() / sizeof(void*) + 2),
                 std::length_error);
    EXPECT_EQ(store.Count(), 0U);
}

// The cost of a million operations at the front would show at once if each moved the rest.
TEST(HandleStore, WorksAtTheFrontInConstantTime) {
    qv::HandleStore store;
    for (std::size_t i = 0; i < 300000; ++i)
        store.Insert(0, HandleNumber(i));
    for (std::size_t i = 300000; i-- > 0;)
        ASSERT_EQ(store.Remove(0), HandleNumber(i));
}

TEST(HandleStore, AQueueReusesItsRoom) {
    qv::HandleStore store;
    for (std::size_t i = 0; i < 16; ++i)
        store.Append(HandleNumber(i));
    const std::size_t before = qvtest::AllocatedBytes();
    for (std::size_t i = 16; i < 100000; ++i) {
        ASSERT_EQ(store.Remove(0), HandleNumber(i - 16));
        store.Append(HandleNumber(i));
    }
    EXPECT_LE(qvtest::AllocatedBytes() - before, 64 * sizeof(void*));
}

}  // namespace
