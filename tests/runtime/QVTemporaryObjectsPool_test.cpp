#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Guard.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"
#include "runtime/pool_stacks.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Messages = std::vector<std::string>;

constexpr char kNoPool[] = "The temporary objects pool is not created for this thread. The object will leak";
constexpr char kNotBalanced[] =
    "The temporary objects pool is not balanced (QVTemporaryObjectsPoolCreate and QVRelease).";

// Tells when it dies, and may hand over another temporary while it does.
class Witness final : public QVCBase {
public:
    Witness(std::vector<int>* deaths, int number, void* temporary = nullptr)
        : deaths_(deaths), number_(number), temporary_(temporary) {}
    ~Witness() override {
        deaths_->push_back(number_);
        if (temporary_ != nullptr) QVTEMPOBJ(temporary_);
    }
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

private:
    std::vector<int>* deaths_;
    int number_;
    void* temporary_;
};

TEST(TemporaryPool, ReleasesEachObjectOnceInTheOrderReceived) {
    std::vector<int> deaths;
    const Owned kept{qv::CreateObject<Witness>(&deaths, 0)};
    void* pool = QVTemporaryObjectsPoolCreate();
    EXPECT_EQ(QVGetTypeID(pool), 28);
    EXPECT_EQ(QVTEMPOBJ(QVRetain(kept.Get())), kept.Get());
    for (int i = 1; i <= 3; ++i)
        QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, i));
    EXPECT_EQ(QVGetRetainCount(kept.Get()), 2UL);
    EXPECT_TRUE(deaths.empty());
    QVRelease(pool);
    EXPECT_EQ(deaths, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(QVGetRetainCount(kept.Get()), 1UL);
}

TEST(TemporaryPool, AnObjectHandedOverTwiceIsReleasedTwice) {
    std::vector<int> deaths;
    const Owned object{qv::CreateObject<Witness>(&deaths, 1)};
    Owned pool{QVTemporaryObjectsPoolCreate()};
    QVTEMPOBJ(QVRetain(object.Get()));
    QVTEMPOBJ(QVRetain(object.Get()));
    pool.Reset();
    EXPECT_EQ(QVGetRetainCount(object.Get()), 1UL);
}

TEST(TemporaryPool, NullPassesThrough) {
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    EXPECT_EQ(QVTEMPOBJ(nullptr), nullptr);
}

TEST(TemporaryPool, TheTopPoolReceivesAndPoolsFormAStack) {
    std::vector<int> deaths;
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
    void* outer = QVTemporaryObjectsPoolCreate();
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), outer);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1));
    void* inner = QVTemporaryObjectsPoolCreate();
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), inner);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 2));
    QVRelease(inner);
    EXPECT_EQ(deaths, (std::vector<int>{2}));
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), outer);
    QVRelease(outer);
    EXPECT_EQ(deaths, (std::vector<int>{2, 1}));
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
}

TEST(TemporaryPool, WithoutAPoolTheObjectComesBackAndTheLogSaysSo) {
    const Owned object{QVNullCreate()};
    qvtest::LogCapture log;
    EXPECT_EQ(QVTEMPOBJ(object.Get()), object.Get());
    EXPECT_EQ(log.Messages(), Messages{kNoPool});
    EXPECT_EQ(QVGetRetainCount(object.Get()), 1UL);
}

TEST(TemporaryPool, ObjectsHandedOverDuringADrainAreReleasedToo) {
    std::vector<int> deaths;
    void* pool = QVTemporaryObjectsPoolCreate();
    void* last = qv::CreateObject<Witness>(&deaths, 3);
    void* second = qv::CreateObject<Witness>(&deaths, 2, last);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1, second));
    QVRelease(pool);
    EXPECT_EQ(deaths, (std::vector<int>{1, 2, 3}));
}

