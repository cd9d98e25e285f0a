#include <gtest/gtest.h>
#include <pthread.h>
#include <vector>

#include <QVFoundation/QVObject.h>

#include "runtime/Guard.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Messages = std::vector<std::string>;

TEST(Handles, NullIsToleratedByEveryGenericFunction) {
    EXPECT_EQ(QVRetain(nullptr), nullptr);
    QVRelease(nullptr);
    EXPECT_EQ(QVGetRetainCount(nullptr), 0UL);
    EXPECT_EQ(QVGetTypeID(nullptr), 0);
    EXPECT_EQ(QVGetNSObject(nullptr), nullptr);
    EXPECT_EQ(QVCreateCFObject(nullptr), nullptr);
    EXPECT_EQ(QVCallBackGetAddress(nullptr), nullptr);
    EXPECT_EQ(QVCallBackGetContext(nullptr), nullptr);
    qvtest::LogCapture log;
    EXPECT_EQ(QVCreateCopy(nullptr), nullptr);
    EXPECT_TRUE(log.Messages().empty());
}

TEST(RetainCount, StartsAtOneAndFollowsRetainAndRelease) {
    void* object = QVNullCreate();
    EXPECT_EQ(QVGetRetainCount(object), 1UL);
    EXPECT_EQ(QVRetain(object), object);
    EXPECT_EQ(QVGetRetainCount(object), 2UL);
    QVRelease(object);
    EXPECT_EQ(QVGetRetainCount(object), 1UL);
    QVRelease(object);
}

