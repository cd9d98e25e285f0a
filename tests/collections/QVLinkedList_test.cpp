#include <algorithm>
#include <climits>
#include <deque>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVLinkedList.h>

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

Handles WalkFrom(void* enumerator) {
    Handles met;
    while (void* object = QVEnumeratorNextObject(enumerator))
        met.push_back(object);
    return met;
}

Handles ContentsOf(void* list) {
    return WalkFrom(Owned{QVLinkedListCreateObjectEnumerator(list)}.Get());
}

Owned ListOf(const Handles& objects) {
    Owned list{QVLinkedListCreate()};
    for (void* object : objects)
        QVLinkedListAddObject(list.Get(), object);
    return list;
}

TEST(LinkedList, StartsEmptyWithOneReference) {
    const Owned list{QVLinkedListCreate()};
    EXPECT_EQ(QVGetTypeID(list.Get()), 7);
    EXPECT_EQ(QVGetRetainCount(list.Get()), 1UL);
    EXPECT_EQ(QVLinkedListGetCount(list.Get()), 0UL);
    EXPECT_EQ(QVLinkedListGetFrontObject(list.Get()), nullptr);
    EXPECT_EQ(QVLinkedListGetLastObject(list.Get()), nullptr);
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), list.Get()), -1);
    EXPECT_EQ(QVGetNSObject(list.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(list.Get()), nullptr);
}

TEST(LinkedList, KeepsTheOrderOfAdditionAndOneReferenceToEach) {
    const Objects o;
    {
        const Owned list = ListOf({o[0], o[1], o[0]});
        EXPECT_EQ(ContentsOf(list.Get()), (Handles{o[0], o[1], o[0]}));
        EXPECT_EQ(QVLinkedListGetCount(list.Get()), 3UL);
        EXPECT_EQ(QVGetRetainCount(o[0]), 3UL);
    }
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(QVGetRetainCount(o[1]), 1UL);
}

TEST(LinkedList, AnOnlyElementIsFirstAndLast) {
    const Objects o;
    const Owned list = ListOf({o[0]});
    EXPECT_EQ(QVLinkedListGetFrontObject(list.Get()), o[0]);
    EXPECT_EQ(QVLinkedListGetLastObject(list.Get()), o[0]);
}

TEST(LinkedList, AddingNullIsRefusedAndLogged) {
    const Owned list{QVLinkedListCreate()};
    const qvtest::LogCapture log;
    QVLinkedListAddObject(list.Get(), nullptr);
    EXPECT_EQ(QVLinkedListGetCount(list.Get()), 0UL);
    EXPECT_EQ(log.Messages(), Messages{"Add the NULL item into the list."});
}

TEST(LinkedList, ReachesAnIndexFromTheFront) {
    const Objects o;
    const Owned list = ListOf({o[0], o[1], o[2]});
    const qvtest::LogCapture log;
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(QVLinkedListGetObjectAtIndex(list.Get(), i), o[i]);
    EXPECT_TRUE(log.Messages().empty());
    EXPECT_EQ(QVLinkedListGetObjectAtIndex(list.Get(), 3), nullptr);
    EXPECT_EQ(QVLinkedListGetObjectAtIndex(list.Get(), ULONG_MAX), nullptr);
    EXPECT_EQ(log.Messages(),
              (Messages{"The index(3) is an out of range.", "The index(4294967295) is an out of range."}));
}

TEST(LinkedList, IsTakenFromAtEitherEnd) {
    const Objects o;
    const Owned list = ListOf({o[0], o[1], o[2]});
    QVLinkedListRemoveFrontObject(list.Get());
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_EQ(ContentsOf(list.Get()), (Handles{o[1], o[2]}));
    QVLinkedListRemoveLastObject(list.Get());
    EXPECT_EQ(QVGetRetainCount(o[2]), 1UL);
    EXPECT_EQ(ContentsOf(list.Get()), Handles{o[1]});
    QVLinkedListRemoveLastObject(list.Get());
    EXPECT_EQ(QVLinkedListGetFrontObject(list.Get()), nullptr);
    QVLinkedListAddObject(list.Get(), o[3]);
    EXPECT_EQ(ContentsOf(list.Get()), Handles{o[3]});
}