TEST(TemporaryPool, OutOfOrderReleaseLeaksThePoolsObjectsAndKeepsTheTop) {
    std::vector<int> deaths;
    void* a = QVTemporaryObjectsPoolCreate();
    void* leaked = QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1));
    void* b = QVTemporaryObjectsPoolCreate();
    {
        qvtest::LogCapture log;
        QVRelease(a);
        EXPECT_EQ(log.Messages(), Messages{kNotBalanced});
    }
    EXPECT_TRUE(deaths.empty());
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), b);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 2));
    qvtest::LogCapture log;
    QVRelease(b);
    EXPECT_TRUE(log.Messages().empty());
    EXPECT_EQ(deaths, (std::vector<int>{2}));
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
    QVRelease(leaked);
}

TEST(TemporaryPool, ReleasedByAWrongThreadItIsNotBalancedAndLeavesNoTrace) {
    void* outer = QVTemporaryObjectsPoolCreate();
    void* inner = QVTemporaryObjectsPoolCreate();
    qvtest::LogCapture log;
    std::thread([inner] { QVRelease(inner); }).join();
    EXPECT_EQ(log.Messages(), Messages{kNotBalanced});
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), outer);
    std::thread([outer] { QVRelease(outer); }).join();
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
    EXPECT_EQ(log.Messages(), (Messages{kNotBalanced, kNotBalanced}));
    // The stack still works.
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), pool.Get());
}

TEST(TemporaryPool, AThreadsEntryGoesWithItsLastPool) {
    const std::size_t before = qv::CountThreadsWithPools();
    void* outer = QVTemporaryObjectsPoolCreate();
    void* inner = QVTemporaryObjectsPoolCreate();
    EXPECT_EQ(qv::CountThreadsWithPools(), before + 1);
    QVRelease(inner);
    EXPECT_EQ(qv::CountThreadsWithPools(), before + 1);
    QVRelease(outer);
    EXPECT_EQ(qv::CountThreadsWithPools(), before);
}

TEST(TemporaryPool, AThreadThatEndsWithOpenPoolsHasThemDrained) {
    std::vector<int> deaths;
    const std::size_t before = qv::CountThreadsWithPools();
    void* pools[2] = {};
    std::thread([&] {
        pools[0] = QVTemporaryObjectsPoolCreate();
        QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1));
        pools[1] = QVTemporaryObjectsPoolCreate();
        QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 2));
    }).join();
    EXPECT_EQ(deaths, (std::vector<int>{2, 1}));
    EXPECT_EQ(qv::CountThreadsWithPools(), before);
    // The pools themselves still belong to whoever created them.
    qvtest::LogCapture log;
    for (void* pool : pools)
        QVRelease(pool);
    EXPECT_EQ(log.Messages(), (Messages{kNotBalanced, kNotBalanced}));
}

