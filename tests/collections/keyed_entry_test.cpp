#include "collections/keyed_entry.h"

#include <algorithm>
#include <cwchar>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/failing_allocator.h"

namespace {

struct WcscmpOrder {
    bool operator()(const std::wstring& one, const std::wstring& other) const {
        return std::wcscmp(one.c_str(), other.c_str()) < 0;
    }
};
using Keys = std::set<std::wstring, WcscmpOrder>;

void ExpectSorted(const Keys& keys, unsigned seed) {
    std::vector<qv::KeyedEntry*> entries;
    for (const std::wstring& key : keys)
        entries.push_back(qv::CreateKeyedEntry(key.c_str(), key.size(), nullptr));
    std::mt19937 random(seed);
    std::shuffle(entries.begin(), entries.end(), random);
    qv::SortByKey(entries.data(), entries.size());
    std::vector<std::wstring> sorted;
    for (qv::KeyedEntry* entry : entries) {
        sorted.emplace_back(entry->Key());
        qv::FreeKeyedEntry(entry);
    }
    ASSERT_TRUE(std::equal(sorted.begin(), sorted.end(), keys.begin(), keys.end())) << "seed " << seed;
}

// Keys of few different characters, so that many begin alike and some are prefixes of others.
Keys RandomKeys(unsigned seed, std::size_t count, std::size_t longest, const std::wstring& alphabet,
                const std::wstring& prefix) {
    std::mt19937 random(seed);
    Keys keys;
    for (std::size_t i = 0; i < count; ++i) {
        std::wstring key = prefix;
        for (std::size_t length = random() % (longest + 1); length > 0; --length)
            key += alphabet[random() % alphabet.size()];
        keys.insert(key);
    }
    return keys;
}

TEST(KeyedEntry, HoldsACopyOfItsKey) {
    const std::wstring key = L"a key";
    int value = 0;
    qv::KeyedEntry* entry = qv::CreateKeyedEntry(key.c_str(), key.size(), &value);
    EXPECT_STREQ(entry->Key(), L"a key");
    EXPECT_EQ(entry->keyLength, 5U);
    EXPECT_EQ(entry->value, &value);
    qv::FreeKeyedEntry(entry);
}

TEST(KeyedEntry, RefusesKeysBeyondTheMachine) {
    EXPECT_THROW((void)qv::KeyedEntrySize(std::numeric_limits<std::size_t>::max()), std::length_error);
    EXPECT_THROW((void)qv::KeyedEntrySize(std::numeric_limits<std::size_t>::max() / 4), std::length_error);
}

TEST(KeySort, FollowsWcscmpForEverySizeAndKindOfKey) {
    const std::wstring full = {L'\x01',
                               L'A',
                               L'a',
                               L'\x7F',
                               L'\xE9',
                               static_cast<wchar_t>(0x1F600),
                               static_cast<wchar_t>(0x7FFFFFFF),
                               static_cast<wchar_t>(0x80000000U),
                               static_cast<wchar_t>(0xFFFFFFFFU)};
    for (unsigned seed = 0; seed < 60; ++seed) {
        ASSERT_NO_FATAL_FAILURE(ExpectSorted(RandomKeys(seed, seed, 6, L"ab", L""), seed));
        ASSERT_NO_FATAL_FAILURE(ExpectSorted(RandomKeys(seed, 300, 12, L"ab", L""), seed));
        ASSERT_NO_FATAL_FAILURE(ExpectSorted(RandomKeys(seed, 400, 5, full, L""), seed));
        ASSERT_NO_FATAL_FAILURE(
            ExpectSorted(RandomKeys(seed, 300, 4, L"xyz0123456789", L"a common prefix/"), seed));
    }
}

TEST(KeySort, KeysThatAreAllPrefixesOfOneAnother) {
    Keys keys;
    for (std::size_t length = 0; length < 500; ++length)
        keys.insert(std::wstring(length, L'x'));
    ExpectSorted(keys, 1);
}

// Every pivot is the worst there can be until the budget is spent.
TEST(KeySort, UnluckyPivotsChangeNothingButTheWay) {
    std::vector<qv::KeyedEntry*> entries;
    constexpr std::size_t kCount = 20000;
    for (std::size_t i = 0; i < kCount; ++i) {
        // Organ pipes: rising, then falling.
        const std::size_t number = i < kCount / 2 ? 2 * i : 2 * (kCount - i) - 1;
        const std::wstring key = {static_cast<wchar_t>(1 + number), L'k'};
        entries.push_back(qv::CreateKeyedEntry(key.c_str(), key.size(), nullptr));
    }
    qv::SortByKey(entries.data(), entries.size());
    EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), qv::KeyStandsBefore));
    for (qv::KeyedEntry* entry : entries)
        qv::FreeKeyedEntry(entry);
}

TEST(KeySort, NeedsNoMemory) {
    const Keys keys = RandomKeys(5, 1000, 8, L"abc", L"prefix");
    std::vector<qv::KeyedEntry*> entries;
    for (const std::wstring& key : keys)
        entries.push_back(qv::CreateKeyedEntry(key.c_str(), key.size(), nullptr));
    std::reverse(entries.begin(), entries.end());
    {
        const qvtest::FailAllocation failing(0, true);
        qv::SortByKey(entries.data(), entries.size());
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end(), qv::KeyStandsBefore));
    for (qv::KeyedEntry* entry : entries)
        qv::FreeKeyedEntry(entry);
}

}  // namespace
