#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>

#include "collections/probes.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using qvtest::CreateProbe;
using qvtest::Objects;
using Messages = std::vector<std::string>;
using Handles = std::vector<void*>;

Handles ContentsOf(void* array) {
    Handles contents;
    for (unsigned long i = 0; i < QVArrayGetCount(array); ++i) {
        contents.push_back(QVArrayGetObjectAtIndex(array, i));
    }
    return contents;
}

Owned ArrayOf(const Handles& objects) {
    Owned array{QVArrayCreateWithCapacity(0)};
    for (void* object : objects)
        QVArrayAddObject(array.Get(), object);
    return array;
}

TEST(Array, StartsEmptyWithOneReference) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    EXPECT_EQ(QVGetTypeID(array.Get()), 6);
    EXPECT_EQ(QVGetRetainCount(array.Get()), 1UL);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 0UL);
    EXPECT_EQ(QVArrayGetLastObject(array.Get()), nullptr);
    EXPECT_EQ(QVArrayGetObjectAtIndex(array.Get(), 0), nullptr);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), array.Get()), -1);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), nullptr), -1);
    EXPECT_EQ(QVGetNSObject(array.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(array.Get()), nullptr);
}

TEST(Array, KeepsTheOrderOfAdditionAndOneReferenceToEach) {
    const Objects o;
    {
        const Owned array = ArrayOf({o[0], o[1], o[0]});
        EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[0], o[1], o[0]}));
        EXPECT_EQ(QVArrayGetLastObject(array.Get()), o[0]);
        EXPECT_EQ(QVGetRetainCount(o[0]), 3UL);
        EXPECT_EQ(QVGetRetainCount(o[1]), 2UL);
    }
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
}

TEST(Array, ReadingBeyondTheEndIsSilentlyNull) {
    const Objects o;
    const Owned array = ArrayOf({o[0]});
    const qvtest::LogCapture log;
    EXPECT_EQ(QVArrayGetObjectAtIndex(array.Get(), 1), nullptr);
    EXPECT_EQ(QVArrayGetObjectAtIndex(array.Get(), ULONG_MAX), nullptr);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Array, AddingNullIsRefusedAndLogged) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const qvtest::LogCapture log;
    QVArrayAddObject(array.Get(), nullptr);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 0UL);
    EXPECT_EQ(log.Messages(), Messages{"Add NULL object into the array."});
}

TEST(Array, InsertionGoesBeforeTheElementAndAtTheCountAppends) {
    const Objects o;
    const Owned array{QVArrayCreateWithCapacity(0)};
    const qvtest::LogCapture log;
    QVArrayInsertObjectAtIndex(array.Get(), o[0], 0);
    QVArrayInsertObjectAtIndex(array.Get(), o[1], 0);
    QVArrayInsertObjectAtIndex(array.Get(), o[2], 2);
    QVArrayInsertObjectAtIndex(array.Get(), o[3], 1);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[1], o[3], o[0], o[2]}));
    EXPECT_EQ(QVGetRetainCount(o[3]), 2UL);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Array, InsertionBeyondTheCountIsRefusedAndLogged) {
    const Objects o;
    const Owned array = ArrayOf({o[0]});
    const qvtest::LogCapture log;
    QVArrayInsertObjectAtIndex(array.Get(), o[1], 2);
    QVArrayInsertObjectAtIndex(array.Get(), o[1], ULONG_MAX);
    EXPECT_EQ(ContentsOf(array.Get()), Handles{o[0]});
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
    EXPECT_EQ(log.Messages(), (Messages{"The index(2) is out of range.", "The index(-1) is out of range."}));
}

TEST(Array, InsertedNullIsAnElement) {
    const Objects o;
    const Owned array = ArrayOf({o[0]});
    const qvtest::LogCapture log;
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 0);
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 2);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{nullptr, o[0], nullptr}));
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), nullptr), 0);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[0]), 1);
    QVArrayRemoveObject(array.Get(), nullptr);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[0], nullptr}));
    QVArrayRemoveObjectAtIndex(array.Get(), 1);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[0]}));
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Array, RemovalClosesTheGapAndReleasesTheElement) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[2], o[3]});
    QVArrayRemoveObjectAtIndex(array.Get(), 1);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[0], o[2], o[3]}));
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
    QVArrayRemoveObjectAtIndex(array.Get(), 2);
    QVArrayRemoveObjectAtIndex(array.Get(), 0);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[2]}));
}

