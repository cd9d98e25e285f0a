#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Messages = std::vector<std::string>;

constexpr wchar_t kNullKey[] = L"org.qvfoundation.QVFoundation.Null";
constexpr wchar_t kFileManagerKey[] = L"org.qvfoundation.QVFoundation.SharedFileManager";
constexpr char kNotInitialised[] = "QVFoundation is not initialized.";

TEST(LibraryStart, RegistersTheSharedObjectsUnderTheRegistryAlone) {
    EXPECT_EQ(QVFoundationInit(), 0);
    void* null = QVSingletonGetObject(kNullKey);
    void* fileManager = QVSingletonGetObject(kFileManagerKey);
    EXPECT_EQ(QVGetTypeID(null), 18);
    EXPECT_EQ(QVGetTypeID(fileManager), 27);
    // Until the main pool is drained, the reference of their creation lives there.
    EXPECT_EQ(QVGetRetainCount(null), 2UL);
    EXPECT_EQ(QVGetRetainCount(fileManager), 2UL);
    EXPECT_EQ(QVFoundationExit(), 0);
}

TEST(LibraryStart, IsCounted) {
    QVFoundationInit();
    void* null = QVSingletonGetObject(kNullKey);
    QVFoundationInit();
    EXPECT_EQ(QVSingletonGetObject(kNullKey), null);
    QVFoundationExit();
    EXPECT_EQ(QVSingletonGetObject(kNullKey), null);
    QVFoundationExit();
    qvtest::LogCapture log;
    EXPECT_EQ(QVSingletonGetObject(kNullKey), nullptr);
    EXPECT_EQ(log.Messages(), Messages{kNotInitialised});
}

TEST(LibraryEnd, ASurplusCallIsNotGuardedAgainst) {
    EXPECT_EQ(QVFoundationExit(), 0);  // the count is -1 now
    EXPECT_EQ(QVFoundationInit(), 0);  // counts back to 0 and builds nothing
    {
        qvtest::LogCapture log;
        EXPECT_EQ(QVSingletonGetObject(kNullKey), nullptr);
        EXPECT_EQ(log.Messages(), Messages{kNotInitialised});
    }
    QVFoundationInit();
    EXPECT_NE(QVSingletonGetObject(kNullKey), nullptr);
    QVFoundationExit();
}

TEST(LibraryEnd, LeavesNothingBehind) {
    const std::size_t before = qvtest::LiveAllocations();
    for (int i = 0; i < 3; ++i) {
        QVFoundationInit();
        QVFoundationExit();
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(LibraryStart, SurvivesEveryFailingAllocation) {
    const std::size_t before = qvtest::LiveAllocations();
    qvtest::LogCapture log;
    const std::size_t failures = qvtest::FailEachAllocation([] {
        EXPECT_EQ(QVFoundationInit(), 0);
        EXPECT_EQ(QVFoundationExit(), 0);
    });
    EXPECT_GE(failures, 5U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(Singletons, HoldAReferenceUntilReplacedOrTheEnd) {
    const Owned first{QVNullCreate()};
    const Owned second{QVNullCreate()};
    QVFoundationInit();
    std::wstring key = L"my.key";
    QVSingletonSetObject(first.Get(), key.c_str());
    key = L"changed";  // the key was copied
    EXPECT_EQ(QVSingletonGetObject(L"my.key"), first.Get());
    EXPECT_EQ(QVGetRetainCount(first.Get()), 2UL);
    QVSingletonSetObject(second.Get(), L"my.key");
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1UL);
    EXPECT_EQ(QVSingletonGetObject(L"my.key"), second.Get());
    EXPECT_EQ(QVSingletonGetObject(L"another.key"), nullptr);
    EXPECT_EQ(QVSingletonGetObject(nullptr), nullptr);
    QVFoundationExit();
    EXPECT_EQ(QVGetRetainCount(second.Get()), 1UL);
}

TEST(Singletons, NeedTheLibraryUp) {
    const Owned object{QVNullCreate()};
    qvtest::LogCapture log;
    EXPECT_EQ(QVSingletonGetObject(L"my.key"), nullptr);
    QVSingletonSetObject(object.Get(), L"my.key");
    EXPECT_EQ(log.Messages(), (Messages{kNotInitialised, kNotInitialised}));
    EXPECT_EQ(QVGetRetainCount(object.Get()), 1UL);
}

}  // namespace
