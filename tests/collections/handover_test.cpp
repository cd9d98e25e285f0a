#include "collections/handover.h"

#include <gtest/gtest.h>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>

#include "support/failing_allocator.h"

namespace {

using qv::Owned;

Owned NewObject() {
    return Owned{QVArrayCreateWithCapacity(0)};
}

TEST(Handover, TheCollectionTakesTheOneReferenceOver) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const Owned dictionary{QVDictionaryCreate()};
    Owned first = NewObject();
    Owned second = NewObject();
    void* const firstHandle = first.Get();
    void* const secondHandle = second.Get();
    qv::HandToArray(array.Get(), std::move(first));
    qv::HandToDictionary(dictionary.Get(), std::move(second), L"key");
    EXPECT_FALSE(first);
    EXPECT_FALSE(second);
    EXPECT_EQ(QVArrayGetObjectAtIndex(array.Get(), 0), firstHandle);
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"key"), secondHandle);
    EXPECT_EQ(QVGetRetainCount(firstHandle), 1);
    EXPECT_EQ(QVGetRetainCount(secondHandle), 1);
}

TEST(Handover, AValueThatIsReplacedIsReleased) {
    const Owned dictionary{QVDictionaryCreate()};
    Owned replaced = NewObject();
    const Owned kept = Owned::Retaining(replaced.Get());
    qv::HandToDictionary(dictionary.Get(), std::move(replaced), L"key");
    qv::HandToDictionary(dictionary.Get(), NewObject(), L"key");
    EXPECT_EQ(QVGetRetainCount(kept.Get()), 1);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 1U);
}

TEST(Handover, WithoutRoomNothingChanges) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const Owned dictionary{QVDictionaryCreate()};
    Owned object = NewObject();
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_THROW(qv::HandToArray(array.Get(), std::move(object)), std::bad_alloc);
        EXPECT_THROW(qv::HandToDictionary(dictionary.Get(), std::move(object), L"key"), std::bad_alloc);
    }
    EXPECT_EQ(QVGetRetainCount(object.Get()), 1);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 0U);
    EXPECT_EQ(QVDictionaryCount(dictionary.Get()), 0U);
}

}  // namespace