TEST(TemporaryPool, CreationAnswersNullWhenMemoryRunsOut) {
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([] {
        void* pool = QVTemporaryObjectsPoolCreate();
        if (pool == nullptr) {
            EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
        }
        QVRelease(pool);
    });
    EXPECT_GE(failures, 3U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(TemporaryPool, AnObjectThatCannotBeParkedIsReleased) {
    std::vector<int> deaths;
    deaths.reserve(4);
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    void* object = qv::CreateObject<Witness>(&deaths, 1);
    qvtest::FailAllocation failing(0);
    EXPECT_EQ(QVTEMPOBJ(object), nullptr);
    EXPECT_EQ(deaths, (std::vector<int>{1}));
}

TEST(Literals, EqualTextsAreOneStringUnderOnePool) {
    void* outer = QVTemporaryObjectsPoolCreate();
    void* text = QVSTR(L"text");
    EXPECT_EQ(QVGetTypeID(text), 3);
    EXPECT_STREQ(QVStringGetBuffer(text), L"text");
    wchar_t copy[] = L"text";
    EXPECT_EQ(QVSTR(copy), text);
    EXPECT_NE(QVSTR(L"other"), text);
    void* inner = QVTemporaryObjectsPoolCreate();
    EXPECT_NE(QVSTR(L"text"), text);
    QVRelease(inner);
    EXPECT_EQ(QVSTR(L"text"), text);
    EXPECT_EQ(QVGetRetainCount(text), 1UL);
    QVRelease(outer);
}

TEST(Literals, ManyTextsAreFoundAgain) {
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    std::vector<void*> strings;
    for (int i = 0; i < 5000; ++i)
        strings.push_back(QVSTR(std::to_wstring(i).c_str()));
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(QVSTR(std::to_wstring(i).c_str()), strings[i]);
}

TEST(Literals, NullTextIsEmptyText) {
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    EXPECT_EQ(QVSTR(nullptr), QVSTR(L""));
    EXPECT_EQ(QVStringGetLength(QVSTR(nullptr)), 0UL);
}

TEST(Literals, WithoutAPoolTheStringIsNeverReleasedAndTheLogSaysSo) {
    qvtest::LogCapture log;
    const Owned string{QVSTR(L"text")};
    EXPECT_EQ(log.Messages(), Messages{kNoPool});
    EXPECT_STREQ(QVStringGetBuffer(string.Get()), L"text");
    EXPECT_EQ(QVGetRetainCount(string.Get()), 1UL);
}

TEST(Literals, AnswerNullWhenMemoryRunsOut) {
    const std::size_t before = qvtest::LiveAllocations();
    {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        const qvtest::LogCapture log;
        qvtest::FailEachAllocation([] {
            for (int i = 0; i < 20; ++i)
                (void)QVSTR(std::to_wstring(i).c_str());
        });
        EXPECT_NE(QVSTR(L"19"), nullptr);
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(EventLoop, ATurnDrainsTheTopPoolAndKeepsIt) {
    std::vector<int> deaths;
    QVFoundationInit();
    void* mainPool = QVTemporaryObjectsPoolGetFrontPool();
    ASSERT_NE(mainPool, nullptr);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1));
    QVTemporaryObjectsPoolHandleEvents();
    EXPECT_EQ(deaths, (std::vector<int>{1}));
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), mainPool);
    void* inner = QVTemporaryObjectsPoolCreate();
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 2));
    QVTemporaryObjectsPoolHandleEvents();
    EXPECT_EQ(deaths, (std::vector<int>{1, 2}));
    QVRelease(inner);
    QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 3));
    QVFoundationExit();
    EXPECT_EQ(deaths, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), nullptr);
}

TEST(EventLoop, DoesNothingWhileTheLibraryIsDownOrWithoutPools) {
    qvtest::LogCapture log;
    QVTemporaryObjectsPoolHandleEvents();
    QVFoundationInit();
    std::thread([] { QVTemporaryObjectsPoolHandleEvents(); }).join();
    QVFoundationExit();
    QVTemporaryObjectsPoolHandleEvents();
    QVTemporaryObjectsPoolRemoveEventsCallBack();
    EXPECT_TRUE(log.Messages().empty());
}

TEST(Fork, AChildCanUsePools) {
    std::vector<int> deaths;
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    const pid_t child = fork();
    if (child == 0) {
        void* inner = QVTemporaryObjectsPoolCreate();
        QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 1));
        QVRelease(inner);
        QVTEMPOBJ(qv::CreateObject<Witness>(&deaths, 2));
        _exit(deaths.size() == 1 && QVTemporaryObjectsPoolGetFrontPool() == pool.Get() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(PoolThreads, EachThreadHasItsOwnStack) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 500; ++i) {
                void* pool = QVTemporaryObjectsPoolCreate();
                EXPECT_EQ(QVTemporaryObjectsPoolGetFrontPool(), pool);
                for (int k = 0; k < 8; ++k)
                    QVTEMPOBJ(QVNullCreate());
                (void)QVSTR(L"text");
                QVRelease(pool);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
