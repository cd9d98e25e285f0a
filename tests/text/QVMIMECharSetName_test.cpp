#include <cwchar>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVLibrary.h>

#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/strings.h"

namespace {

constexpr wchar_t kTableKey[] = L"org.qvfoundation.QVFoundation.MIMECharSetName";
constexpr wchar_t kNone[] = L"(null)";

// The library is up for each of these tests, and down again behind it.
class MIMECharSetName : public testing::Test {
protected:
    MIMECharSetName() { QVFoundationInit(); }
    ~MIMECharSetName() override { QVFoundationExit(); }

    static std::wstring Name(uint32_t encoding, uint32_t byteOrder) {
        return qvtest::TextOf(QVGetMIMECharSetName(encoding, byteOrder));
    }
};

TEST_F(MIMECharSetName, OneNameForTheEncodingsOfBytes) {
    for (const uint32_t anyOrder : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(Name(1, anyOrder), L"Shift_JIS");
        EXPECT_EQ(Name(2, anyOrder), L"ISO-2022-JP");
        EXPECT_EQ(Name(3, anyOrder), L"EUC-JP");
        EXPECT_EQ(Name(4, anyOrder), L"UTF-8");
    }
}

TEST_F(MIMECharSetName, OneNameForEachByteOrder) {
    EXPECT_EQ(Name(5, 1), L"UTF-16LE");
    EXPECT_EQ(Name(5, 2), L"UTF-16BE");
    EXPECT_EQ(Name(6, 1), L"UTF-32LE");
    EXPECT_EQ(Name(6, 2), L"UTF-32BE");
    for (const uint32_t noOrder : {0U, 3U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Name(5, noOrder), kNone);
        EXPECT_EQ(Name(6, noOrder), kNone);
    }
}

TEST_F(MIMECharSetName, OtherNumbersHaveNone) {
    for (const uint32_t encoding : {0U, 7U, 0x10004U, 0xFFFFFFFFU}) {
        for (const uint32_t order : {0U, 1U, 2U})
            EXPECT_EQ(Name(encoding, order), kNone);
    }
}

TEST_F(MIMECharSetName, TheTableIsMadeOnceAndLendsItsNames) {
    EXPECT_EQ(QVSingletonGetObject(kTableKey), nullptr);
    void* const name = QVGetMIMECharSetName(4, 0);
    EXPECT_EQ(QVGetRetainCount(name), 1U);
    EXPECT_EQ(QVGetMIMECharSetName(4, 1), name);
    EXPECT_EQ(QVGetRetainCount(QVSingletonGetObject(kTableKey)), 1U);
}

TEST_F(MIMECharSetName, WithoutMemoryThereIsNoNameAndNoHalfTable) {
    const qvtest::LogCapture log;
    qvtest::FailEachAllocation([] {
        void* const name = QVGetMIMECharSetName(6, 1);
        EXPECT_TRUE(name == nullptr || std::wcscmp(QVStringGetBuffer(name), L"UTF-32LE") == 0);
    });
    EXPECT_EQ(Name(6, 1), L"UTF-32LE");
    EXPECT_EQ(Name(1, 0), L"Shift_JIS");
}

TEST(MIMECharSetNameWhileDown, IsNullAndLogged) {
    const qvtest::LogCapture log;
    EXPECT_EQ(QVGetMIMECharSetName(4, 0), nullptr);
    const std::vector<std::string> messages = log.Messages();
    ASSERT_FALSE(messages.empty());
    for (const std::string& message : messages)
        EXPECT_EQ(message, "QVFoundation is not initialized.");
}

}  // namespace
