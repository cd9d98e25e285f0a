#include <climits>
#include <string>
#include <vector>

#include <QVFoundation/QVBlockTransform.h>

#include "models/block_transform_model.h"
#include "support/failing_allocator.h"
#include "support/shaped_bytes.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes BytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

std::string Hex(const Bytes& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        text += "0123456789abcdef"[byte / 16];
        text += "0123456789abcdef"[byte % 16];
    }
    return text;
}

TEST(QVBWT, SortsThreeBytesAndBringsThemBack) {
    Bytes out(3);
    unsigned long primary = 99;
    EXPECT_EQ(QVBWTEncode(out.data(), &primary, BytesOf("cab").data(), 3), QVNoErr);
    EXPECT_EQ(out, BytesOf("cab"));
    EXPECT_EQ(primary, 0UL);
    Bytes back(3);
    EXPECT_EQ(QVBWTDecode(back.data(), out.data(), 3, 0), QVNoErr);
    EXPECT_EQ(back, BytesOf("cab"));
}

TEST(QVBWT, KeepsItsOutputForProseToTheByte) {
    const Bytes in =
        BytesOf("she sells sea shells by the sea shore; the shells she sells are sea shells for sure");
    Bytes out(in.size());
    unsigned long primary = 0;
    ASSERT_EQ(QVBWTEncode(out.data(), &primary, in.data(), in.size()), QVNoErr);
    EXPECT_EQ(std::string(out.begin(), out.end()),
              "esa;seseseaaesryee ee hrhhsrshrshhhss ssssttsseellelellefhuoaoe  l    l l  ll    sb");
    EXPECT_EQ(primary, 45UL);
}

TEST(QVBWT, KeepsItsOutputForRunsToTheByte) {
    // Mostly one value, which the sort turns over several times.
    Bytes in(40, 'a');
    for (std::size_t i = 0; i < in.size(); i += 8)
        in[i] = static_cast<unsigned char>('b' + i / 8);
    Bytes out(in.size());
    unsigned long primary = 0;
    ASSERT_EQ(QVBWTEncode(out.data(), &primary, in.data(), in.size()), QVNoErr);
    EXPECT_EQ(std::string(out.begin(), out.end()), "aaaaaeaaaaaafaaaaaabaaaaaacaaaaaadaaaaaa");
    EXPECT_EQ(primary, 19UL);
}

TEST(QVBWT, FindsNoPrimaryIndexBelowTwoBytes) {
    unsigned long primary = 7;
    unsigned char out = 0;
    EXPECT_EQ(QVBWTEncode(nullptr, &primary, nullptr, 0), QVErrNotFound);
    EXPECT_EQ(QVBWTEncode(nullptr, nullptr, nullptr, 0), QVErrNotFound);
    EXPECT_EQ(QVBWTEncode(&out, &primary, BytesOf("x").data(), 1), QVErrNotFound);
    EXPECT_EQ(out, 'x');
    EXPECT_EQ(primary, 7UL);
}

TEST(QVBWT, RefusesNullArguments) {
    unsigned long primary = 7;
    Bytes bytes(4);
    EXPECT_EQ(QVBWTEncode(nullptr, &primary, bytes.data(), 4), QVErrParam);
    EXPECT_EQ(QVBWTEncode(bytes.data(), nullptr, bytes.data(), 4), QVErrParam);
    EXPECT_EQ(QVBWTEncode(bytes.data(), &primary, nullptr, 4), QVErrParam);
    EXPECT_EQ(QVBWTDecode(nullptr, bytes.data(), 4, 0), QVErrParam);
    EXPECT_EQ(QVBWTDecode(bytes.data(), nullptr, 4, 0), QVErrParam);
    EXPECT_EQ(QVMTFEncode(nullptr, bytes.data(), 4), QVErrParam);
    EXPECT_EQ(QVMTFEncode(bytes.data(), nullptr, 4), QVErrParam);
    EXPECT_EQ(primary, 7UL);
}

TEST(QVBWT, RefusesSizesAndIndexesOutOfRangeWithoutWriting) {
    const Bytes in = BytesOf("abcd");
    Bytes out(4, 0xEE);
    for (const long primary : {4L, 5L, -1L, LONG_MAX, LONG_MIN}) {
        EXPECT_EQ(QVBWTDecode(out.data(), in.data(), 4, primary), QVErrParam) << primary;
    }
    EXPECT_EQ(QVBWTDecode(out.data(), in.data(), -1, 0), QVErrParam);
    EXPECT_EQ(QVBWTDecode(out.data(), in.data(), LONG_MIN, 0), QVErrParam);
    EXPECT_EQ(QVMTFEncode(out.data(), in.data(), -1), QVErrParam);
    EXPECT_EQ(out, Bytes(4, 0xEE));
    EXPECT_EQ(QVBWTDecode(nullptr, nullptr, 0, 0), QVNoErr);
    EXPECT_EQ(QVBWTDecode(out.data(), in.data(), 0, 1), QVErrParam);
    EXPECT_EQ(QVMTFEncode(nullptr, nullptr, 0), QVNoErr);
}

TEST(QVBWT, ReportsThatThereIsNoMemory) {
    const Bytes in = BytesOf("banana");
    Bytes out(in.size());
    unsigned long primary = 0;
    std::vector<int> results;
    results.reserve(4);
    EXPECT_EQ(qvtest::FailEachAllocation(
                  [&] { results.push_back(QVBWTEncode(out.data(), &primary, in.data(), in.size())); }),
              1U);
    EXPECT_EQ(qvtest::FailEachAllocation([&] {
                  results.push_back(QVBWTDecode(out.data(), in.data(), static_cast<long>(in.size()), 2));
              }),
              1U);
    EXPECT_EQ(results, (std::vector<int>{QVErrMemory, QVNoErr, QVErrMemory, QVNoErr}));
}

TEST(QVBWT, ReportsSizesThatNoMemoryCanHold) {
    unsigned char byte = 0;
    unsigned long primary = 0;
    EXPECT_EQ(QVBWTEncode(&byte, &primary, &byte, ULONG_MAX), QVErrMemory);
    EXPECT_EQ(QVBWTEncode(&byte, &primary, &byte, ULONG_MAX / 4 - 8), QVErrMemory);
    EXPECT_EQ(QVBWTDecode(&byte, &byte, LONG_MAX, 0), QVErrMemory);
}

TEST(QVMTF, ChangesPlacesWithTheFront) {
    Bytes out(5);
    EXPECT_EQ(QVMTFEncode(out.data(), BytesOf("baaca").data(), 5), QVNoErr);
    EXPECT_EQ(out, (Bytes{1, 1, 0, 2, 2}));
}

TEST(QVMTF, WritesPlacesInTheListOfAllValues) {
    Bytes in(256);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<unsigned char>(255 - i);
    Bytes out(in.size());
    EXPECT_EQ(QVMTFEncode(out.data(), in.data(), 256), QVNoErr);
    EXPECT_EQ(out, qv::model::EncodeMoveToFront(in));
    EXPECT_EQ(out[0], 255);
}

TEST(QVMTF, KeepsItsOutputToTheByte) {
    const Bytes in = BytesOf("mississippi river");
    Bytes out(in.size());
    EXPECT_EQ(QVMTFEncode(out.data(), in.data(), static_cast<long>(in.size())), QVNoErr);
    EXPECT_EQ(Hex(out), "0302060006060006040004030503070103");
}

}  // namespace
