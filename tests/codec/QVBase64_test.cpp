#include <climits>
#include <optional>
#include <string>

#include <QVFoundation/QVBase64.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "models/base64_model.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/shaped_bytes.h"

namespace {

std::optional<std::string> Contents(void* data) {
    if (data == nullptr) return std::nullopt;
    EXPECT_EQ(QVGetTypeID(data), QVTypeIDData);
    return std::string(static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data));
}

std::optional<std::string> Encode(const std::string& bytes) {
    const qv::LocalPool pool;
    return Contents(QVBase64Encode(bytes.data(), bytes.size()));
}

std::optional<std::string> Decode(const std::string& text) {
    const qv::LocalPool pool;
    return Contents(QVBase64Decode(text.data(), text.size()));
}

TEST(QVBase64, PadsToFourCharacters) {
    EXPECT_EQ(Encode("Man"), "TWFu");
    EXPECT_EQ(Encode("Ma"), "TWE=");
    EXPECT_EQ(Encode("M"), "TQ==");
}

TEST(QVBase64, MakesEmptyDataOfNothing) {
    EXPECT_EQ(Encode(""), "");
    EXPECT_EQ(Decode(""), "");
    EXPECT_EQ(Decode("="), "");
    const qv::LocalPool pool;
    EXPECT_EQ(Contents(QVBase64Encode(nullptr, 0)), "");
    EXPECT_EQ(Contents(QVBase64Decode(nullptr, 0)), "");
}

TEST(QVBase64, StopsAtTheFirstEqualsSign) {
    EXPECT_EQ(Decode("TWE=xyz"), "Ma");
    EXPECT_EQ(Decode("TWE=\n"), "Ma");
    EXPECT_EQ(Decode("TWFu=!!!"), "Man");
}

TEST(QVBase64, DropsBitsThatDoNotFillAByte) {
    EXPECT_EQ(Decode("T"), "");
    EXPECT_EQ(Decode("TW"), "M");
    EXPECT_EQ(Decode("TWF"), "Ma");
    EXPECT_EQ(Decode("TWFuT"), "Man");
}

TEST(QVBase64, RefusesWhiteSpaceAndOtherAlphabets) {
    for (const char* text : {"TWFu\n", " TWFu", "TW Fu", "TW-u", "TW_u", "TWF\xC3\xA4"}) {
        EXPECT_EQ(Decode(text), std::nullopt) << text;
    }
}

TEST(QVBase64, ComesBackToRandomBytesOfEverySize) {
    qvtest::ShapedBytes random(51);
    for (std::size_t size = 0; size < 300; ++size) {
        const auto bytes = random.Make(size);
        const auto text = Encode(std::string(bytes.begin(), bytes.end()));
        ASSERT_EQ(text, qv::model::EncodeBase64(bytes));
        ASSERT_EQ(Decode(*text), std::string(bytes.begin(), bytes.end()));
    }
}

TEST(QVBase64, RefusesNullWithALength) {
    EXPECT_EQ(QVBase64Encode(nullptr, 1), nullptr);
    EXPECT_EQ(QVBase64Decode(nullptr, 1), nullptr);
}

TEST(QVBase64, RefusesLengthsWhoseResultNoDataCanHold) {
    // The text is never looked at, so one byte stands for all of them.
    const qvtest::LogCapture log;
    for (const unsigned long long length : {0xC0000001ULL, 0x100000000ULL, 0x1'8000'0000ULL, 0x200000000ULL,
                                            ULLONG_MAX / 4, ULLONG_MAX - 1, ULLONG_MAX}) {
        EXPECT_EQ(QVBase64Encode("A", length), nullptr) << length;
    }
    for (const unsigned long long length :
         {0x1'5555'5555ULL, 0x1'8000'0000ULL, 0x200000000ULL, ULLONG_MAX / 2, ULLONG_MAX}) {
        EXPECT_EQ(QVBase64Decode("A", length), nullptr) << length;
    }
    EXPECT_EQ(log.Text(), "");
}

TEST(QVBase64, AnswersNullWithoutMemory) {
    const qv::LocalPool pool;
    const std::string bytes(100, 'x');
    const std::string text = qv::model::EncodeBase64({bytes.begin(), bytes.end()});
    const qvtest::LogCapture log;
    int succeeded = 0;
    EXPECT_GE(qvtest::FailEachAllocation([&] {
                  if (QVBase64Encode(bytes.data(), bytes.size()) != nullptr) ++succeeded;
              }),
              1U);
    EXPECT_EQ(succeeded, 1);
    EXPECT_GE(qvtest::FailEachAllocation([&] {
                  if (QVBase64Decode(text.data(), text.size()) != nullptr) ++succeeded;
              }),
              1U);
    EXPECT_EQ(succeeded, 2);
    EXPECT_EQ(log.Text(), "");
}

}  // namespace