TEST(Array, RemovalAtTheCountOrBeyondIsRefusedAndLogged) {
    const Objects o;
    const Owned array = ArrayOf({o[0]});
    const qvtest::LogCapture log;
    QVArrayRemoveObjectAtIndex(array.Get(), 1);
    QVArrayRemoveObjectAtIndex(array.Get(), 2);
    EXPECT_EQ(ContentsOf(array.Get()), Handles{o[0]});
    EXPECT_EQ(log.Messages(), (Messages{"The index(1) is out of range.", "The index(2) is out of range."}));
}

TEST(Array, RemovingAnObjectTakesItsFirstOccurrence) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[0]});
    const qvtest::LogCapture log;
    QVArrayRemoveObject(array.Get(), o[0]);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[1], o[0]}));
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
    QVArrayRemoveObject(array.Get(), o[5]);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 2UL);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Array, RemovingAllReleasesFirstToLast) {
    std::vector<int> deaths;
    const Owned array{QVArrayCreateWithCapacity(0)};
    for (int i = 0; i < 5; ++i) {
        const Owned probe{CreateProbe(i, &deaths)};
        QVArrayAddObject(array.Get(), probe.Get());
    }
    QVArrayRemoveAllObjects(array.Get());
    EXPECT_EQ(deaths, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(QVArrayGetCount(array.Get()), 0UL);
}

TEST(Array, RemovingAllKeepsTheRoom) {
    const Objects o;
    const Owned array{QVArrayCreateWithCapacity(100)};
    for (int i = 0; i < 100; ++i)
        QVArrayAddObject(array.Get(), o[0]);
    QVArrayRemoveAllObjects(array.Get());
    const qvtest::FailAllocation failing(0, true);
    for (int i = 0; i < 100; ++i)
        QVArrayAddObject(array.Get(), o[0]);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 100UL);
    EXPECT_FALSE(failing.HasFailed());
}

TEST(Array, DestructionReleasesFirstToLast) {
    std::vector<int> deaths;
    Owned array{QVArrayCreateWithCapacity(0)};
    for (int i = 0; i < 5; ++i) {
        const Owned probe{CreateProbe(i, &deaths)};
        QVArrayInsertObjectAtIndex(array.Get(), probe.Get(), 0);
    }
    EXPECT_TRUE(deaths.empty());
    array.Reset();
    EXPECT_EQ(deaths, (std::vector<int>{4, 3, 2, 1, 0}));
}

TEST(Array, ReplacingExchangesTheReferences) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1]});
    QVArraySetObjectAtIndex(array.Get(), o[2], 0);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[2], o[1]}));
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[2]), 2UL);
    QVArraySetObjectAtIndex(array.Get(), nullptr, 1);
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[2], nullptr}));
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
}

TEST(Array, ReplacingBeyondTheEndIsSilentlyIgnored) {
    const Objects o;
    const Owned array = ArrayOf({o[0]});
    const qvtest::LogCapture log;
    QVArraySetObjectAtIndex(array.Get(), o[1], 1);
    EXPECT_EQ(ContentsOf(array.Get()), Handles{o[0]});
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Array, ReplacingAnElementByItselfKeepsItAlive) {
    std::vector<int> deaths;
    const Owned array{QVArrayCreateWithCapacity(1)};
    Owned probe{CreateProbe(7, &deaths)};
    QVArrayAddObject(array.Get(), probe.Get());
    probe.Reset();
    void* borrowed = QVArrayGetObjectAtIndex(array.Get(), 0);
    QVArraySetObjectAtIndex(array.Get(), borrowed, 0);
    EXPECT_TRUE(deaths.empty());
    EXPECT_EQ(QVGetRetainCount(borrowed), 1UL);
}

TEST(Array, FindsTheFirstOfEqualHandles) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[1], o[2]});
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[0]), 0);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[1]), 1);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[2]), 3);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[3]), -1);
    EXPECT_EQ(QVArrayIndexOfObject(array.Get(), nullptr), -1);
}

// What a caller may expect of "equal": an object with the same contents is another object.
TEST(Array, FindsWhatQVCompareObjectCallsEqual) {
    const Objects o;
    const Owned array = ArrayOf({o[4], o[2], o[0]});
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 1);
    for (std::size_t i = 0; i < 6; ++i) {
        long expected = -1;
        for (unsigned long at = QVArrayGetCount(array.Get()); at-- > 0;) {
            if (QVCompareObject(QVArrayGetObjectAtIndex(array.Get(), at), o[i]) == 0)
                expected = static_cast<long>(at);
        }
        EXPECT_EQ(QVArrayIndexOfObject(array.Get(), o[i]), expected);
    }
}

