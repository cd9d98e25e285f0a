#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

#include <QVFoundation/QVMD5.h>
#include <QVFoundation/QVString.h>

#include "crypto/random_bytes.h"
#include "models/md5_model.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

#if QVTEST_OPENSSL
#include <openssl/evp.h>
#endif

namespace {

using qv::Owned;
using qvtest::Bytes;

std::wstring Text(QVHashValue128 value) {
    const Owned string(QVStringCreateWithHashValue128(value));
    return {QVStringGetBuffer(string.Get()), QVStringGetLength(string.Get())};
}

std::wstring HashText(const std::string& message) {
    return Text(QVHashMD5(message.data(), message.size()));
}

qvmodel::Md5State Words(QVHashValue128 value) {
    return {value.A, value.B, value.C, value.D};
}

TEST(MD5, StandardSuite) {  // RFC 1321, A.5; its 62 and 80 byte messages stand in the tests below
    EXPECT_EQ(HashText(""), L"D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(HashText("a"), L"0CC175B9C0F1B6A831C399E269772661");
    EXPECT_EQ(HashText("abc"), L"900150983CD24FB0D6963F7D28E17F72");
    EXPECT_EQ(HashText("message digest"), L"F96B697D7CB7938D525A2F31AAF161D0");
    EXPECT_EQ(HashText("abcdefghijklmnopqrstuvwxyz"), L"C3FCD3D76192E4007DFB496CCA67E13B");
    EXPECT_EQ(HashText("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              L"57EDF4A22BE3C955AC49DA2E2107B67A");
}

TEST(MD5, LengthsThatLeaveNoRoomHaveTheirOwnDigest) {
    const std::string message = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";  // 62 bytes
    EXPECT_NE(HashText(message), L"D174AB98D277D9F5A5611C2C9F419D9F");  // the standard's digest
    EXPECT_EQ(Words(QVHashMD5(message.data(), message.size())),
              qvmodel::HashMd5(Bytes(message.begin(), message.end())));
}

#if QVTEST_OPENSSL
TEST(MD5, IsTheStandardDigestExactlyWhereTheLengthHasRoom) {
    qvtest::RandomBytes random(10);
    for (std::size_t size = 0; size <= 520; ++size) {
        const Bytes message = random.Make(size);
        const QVHashValue128 ours = QVHashMD5(message.data(), message.size());
        std::uint8_t standard[16];
        ASSERT_EQ(EVP_Digest(message.data(), size, standard, nullptr, EVP_md5(), nullptr), 1);
        std::uint8_t bytes[16];
        std::memcpy(bytes, &ours, sizeof bytes);
        EXPECT_EQ(std::equal(bytes, bytes + 16, standard), size % 64 < 56) << size;
    }
}
#endif

TEST(MD5, PiecesThroughAnObjectGiveTheOneCallDigest) {
    qvtest::RandomBytes random(11);
    const Owned md5(QVMD5Create());
    for (int round = 0; round < 100; ++round) {
        const Bytes message = random.Make(random.Below(400));
        QVMD5Initialize(md5.Get());
        for (std::size_t at = 0; at < message.size();) {
            const std::size_t size = std::min(message.size() - at, 1 + random.Below(90));
            QVMD5Update(md5.Get(), message.data() + at, size);
            at += size;
        }
        QVMD5Finish(md5.Get());
        EXPECT_EQ(Words(QVMD5GetHashValue(md5.Get())), Words(QVHashMD5(message.data(), message.size())));
    }
}

TEST(MD5, NewObjectHoldsZerosUntilItIsInitialized) {
    const Owned md5(QVMD5Create());
    EXPECT_EQ(QVGetTypeID(md5.Get()), 8);
    EXPECT_EQ(QVGetRetainCount(md5.Get()), 1u);
    EXPECT_EQ(Words(QVMD5GetHashValue(md5.Get())), qvmodel::Md5State{});
    QVMD5Initialize(md5.Get());
    EXPECT_EQ(Words(QVMD5GetHashValue(md5.Get())), qvmodel::kMd5Start);
}

TEST(MD5, CreationSaysWhenMemoryRunsOut) {
    qvtest::LogCapture log;
    std::size_t failures = 0;
    const std::size_t live = qvtest::LiveAllocations();
    qvtest::FailEachAllocation([&] {
        const Owned md5(QVMD5Create());
        if (!md5) ++failures;
    });
    EXPECT_EQ(failures, 2u);  // the object and its block
    EXPECT_EQ(qvtest::LiveAllocations(), live);
    EXPECT_EQ(log.Messages(), std::vector<std::string>(2, "Couldn't create the instance of the QVMD5."));
}

TEST(MD5, NullHandlesAndBytesDoNothing) {
    QVMD5Initialize(nullptr);
    QVMD5Update(nullptr, "a", 1);
    QVMD5Finish(nullptr);
    EXPECT_EQ(Words(QVMD5GetHashValue(nullptr)), qvmodel::Md5State{});
    EXPECT_EQ(Text(QVHashMD5(nullptr, 0)), L"D41D8CD98F00B204E9800998ECF8427E");
    EXPECT_EQ(Text(QVHashMD5(nullptr, 9)), L"D41D8CD98F00B204E9800998ECF8427E");

    const Owned md5(QVMD5Create());
    QVMD5Initialize(md5.Get());
    QVMD5Update(md5.Get(), nullptr, 9);
    QVMD5Update(md5.Get(), "a", 1);
    QVMD5Finish(md5.Get());
    EXPECT_EQ(Text(QVMD5GetHashValue(md5.Get())), L"0CC175B9C0F1B6A831C399E269772661");
}

}  // namespace
