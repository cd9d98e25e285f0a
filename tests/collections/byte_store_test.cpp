#include "collections/byte_store.h"

#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <QVFoundation/QVData.h>

#include "collections/raw_data.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"

using qv::ByteStore;
using qv::Owned;

namespace {

std::string TextOf(const ByteStore& store) {
    return {reinterpret_cast<const char*>(store.Bytes()), store.Size()};
}

}  // namespace

TEST(ByteStoreWrite, OverwritesAndAddsLikeAString) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        ByteStore store;
        std::string model;
        for (int step = 0; step < 3000; ++step) {
            const std::size_t offset = random() % (model.size() + 1);
            std::string bytes(random() % 40, static_cast<char>('a' + random() % 26));
            store.Write(offset, bytes.data(), bytes.size());
            model.replace(offset, bytes.size(), bytes);
            if (model.size() > 2000) {
                store.Resize(7);
                model.resize(7);
            }
            ASSERT_EQ(TextOf(store), model) << step;
        }
    }
}

TEST(ByteStoreWrite, TakesItsOwnBytesAlsoWhileItGrows) {
    for (const std::size_t offset : {0U, 3U, 10U}) {
        for (const bool hasRoom : {false, true}) {
            ByteStore store;
            store.Append("0123456789", 10);
            if (hasRoom) store.Reserve(1000);
            for (int round = 0; round < 3; ++round) {
                const std::string before = TextOf(store);
                store.Write(offset, store.Bytes() + 1, before.size() - 1);
                std::string wanted = before;
                ASSERT_EQ(TextOf(store), wanted.replace(offset, before.size() - 1, before.substr(1)));
            }
        }
    }
}

TEST(ByteStoreWrite, ChangesNothingWhenItCannotGrow) {
    ByteStore store;
    store.Append("0123456789", 10);
    const std::string bytes(1000, 'x');
    {
        const qvtest::FailAllocation failing(0);
        EXPECT_THROW(store.Write(5, bytes.data(), bytes.size()), std::bad_alloc);
    }
    // Read at run time: the compiler would warn of the copy that is never made.
    const volatile std::size_t most = ByteStore::kMostBytes;
    EXPECT_THROW(store.Write(5, bytes.data(), most), std::length_error);
    EXPECT_EQ(TextOf(store), "0123456789");
}

TEST(ByteStoreWrite, InRoomOnlyWithinTheRoom) {
    ByteStore store;
    EXPECT_FALSE(store.WriteInRoom(0, "a", 1));
    store.Reserve(10);
    EXPECT_TRUE(store.WriteInRoom(0, "0123456789", 10));
    EXPECT_TRUE(store.WriteInRoom(9, "X", 1));
    EXPECT_FALSE(store.WriteInRoom(9, "YZ", 2));
    EXPECT_FALSE(store.WriteInRoom(10, "Y", 1));
    EXPECT_EQ(TextOf(store), "012345678X");
}

TEST(OwnedBytes, AreThoseOfDataThatOwnsThem) {
    const Owned data(QVDataCreate("abc", 3));
    ByteStore* bytes = qv::OwnedBytes(data.Get());
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(TextOf(*bytes), "abc");
    ASSERT_TRUE(QVDataSetSize(data.Get(), 10000));
    bytes->Write(9999, "xyz", 3);
    EXPECT_EQ(QVDataGetSize(data.Get()), 10002UL);
    char memory[4] = {};
    const Owned borrowed(QVDataCreateNoCopy(memory, 4, 1));
    EXPECT_EQ(qv::OwnedBytes(borrowed.Get()), nullptr);
    EXPECT_EQ(qv::OwnedBytes(nullptr), nullptr);
}