TEST(Array, AnElementMayReleaseItsArrayWhileItIsRemoved) {
    Owned array{QVArrayCreateWithCapacity(0)};
    void* keeper = QVArrayCreateWithObject(array.Get());
    QVArrayAddObject(array.Get(), keeper);
    QVRelease(keeper);
    void* borrowed = array.Get();
    array.Reset();  // now only the element holds the array
    const std::size_t before = qvtest::LiveAllocations();
    QVArrayRemoveAllObjects(borrowed);
    EXPECT_LT(qvtest::LiveAllocations(), before);
}

TEST(Array, AnElementMayChangeItsArrayWhileItIsRemoved) {
    const Objects o;
    const Owned array{QVArrayCreateWithCapacity(1)};
    void* handle = array.Get();
    {
        const Owned act{qvtest::CreateLastAct([&o, handle] {
            for (int i = 0; i < 20; ++i)
                QVArrayAddObject(handle, o[0]);
        })};
        QVArrayAddObject(array.Get(), act.Get());
    }
    QVArrayAddObject(array.Get(), o[1]);
    QVArrayRemoveAllObjects(array.Get());
    EXPECT_EQ(QVArrayGetCount(array.Get()), 20UL);
    EXPECT_EQ(QVGetRetainCount(o[0]), 21UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
}

// ---- Lists of arguments ----

TEST(ArrayFromList, StoresAllButTheFirst) {
    const Objects o;
    const Owned array{QVArrayCreateWithObjects(o[0], o[1], o[2])};
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[1], o[2]}));
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 2UL);
}

TEST(ArrayFromList, RoomIsMadeForTheFirstAsWell) {
    const Objects o;
    const Owned array{QVArrayCreateWithObjects(o[0], o[1], o[2])};
    const qvtest::FailAllocation failing(0, true);
    QVArrayAddObject(array.Get(), o[3]);
    EXPECT_EQ(QVArrayGetCount(array.Get()), 3UL);
}

TEST(ArrayFromList, EndsAtAnyFormOfMinusOne) {
    const Objects o;
    const Owned byPointer{(QVArrayCreateWithObjects)(o[0], o[1], reinterpret_cast<void*>(-1L))};
    EXPECT_EQ(ContentsOf(byPointer.Get()), Handles{o[1]});
    const Owned byLong{(QVArrayCreateWithObjects)(o[0], o[1], -1L)};
    EXPECT_EQ(ContentsOf(byLong.Get()), Handles{o[1]});
    const Owned byHalf{(QVArrayCreateWithObjects)(o[0], o[1], static_cast<unsigned long>(0xFFFFFFFFU))};
    EXPECT_EQ(ContentsOf(byHalf.Get()), Handles{o[1]});
    const Owned byInt{QVArrayCreateWithObjects(o[0], o[1], -1, o[2])};
    EXPECT_EQ(ContentsOf(byInt.Get()), Handles{o[1]});
}

TEST(ArrayFromList, AnEndMarkFirstGivesAnEmptyArray) {
    const Objects o;
    const Owned null{QVArrayCreateWithObjects(nullptr, o[0], o[1])};
    EXPECT_EQ(QVArrayGetCount(null.Get()), 0UL);
    const Owned mark{QVArrayCreateWithObjects(reinterpret_cast<void*>(-1L), o[0])};
    EXPECT_EQ(QVArrayGetCount(mark.Get()), 0UL);
    const Owned alone{QVArrayCreateWithObjects(o[0])};
    EXPECT_EQ(QVArrayGetCount(alone.Get()), 0UL);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
}

TEST(ArrayFromList, ALaterNullIsStoredAndEndsTheCountingOnly) {
    const Objects o;
    const Owned array{QVArrayCreateWithObjects(o[0], nullptr, o[1], o[2], o[3], nullptr)};
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{nullptr, o[1], o[2], o[3], nullptr}));
}

TEST(ArrayFromObject, HoldsTheObject) {
    const Objects o;
    const Owned array{QVArrayCreateWithObject(o[0])};
    EXPECT_EQ(ContentsOf(array.Get()), Handles{o[0]});
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
    const Owned empty{QVArrayCreateWithObject(nullptr)};
    EXPECT_EQ(QVArrayGetCount(empty.Get()), 0UL);
}

// ---- Enumerators ----

Handles WalkFrom(void* enumerator) {
    Handles met;
    while (void* object = QVEnumeratorNextObject(enumerator))
        met.push_back(object);
    return met;
}