TEST(LinkedList, TakingFromAnEmptyListDoesNothing) {
    const Owned list{QVLinkedListCreate()};
    const qvtest::LogCapture log;
    QVLinkedListRemoveFrontObject(list.Get());
    QVLinkedListRemoveLastObject(list.Get());
    EXPECT_EQ(QVLinkedListGetCount(list.Get()), 0UL);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(LinkedList, FindsTheFirstOfEqualHandles) {
    const Objects o;
    const Owned list = ListOf({o[0], o[1], o[1], o[2]});
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), o[0]), 0);
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), o[1]), 1);
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), o[2]), 3);
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), o[3]), -1);
    EXPECT_EQ(QVLinkedListIndexOfObject(list.Get(), nullptr), -1);
}

TEST(LinkedList, DestructionReleasesFrontToBack) {
    std::vector<int> deaths;
    Owned list{QVLinkedListCreate()};
    for (int i = 0; i < 30; ++i) {
        const Owned probe{CreateProbe(i, &deaths)};
        QVLinkedListAddObject(list.Get(), probe.Get());
    }
    EXPECT_TRUE(deaths.empty());
    list.Reset();
    ASSERT_EQ(deaths.size(), 30U);
    EXPECT_TRUE(std::is_sorted(deaths.begin(), deaths.end()));
}

TEST(LinkedList, AnElementMayReleaseItsListWhileItIsRemoved) {
    Owned list{QVLinkedListCreate()};
    void* keeper = QVLinkedListCreate();
    QVLinkedListAddObject(keeper, list.Get());
    QVLinkedListAddObject(list.Get(), keeper);
    QVRelease(keeper);
    void* borrowed = list.Get();
    list.Reset();  // now only the element holds the list
    const std::size_t before = qvtest::LiveAllocations();
    QVLinkedListRemoveFrontObject(borrowed);
    EXPECT_LT(qvtest::LiveAllocations(), before);
}

TEST(LinkedList, AnElementMayChangeItsListWhileItIsRemoved) {
    const Objects o;
    const Owned list{QVLinkedListCreate()};
    void* handle = list.Get();
    {
        const Owned act{qvtest::CreateLastAct([&o, handle] {
            QVLinkedListRemoveFrontObject(handle);
            QVLinkedListAddObject(handle, o[1]);
        })};
        QVLinkedListAddObject(list.Get(), act.Get());
    }
    QVLinkedListAddObject(list.Get(), o[0]);
    QVLinkedListRemoveFrontObject(list.Get());
    EXPECT_EQ(ContentsOf(list.Get()), Handles{o[1]});
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
}

// ---- Enumerators ----

TEST(LinkedListEnumerator, GivesEveryElementAndStartsAgainAfterReset) {
    const Objects o;
    const Owned list = ListOf({o[0], o[1], o[2]});
    const Owned enumerator{QVLinkedListCreateObjectEnumerator(list.Get())};
    EXPECT_EQ(QVGetTypeID(enumerator.Get()), 23);
    EXPECT_EQ(QVGetRetainCount(enumerator.Get()), 1UL);
    EXPECT_EQ(QVGetNSObject(enumerator.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(enumerator.Get()), nullptr);
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1], o[2]}));
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1], o[2]}));
}

TEST(LinkedListEnumerator, KeepsItsListAlive) {
    const Objects o;
    Owned list = ListOf({o[0]});
    Owned enumerator{QVLinkedListCreateObjectEnumerator(list.Get())};
    EXPECT_EQ(QVGetRetainCount(list.Get()), 2UL);
    list.Reset();
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
    enumerator.Reset();
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
}

TEST(LinkedListEnumerator, MovesOnWhenItsElementIsRemoved) {
    const Objects o;
    const Owned list = ListOf({o[0], o[1], o[2]});
    const Owned enumerator{QVLinkedListCreateObjectEnumerator(list.Get())};
    QVLinkedListRemoveFrontObject(list.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[1]);
    QVLinkedListRemoveLastObject(list.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVLinkedListRemoveFrontObject(list.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
}

TEST(LinkedListEnumerator, MeetsWhatIsAddedBehindItUntilItIsAtTheEnd) {
    const Objects o;
    const Owned list = ListOf({o[0]});
    const Owned enumerator{QVLinkedListCreateObjectEnumerator(list.Get())};
    QVLinkedListAddObject(list.Get(), o[1]);
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1]}));
    QVLinkedListAddObject(list.Get(), o[2]);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(WalkFrom(enumerator.Get()), (Handles{o[0], o[1], o[2]}));
}

TEST(LinkedListEnumerator, OverAnEmptyListStaysAtTheEndUntilReset) {
    const Objects o;
    const Owned list{QVLinkedListCreate()};
    const Owned enumerator{QVLinkedListCreateObjectEnumerator(list.Get())};
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVLinkedListAddObject(list.Get(), o[0]);
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), nullptr);
    QVEnumeratorReset(enumerator.Get());
    EXPECT_EQ(QVEnumeratorNextObject(enumerator.Get()), o[0]);
}

