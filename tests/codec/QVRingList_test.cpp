#include <climits>
#include <vector>

#include <QVFoundation/QVRingList.h>

#include "models/ring_list_model.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/shaped_bytes.h"

namespace {

using Bytes = std::vector<unsigned char>;

qv::Owned MakeRing(unsigned long capacity, const Bytes& values = {}) {
    qv::Owned ring(QVRingListCreate());
    EXPECT_EQ(QVRingListSetBufferSize(ring.Get(), capacity), QVNoErr);
    for (const unsigned char value : values)
        QVRingListAddValue(ring.Get(), value);
    return ring;
}

Bytes Read(const qv::Owned& ring, unsigned long count) {
    Bytes values;
    for (unsigned long i = 0; i < count; ++i)
        values.push_back(QVRingListGetValueAtIndex(ring.Get(), i));
    return values;
}

TEST(QVRingList, BeginsWithoutABuffer) {
    const qv::Owned ring(QVRingListCreate());
    EXPECT_EQ(QVGetTypeID(ring.Get()), QVTypeIDRingList);
    EXPECT_EQ(QVRingListGetBufferSize(ring.Get()), 0UL);
    QVRingListAddValue(ring.Get(), 7);
    EXPECT_EQ(QVRingListGetSize(ring.Get()), 0UL);
    EXPECT_EQ(QVRingListGetValueAtIndex(ring.Get(), 0), 0);
    unsigned long location = 9;
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\0", 1, 0, &location), 0);
    EXPECT_EQ(location, 9UL);
}

TEST(QVRingList, ReadsInOrderUntilItWraps) {
    const auto ring = MakeRing(4, {1, 2, 3});
    EXPECT_EQ(QVRingListGetSize(ring.Get()), 3UL);
    EXPECT_EQ(Read(ring, 5), (Bytes{1, 2, 3, 0, 1}));
}

TEST(QVRingList, ReadsTheSecondOldestFirstAfterAWrap) {
    const auto ring = MakeRing(3, {1, 2, 3, 4});
    EXPECT_EQ(QVRingListGetSize(ring.Get()), 3UL);
    EXPECT_EQ(Read(ring, 3), (Bytes{3, 4, 2}));
    QVRingListAddValue(ring.Get(), 5);
    EXPECT_EQ(Read(ring, 3), (Bytes{4, 5, 3}));
}

TEST(QVRingList, KeepsOneValueInACapacityOfOne) {
    const auto ring = MakeRing(1, {1, 2, 3});
    EXPECT_EQ(Read(ring, 2), (Bytes{3, 3}));
}

TEST(QVRingList, KeepsBytesAndPlacesWhenTheCapacityChanges) {
    const auto ring = MakeRing(4, {1, 2, 3, 4});
    EXPECT_EQ(QVRingListSetBufferSize(ring.Get(), 2), QVNoErr);
    EXPECT_EQ(QVRingListGetSize(ring.Get()), 4UL);
    EXPECT_EQ(Read(ring, 2), (Bytes{1, 2}));
    QVRingListAddValue(ring.Get(), 9);  // the place for adding lies beyond the end: at the front again
    EXPECT_EQ(Read(ring, 2), (Bytes{9, 2}));
    EXPECT_EQ(QVRingListSetBufferSize(ring.Get(), 6), QVNoErr);
    EXPECT_EQ(Read(ring, 6), (Bytes{0, 0, 0, 0, 9, 2}));
}

TEST(QVRingList, RefusesSizesItCannotHave) {
    const auto ring = MakeRing(3, {1, 2});
    EXPECT_EQ(QVRingListSetBufferSize(ring.Get(), 0), QVErrParam);
#if ULONG_MAX > 0xFFFFFFFF
    EXPECT_EQ(QVRingListSetBufferSize(ring.Get(), 0x100000000), QVErrMemory);
#endif
    EXPECT_EQ(QVRingListSetBufferSize(nullptr, 3), QVErrParam);
    EXPECT_EQ(QVRingListGetBufferSize(ring.Get()), 3UL);
    EXPECT_EQ(Read(ring, 2), (Bytes{1, 2}));
}

TEST(QVRingList, StaysAsItWasWhenThereIsNoMemory) {
    const auto ring = MakeRing(3, {1, 2, 3});
    int result = 0;
    qvtest::FailAllocation failing(0);
    result = QVRingListSetBufferSize(ring.Get(), 100);
    EXPECT_TRUE(failing.HasFailed());
    EXPECT_EQ(result, QVErrMemory);
    EXPECT_EQ(QVRingListGetBufferSize(ring.Get()), 3UL);
    EXPECT_EQ(Read(ring, 3), (Bytes{1, 2, 3}));
}

TEST(QVRingList, IsNotCreatedWithoutMemory) {
    qvtest::FailAllocation failing(0);
    EXPECT_EQ(QVRingListCreate(), nullptr);
}

TEST(QVRingList, FindsARunOfValues) {
    const auto ring = MakeRing(8, {5, 6, 7, 6, 7, 8});
    unsigned long location = 0;
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\6\7", 2, 0, &location), 1);
    EXPECT_EQ(location, 1UL);
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\6\7", 2, 2, &location), 1);
    EXPECT_EQ(location, 3UL);
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\6\7\6\6", 4, 0, &location), 0);
    EXPECT_EQ(location, 3UL);
}

TEST(QVRingList, CountsTheOriginTwiceWhereItSearchesAfterAWrap) {
    const auto ring = MakeRing(4, {1, 2, 3, 4, 5});  // the buffer holds 5 2 3 4, the origin is 2
    unsigned long location = 99;
    // The first place to try is 2, compared with what stands at 2 + 2.
    ASSERT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\5", 1, 0, &location), 1);
    EXPECT_EQ(location, 2UL);
    EXPECT_EQ(QVRingListGetValueAtIndex(ring.Get(), location), 5);
}

TEST(QVRingList, AcceptsNullArguments) {
    unsigned long location = 9;
    const auto ring = MakeRing(3, {1});
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), nullptr, 1, 0, &location), 0);
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\1", 0, 0, &location), 0);
    EXPECT_EQ(QVRingListFindMatchedLocation(ring.Get(), "\1", 1, 0, nullptr), 0);
    EXPECT_EQ(QVRingListFindMatchedLocation(nullptr, "\1", 1, 0, &location), 0);
    EXPECT_EQ(location, 9UL);
    QVRingListAddValue(nullptr, 1);
    EXPECT_EQ(QVRingListGetValueAtIndex(nullptr, 0), 0);
    EXPECT_EQ(QVRingListGetSize(nullptr), 0UL);
    EXPECT_EQ(QVRingListGetBufferSize(nullptr), 0UL);
}