TEST(ArrayEnumerator, GivesEveryElementAndStartsAgainAfterReset) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[2]});
    const Owned enumerator{QVArrayCreateObjectEnumerator(array.Get())};
    EXPECT_EQ(QVGetTypeID(enumerator.Get()), 2);
    EXPECT_EQ(QVGetRetainCount(enumerator.Get()), 1UL);
    EXPECT_EQ(QVGetNSObject(enumerator.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(enumerator.Get()), nullptr);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1], o[2]}));
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1], o[2]}));
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
}

TEST(ArrayEnumerator, OverAnEmptyArrayEndsAtOnce) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const Owned enumerator{QVArrayCreateObjectEnumerator(array.Get())};
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
}

TEST(ArrayEnumerator, KeepsItsArrayAlive) {
    const Objects o;
    Owned array = ArrayOf({o[0]});
    Owned enumerator{QVArrayCreateObjectEnumerator(array.Get())};
    EXPECT_EQ(QVGetRetainCount(array.Get()), 2UL);
    array.Reset();
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
    enumerator.Reset();
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
}

TEST(ArrayEnumerator, GoesOnAtItsIndexWhenTheArrayChanges) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[2], o[3]});
    const Owned enumerator{QVArrayCreateObjectEnumerator(array.Get())};
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
    QVArrayRemoveObjectAtIndex(array.Get(), 0);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[2]);
    QVArrayInsertObjectAtIndex(array.Get(), o[4], 0);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[2]);
    QVArrayRemoveAllObjects(array.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    for (int i = 0; i < 4; ++i)
        QVArrayAddObject(array.Get(), o[static_cast<std::size_t>(i)]);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[3]);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
}

TEST(ArrayEnumerator, StepsOverNullElements) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1]});
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 1);
    const Owned enumerator{QVArrayCreateObjectEnumerator(array.Get())};
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[1]);
}

// ---- Null handles ----

TEST(Array, NullHandlesDoNothingAndLogNothing) {
    const Objects o;
    const qvtest::LogCapture log;
    EXPECT_EQ(QVArrayGetObjectAtIndex(nullptr, 0), nullptr);
    EXPECT_EQ(QVArrayGetLastObject(nullptr), nullptr);
    EXPECT_EQ(QVArrayGetCount(nullptr), 0UL);
    QVArrayAddObject(nullptr, o[0]);
    QVArrayInsertObjectAtIndex(nullptr, o[0], 0);
    QVArrayRemoveObjectAtIndex(nullptr, 0);
    QVArrayRemoveObject(nullptr, o[0]);
    QVArrayRemoveAllObjects(nullptr);
    EXPECT_EQ(QVArrayCreateObjectEnumerator(nullptr), nullptr);
    QVArraySetObjectAtIndex(nullptr, o[0], 0);
    EXPECT_EQ(QVArrayIndexOfObject(nullptr, o[0]), -1);
    EXPECT_EQ(QVEnumeratorNextObject(nullptr), nullptr);
    QVEnumeratorReset(nullptr);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Memory runs out ----

TEST(ArrayWithoutMemory, CreationGivesNullAndLogs) {
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&nulls] {
        const Owned array{QVArrayCreateWithCapacity(300)};
        if (!array) ++nulls;
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(failures, 2U);
    EXPECT_EQ(nulls, 2U);
    EXPECT_EQ(log.Messages(), Messages(2, "Couldn't allocate the instance of the QVArray. (capacity=300)"));
}

TEST(ArrayWithoutMemory, AnImpossibleCapacityGivesNullAndLogs) {
    const qvtest::LogCapture log;
    EXPECT_EQ(QVArrayCreateWithCapacity(ULONG_MAX), nullptr);
    EXPECT_EQ(log.Messages(), Messages{"Couldn't allocate the instance of the QVArray. (capacity=-1)"});
}

TEST(ArrayWithoutMemory, CreationFromAListLeavesNothingBehind) {
    const Objects o;
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t before = qvtest::LiveAllocations();
    // Counting ends at the null, so the store grows while it is filled.
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned array{QVArrayCreateWithObjects(o[0], nullptr, o[1], o[2], o[3], o[4], o[5], o[6])};
        if (!array) ++nulls;
    });
    const std::size_t singleFailures = qvtest::FailEachAllocation([&] {
        const Owned array{QVArrayCreateWithObject(o[0])};
        if (!array) ++nulls;
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_GE(failures, 3U);
    EXPECT_EQ(singleFailures, 2U);
    EXPECT_EQ(nulls, failures + singleFailures);
    EXPECT_EQ(log.Messages(), Messages(nulls, "Couldn't allocate the instance of the QVArray."));
    for (std::size_t i = 0; i < o.Count(); ++i)
        EXPECT_EQ(QVGetRetainCount(o[i]), 1UL);
}

TEST(ArrayWithoutMemory, AFailedAdditionLogsAndKeepsTheReferenceTaken) {
    const Objects o;
    const Owned array = ArrayOf({o[0], o[1], o[2], o[3]});
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        QVArrayAddObject(array.Get(), o[4]);
        QVArrayInsertObjectAtIndex(array.Get(), o[5], 1);
        QVArrayInsertObjectAtIndex(array.Get(), nullptr, 1);
    }
    EXPECT_EQ(ContentsOf(array.Get()), (Handles{o[0], o[1], o[2], o[3]}));
    EXPECT_EQ(log.Messages(), (Messages{"Failed adding the object into the array.",
                                        "Failed inserting the object.", "Failed inserting the object."}));
    EXPECT_EQ(QVGetRetainCount(o[4]), 2UL);
    EXPECT_EQ(QVGetRetainCount(o[5]), 2UL);
    QVRelease(o[4]);
    QVRelease(o[5]);
}