// ---- Null handles ----

TEST(LinkedList, NullHandlesDoNothingAndLogNothing) {
    const Objects o;
    const qvtest::LogCapture log;
    EXPECT_EQ(QVLinkedListGetCount(nullptr), 0UL);
    EXPECT_EQ(QVLinkedListGetFrontObject(nullptr), nullptr);
    EXPECT_EQ(QVLinkedListGetLastObject(nullptr), nullptr);
    EXPECT_EQ(QVLinkedListGetObjectAtIndex(nullptr, 0), nullptr);
    QVLinkedListAddObject(nullptr, o[0]);
    QVLinkedListRemoveFrontObject(nullptr);
    QVLinkedListRemoveLastObject(nullptr);
    EXPECT_EQ(QVLinkedListCreateObjectEnumerator(nullptr), nullptr);
    EXPECT_EQ(QVLinkedListIndexOfObject(nullptr, o[0]), -1);
    EXPECT_EQ(QVGetRetainCount(o[0]), 1UL);
    EXPECT_TRUE(log.Messages().empty());
}

// ---- Memory runs out ----

TEST(LinkedListWithoutMemory, CreationGivesNullAndLogs) {
    const qvtest::LogCapture log;
    std::size_t nulls = 0;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&nulls] {
        const Owned list{QVLinkedListCreate()};
        if (!list) ++nulls;
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(failures, 2U);
    EXPECT_EQ(nulls, 2U);
    EXPECT_EQ(log.Messages(), Messages(2, "Couldn't allocate the instance of the QVLinkedList."));
}

TEST(LinkedListWithoutMemory, AFailedAdditionLogsAndKeepsTheReferenceTaken) {
    const Objects o;
    const Owned list{QVLinkedListCreate()};
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        QVLinkedListAddObject(list.Get(), o[0]);
    }
    EXPECT_EQ(QVLinkedListGetCount(list.Get()), 0UL);
    EXPECT_EQ(log.Messages(), Messages{"Couldn't add the object into the list."});
    EXPECT_EQ(QVGetRetainCount(o[0]), 2UL);
    QVRelease(o[0]);
}

TEST(LinkedListWithoutMemory, NoEnumeratorIsMadeAndTheListIsNotRetained) {
    const Owned list{QVLinkedListCreate()};
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_EQ(QVLinkedListCreateObjectEnumerator(list.Get()), nullptr);
    }
    EXPECT_EQ(log.Messages(),
              Messages{"Couldn't allocate the instance of the QVEnumerator for the linked list."});
    EXPECT_EQ(QVGetRetainCount(list.Get()), 1UL);
}

// ---- Everything together, against a plain deque ----

TEST(LinkedList, BehavesAsADequeThatCountsReferences) {
    constexpr unsigned kSeed = 3405;
    std::mt19937 random(kSeed);
    const Objects o;
    std::deque<void*> model;
    const Owned list{QVLinkedListCreate()};
    for (int step = 0; step < 120000; ++step) {
        const std::size_t growth = step % 3000 < 1500 ? 6 : 4;
        const std::size_t choice = random() % 10;
        if (choice < growth) {
            void* object = o[random() % o.Count()];
            QVLinkedListAddObject(list.Get(), object);
            model.push_back(object);
        } else if (choice % 2 == 0) {
            QVLinkedListRemoveFrontObject(list.Get());
            if (!model.empty()) model.pop_front();
        } else {
            QVLinkedListRemoveLastObject(list.Get());
            if (!model.empty()) model.pop_back();
        }
        ASSERT_EQ(QVLinkedListGetFrontObject(list.Get()), model.empty() ? nullptr : model.front());
        ASSERT_EQ(QVLinkedListGetLastObject(list.Get()), model.empty() ? nullptr : model.back());
        if (step % 499 != 0) continue;
        ASSERT_EQ(ContentsOf(list.Get()), Handles(model.begin(), model.end()))
            << "seed " << kSeed << " step " << step;
        ASSERT_EQ(QVLinkedListGetCount(list.Get()), model.size());
        for (std::size_t i = 0; i < o.Count(); ++i) {
            const auto held = std::count(model.begin(), model.end(), o[i]);
            ASSERT_EQ(QVGetRetainCount(o[i]), static_cast<unsigned long>(held) + 1);
        }
    }
}

}  // namespace
