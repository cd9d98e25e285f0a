#include "collections/keyed_map.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/failing_allocator.h"

namespace {

void* ValueNumber(std::size_t number) {
    return reinterpret_cast<void*>(number);
}

std::wstring KeyNumber(std::size_t number) {
    return {L'k', static_cast<wchar_t>(L'a' + number / 26 % 26), static_cast<wchar_t>(L'a' + number % 26)};
}

bool StandsInOrder(const qv::KeyedMap& map) {
    const auto entries = map.InOrder();
    for (std::size_t i = 1; i < entries.size(); ++i) {
        if (!qv::KeyStandsBefore(entries[i - 1], entries[i])) return false;
    }
    return entries.size() == map.Count();
}

TEST(KeyedMap, PutAnswersTheValueItReplaces) {
    qv::KeyedMap map;
    EXPECT_EQ(map.Put(L"a", ValueNumber(1)), nullptr);
    EXPECT_EQ(map.Put(L"a", ValueNumber(2)), ValueNumber(1));
    EXPECT_EQ(map.Find(L"a"), ValueNumber(2));
    EXPECT_EQ(map.Remove(L"a"), ValueNumber(2));
    EXPECT_EQ(map.Remove(L"a"), nullptr);
    EXPECT_EQ(map.Count(), 0U);
}

// What was in order stays, what was added since is merged in, what was removed is left out: all of it without
// memory.
TEST(KeyedMap, TheOrderIsMadeWithoutMemory) {
    qv::KeyedMap map;
    for (std::size_t i = 0; i < 300; ++i)
        map.Put(KeyNumber(i * 7 % 300).c_str(), ValueNumber(i + 1));
    ASSERT_TRUE(StandsInOrder(map));
    for (std::size_t i = 300; i < 400; ++i)
        map.Put(KeyNumber(i * 7 % 100 + 300).c_str(), ValueNumber(i + 1));
    for (std::size_t i = 0; i < 400; i += 3)
        EXPECT_NE(map.Remove(KeyNumber(i).c_str()), nullptr);
    const qvtest::FailAllocation failing(0, true);
    EXPECT_TRUE(StandsInOrder(map));
    EXPECT_EQ(map.Count(), 266U);
}

TEST(KeyedMap, EntriesKeepTheirOrderWhileOnlyValuesChange) {
    qv::KeyedMap map;
    for (std::size_t i = 0; i < 50; ++i)
        map.Put(KeyNumber(49 - i).c_str(), ValueNumber(i + 1));
    const auto before = map.InOrder();
    for (std::size_t i = 0; i < 50; ++i)
        map.Put(KeyNumber(i).c_str(), ValueNumber(100 + i));
    const auto after = map.InOrder();
    ASSERT_EQ(before.data(), after.data());
    for (std::size_t i = 0; i < 50; ++i)
        EXPECT_EQ(after[i]->value, ValueNumber(100 + i));
}

TEST(KeyedMap, DrainingPassesTheValuesOnInKeyOrder) {
    qv::KeyedMap map;
    for (std::size_t i = 0; i < 100; ++i)
        map.Put(KeyNumber(i * 37 % 100).c_str(), ValueNumber(i * 37 % 100 + 1));
    std::vector<void*> values;
    map.Drain([&values](void* value) { values.push_back(value); });
    ASSERT_EQ(values.size(), 100U);
    for (std::size_t i = 0; i < 100; ++i)
        EXPECT_EQ(values[i], ValueNumber(i + 1));
    EXPECT_EQ(map.Count(), 0U);
    EXPECT_EQ(map.Find(L"kaa"), nullptr);
    map.Put(L"again", ValueNumber(1));
    EXPECT_EQ(map.Find(L"again"), ValueNumber(1));
}

}  // namespace