TEST(QVRingList, AcceptsIndexesOfAnySize) {
    const auto ring = MakeRing(3, {1, 2, 3, 4});
    // The largest index plus the origin must not wrap before it is brought round the buffer.
    const unsigned long index = ULONG_MAX;
    EXPECT_EQ(QVRingListGetValueAtIndex(ring.Get(), index), QVRingListGetValueAtIndex(ring.Get(), index % 3));
}

TEST(QVRingList, DoesWhatThePlainModelDoes) {
    qvtest::ShapedBytes random(41);
    for (int round = 0; round < 4'000; ++round) {
        const qv::Owned ring(QVRingListCreate());
        qv::model::RingList model;
        for (std::size_t step = random.Below(60); step > 0; --step) {
            switch (random.Below(8)) {
                case 0: {
                    const std::size_t size = random.Below(12);
                    ASSERT_EQ(QVRingListSetBufferSize(ring.Get(), size) == QVNoErr,
                              model.SetBufferSize(size));
                    break;
                }
                case 1: {
                    const Bytes pattern = random.Make(1 + random.Below(4));
                    Bytes small(pattern);
                    for (auto& value : small)
                        value %= 3;
                    const std::size_t start = random.Below(20);
                    unsigned long location = 0;
                    const bool found = QVRingListFindMatchedLocation(ring.Get(), small.data(), small.size(),
                                                                     start, &location) != 0;
                    const auto expected = model.FindMatchedLocation(small, start);
                    ASSERT_EQ(found, expected.has_value()) << "round " << round;
                    ASSERT_EQ(location, expected.value_or(0)) << "round " << round;
                    break;
                }
                default: {
                    const auto value = static_cast<unsigned char>(random.Below(3));
                    QVRingListAddValue(ring.Get(), value);
                    model.AddValue(value);
                    break;
                }
            }
            ASSERT_EQ(QVRingListGetSize(ring.Get()), model.GetSize());
            const std::size_t index = random.Below(30);
            ASSERT_EQ(QVRingListGetValueAtIndex(ring.Get(), index), model.GetValueAtIndex(index));
        }
    }
}

}  // namespace