TEST(ArrayWithoutMemory, NoEnumeratorIsMadeAndTheArrayIsNotRetained) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_EQ(QVArrayCreateObjectEnumerator(array.Get()), nullptr);
    }
    EXPECT_EQ(log.Messages(), Messages{"Couldn't allocate the instance of the QVEnumerator for the array."});
    EXPECT_EQ(QVGetRetainCount(array.Get()), 1UL);
}

// ---- Everything together, against a plain vector ----

class ArrayModel {
public:
    explicit ArrayModel(unsigned seed) : random_(seed) {}

    void Step() {
        const std::size_t size = model_.size();
        void* object = objects_[Below(objects_.Count())];
        const std::size_t at = Below(size + 1);
        switch (Below(20)) {
            default:
                QVArrayAddObject(array_.Get(), object);
                model_.push_back(object);
                break;
            case 7:
            case 8:
            case 9:
                QVArrayInsertObjectAtIndex(array_.Get(), object, at);
                model_.insert(Place(at), object);
                break;
            case 10:
                QVArrayInsertObjectAtIndex(array_.Get(), object, 0);
                model_.insert(model_.begin(), object);
                break;
            case 11:
            case 12:
            case 13:
                if (at < size) {
                    QVArrayRemoveObjectAtIndex(array_.Get(), at);
                    model_.erase(Place(at));
                }
                break;
            case 14:
            case 15:
                if (size > 0) {
                    QVArrayRemoveObjectAtIndex(array_.Get(), 0);
                    model_.erase(model_.begin());
                }
                break;
            case 16:
            case 17: {
                QVArrayRemoveObject(array_.Get(), object);
                const auto found = std::find(model_.begin(), model_.end(), object);
                if (found != model_.end()) model_.erase(found);
                break;
            }
            case 18:
                QVArraySetObjectAtIndex(array_.Get(), object, at);
                if (at < size) model_[at] = object;
                break;
            case 19:
                if (Below(400) == 0) {
                    QVArrayRemoveAllObjects(array_.Get());
                    model_.clear();
                }
                break;
        }
    }

    void Check() {
        ASSERT_EQ(ContentsOf(array_.Get()), model_);
        ASSERT_EQ(WalkFrom(Owned{QVArrayCreateObjectEnumerator(array_.Get())}.Get()), model_);
        ASSERT_EQ(QVArrayGetLastObject(array_.Get()), model_.empty() ? nullptr : model_.back());
        for (std::size_t i = 0; i < objects_.Count(); ++i) {
            const auto held = std::count(model_.begin(), model_.end(), objects_[i]);
            ASSERT_EQ(QVGetRetainCount(objects_[i]), static_cast<unsigned long>(held) + 1);
            const auto found = std::find(model_.begin(), model_.end(), objects_[i]);
            ASSERT_EQ(QVArrayIndexOfObject(array_.Get(), objects_[i]),
                      found == model_.end() ? -1 : static_cast<long>(found - model_.begin()));
        }
    }

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    Handles::iterator Place(std::size_t at) { return model_.begin() + static_cast<std::ptrdiff_t>(at); }

    std::mt19937 random_;
    Objects objects_;
    Handles model_;
    Owned array_{QVArrayCreateWithCapacity(0)};
};

TEST(Array, BehavesAsAVectorThatCountsReferences) {
    constexpr unsigned kSeed = 3303;
    ArrayModel model(kSeed);
    for (int step = 0; step < 150000; ++step) {
        model.Step();
        if (step % 499 == 0) {
            ASSERT_NO_FATAL_FAILURE(model.Check()) << "seed " << kSeed << " step " << step;
        }
    }
    model.Check();
}

}  // namespace