TEST(RetainCount, TheLastReleaseDestroysTheObject) {
    const std::size_t before = qvtest::LiveAllocations();
    void* object = QVNullCreate();
    QVRetain(object);
    EXPECT_GT(qvtest::LiveAllocations(), before);
    QVRelease(object);
    QVRelease(object);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(NullObject, EachCreationMakesANewOne) {
    const Owned first{QVNullCreate()};
    const Owned second{QVNullCreate()};
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_EQ(QVGetTypeID(first.Get()), 18);
    EXPECT_EQ(QVGetNSObject(first.Get()), nullptr);
    EXPECT_EQ(QVCreateCFObject(first.Get()), nullptr);
}

TEST(CallBack, CarriesAddressAndContext) {
    int address = 0;
    int context = 0;
    const Owned callback{QVCallBackCreate(&address, &context)};
    EXPECT_EQ(QVGetTypeID(callback.Get()), 65535);
    EXPECT_EQ(QVCallBackGetAddress(callback.Get()), &address);
    EXPECT_EQ(QVCallBackGetContext(callback.Get()), &context);
    const Owned empty{QVCallBackCreate(nullptr, nullptr)};
    EXPECT_EQ(QVCallBackGetAddress(empty.Get()), nullptr);
    EXPECT_EQ(QVCallBackGetContext(empty.Get()), nullptr);
}

TEST(GenericCopy, AlwaysFailsAndSaysSo) {
    const Owned object{QVNullCreate()};
    qvtest::LogCapture log;
    EXPECT_EQ(QVCreateCopy(object.Get()), nullptr);
    EXPECT_EQ(log.Messages(), Messages{"The object is not support CreateCopy method."});
}

TEST(GenericData, IsReservedAndAlwaysNull) {
    const Owned object{QVNullCreate()};
    EXPECT_EQ(QVCreateData(object.Get()), nullptr);
    EXPECT_EQ(QVCreateData(nullptr), nullptr);
}

TEST(Comparison, IsTheOrderOfAddressesWithNullBelowEverything) {
    const Owned a{QVNullCreate()};
    const Owned b{QVNullCreate()};
    EXPECT_EQ(QVCompareObject(a.Get(), a.Get()), 0);
    const int expected =
        reinterpret_cast<std::uintptr_t>(a.Get()) < reinterpret_cast<std::uintptr_t>(b.Get()) ? -1 : 1;
    EXPECT_EQ(QVCompareObject(a.Get(), b.Get()), expected);
    EXPECT_EQ(QVCompareObject(b.Get(), a.Get()), -expected);
    EXPECT_EQ(QVCompareObject(nullptr, nullptr), 0);
    EXPECT_EQ(QVCompareObject(nullptr, a.Get()), -1);
    EXPECT_EQ(QVCompareObject(a.Get(), nullptr), 1);
}

TEST(Creation, AnswersNullWhenMemoryRunsOut) {
    const std::size_t before = qvtest::LiveAllocations();
    {
        qvtest::FailAllocation failing(0);
        EXPECT_EQ(QVNullCreate(), nullptr);
    }
    {
        qvtest::FailAllocation failing(0);
        EXPECT_EQ(QVCallBackCreate(nullptr, nullptr), nullptr);
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

// An object that holds another one, to build chains of any depth.
class Link final : public QVCBase {
public:
    explicit Link(void* next, int* destroyed) : next_(next), destroyed_(destroyed) {}
    ~Link() override {
        ++*destroyed_;
        QVRelease(next_);
    }
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

private:
    void* next_;
    int* destroyed_;
};

void* MakeChain(int length, int* destroyed) {
    void* head = nullptr;
    for (int i = 0; i < length; ++i)
        head = qv::CreateObject<Link>(head, destroyed);
    return head;
}

// Runs work on a thread with a stack of 256 KiB.
void RunOnSmallStack(void* (*work)(void*), void* argument) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, work, argument), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Destruction, TwoMillionNestedObjectsNeedLittleStack) {
    int destroyed = 0;
    RunOnSmallStack(
        [](void* argument) -> void* {
            QVRelease(MakeChain(2'000'000, static_cast<int*>(argument)));
            return nullptr;
        },
        &destroyed);
    EXPECT_EQ(destroyed, 2'000'000);
}

TEST(Destruction, IsCompleteWhenTheOutermostReleaseReturns) {
    const std::size_t before = qvtest::LiveAllocations();
    for (const int length : {1, 31, 32, 33, 64, 65, 1000}) {
        int destroyed = 0;
        QVRelease(MakeChain(length, &destroyed));
        EXPECT_EQ(destroyed, length);
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

// Retains and releases itself while it dies, as code called from a destructor may.
class Restless final : public QVCBase {
public:
    explicit Restless(int* destroyed) : destroyed_(destroyed) {}
    ~Restless() override {
        ++*destroyed_;
        QVRetain(qv::ToHandle(this));
        QVRelease(qv::ToHandle(this));
    }
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

private:
    int* destroyed_;
};

TEST(Destruction, ARetainAndReleaseWhileDyingIsHarmless) {
    int destroyed = 0;
    QVRelease(qv::CreateObject<Restless>(&destroyed));
    EXPECT_EQ(destroyed, 1);
}

TEST(Guard, TurnsEveryExceptionIntoTheFailureValue) {
    EXPECT_EQ(qv::Guard(-4, []() -> int { throw std::bad_alloc(); }), -4);
    EXPECT_EQ(qv::Guard(-4, []() -> int { throw 7; }), -4);
    EXPECT_EQ(qv::Guard(-4, [] { return 5; }), 5);
    qv::Guard([] { throw std::bad_alloc(); });
}

TEST(OwnedHandle, ReleasesOnceAndMovesItsReference) {
    void* object = QVNullCreate();
    {
        Owned own{object};
        Owned second = Owned::Retaining(object);
        EXPECT_EQ(QVGetRetainCount(object), 2UL);
        Owned moved = std::move(second);
        EXPECT_FALSE(second);
        EXPECT_TRUE(moved);
        EXPECT_EQ(own.Detach(), object);
    }
    EXPECT_EQ(QVGetRetainCount(object), 1UL);
    QVRelease(object);
}

}  // namespace
