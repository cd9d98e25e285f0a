#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVData.h>

#include "io/QVInputBitStreamImpl.h"
#include "models/plain_bit_streams.h"
#include "runtime/Handle.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Bytes = std::vector<std::uint8_t>;

Owned MakeData(const Bytes& bytes) {
    return Owned{QVDataCreate(bytes.data(), static_cast<unsigned long>(bytes.size()))};
}

Bytes Contents(void* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return Bytes(bytes, bytes + QVDataGetSize(data));
}

TEST(BitStreams, HaveTypesOfTheirOwn) {
    const Owned input{QVInputBitStreamCreateWithData(nullptr, 0)};
    const Owned output{QVOutputBitStreamCreateWithData(nullptr, 0)};
    EXPECT_EQ(QVGetTypeID(input.Get()), QVTypeIDInputBitStream);
    EXPECT_EQ(QVGetTypeID(output.Get()), QVTypeIDOutputBitStream);
}

// ---- Reading

// The operation is the class's alone.
TEST(InputBitStream, OtherDataIsReadFromItsStart) {
    const Owned first = MakeData({0xFF});
    const Owned second = MakeData({0x00, 0xA5});
    const Owned stream{QVInputBitStreamCreateWithData(first.Get(), 8)};
    auto& input = *qv::FromHandle<QVInputBitStreamImpl>(stream.Get());
    EXPECT_EQ(QVInputBitStreamGetOneBit(stream.Get()), 1);

    input.SetInputData(first.Get(), 4);
    EXPECT_EQ(input.GetMarker(), 1u) << "the Data it holds already changes nothing";
    EXPECT_EQ(input.GetNumberOfBits(), 8u);

    input.SetInputData(second.Get(), 12);
    EXPECT_EQ(QVGetRetainCount(first.Get()), 1u);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 2u);
    EXPECT_EQ(input.GetMarker(), 0u);
    EXPECT_EQ(input.GetNumberOfBits(), 12u);
    std::uint8_t bits[2] = {};
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 12, nullptr, 1), 0);
    EXPECT_EQ(bits[1], 0xA0);

    input.SetInputData(nullptr, 12);
    EXPECT_EQ(QVGetRetainCount(second.Get()), 1u);
    EXPECT_EQ(input.GetNumberOfBits(), 0u);
    EXPECT_TRUE(input.IsEnd());
}

TEST(InputBitStream, BitsComeLeftAlignedOrInModeZeroRightAligned) {
    Owned data = MakeData({0xB5, 0x0F});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), 16)};
    std::uint8_t bits = 0xFF;
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), &bits, 3, nullptr, 1), 0);
    EXPECT_EQ(bits, 0xA0);

    QVInputBitStreamSetMarker(stream.Get(), 0, 0);
    QVInputBitStreamSetBitStoreMode(stream.Get(), 0);
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), &bits, 3, nullptr, 1), 0);
    EXPECT_EQ(bits, 0x05);
    EXPECT_EQ(QVInputBitStreamGetBitStoreMode(stream.Get()), 0);
}

TEST(InputBitStream, ReadingBeyondTheNumberOfBitsIsShort) {
    Owned data = MakeData({0xB5, 0x0F});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), 12)};
    std::uint8_t bits[2] = {0xFF, 0xFF};
    unsigned long done = 0;
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 16, &done, 0), 0);
    EXPECT_EQ(done, 12u);
    EXPECT_EQ(bits[0], 0xB5);
    EXPECT_EQ(bits[1], 0x00);
    EXPECT_TRUE(QVInputBitStreamIsEnd(stream.Get()));

    QVInputBitStreamSetMarker(stream.Get(), 0, 0);
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 16, &done, 1), QVErrBitsShort);
    EXPECT_EQ(done, 12u);
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 1, &done, 0), 0);
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(QVInputBitStreamGetOneBit(stream.Get()));
}

TEST(InputBitStream, AnnouncedBitsThatTheDataDoesNotHaveAreTheEnd) {
    Owned data = MakeData({0xFF});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), ~0ULL)};
    std::uint8_t bits[4];
    unsigned long done = 0;
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 32, &done, 1), QVErrBitsShort);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(QVInputBitStreamGetNumberOfBits(stream.Get()), ~0ULL);
}

TEST(InputBitStream, AMarkerFarBeyondTheDataReadsNothing) {
    Owned data = MakeData(Bytes(16, 0xFF));
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), ~0ULL)};
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 2, -1), -1);  // the last position there is
    std::uint8_t bits[2] = {0xEE, 0xEE};
    unsigned long done = 99;
    EXPECT_FALSE(QVInputBitStreamGetOneBit(stream.Get()));
    EXPECT_EQ(QVInputBitStreamGetBits(stream.Get(), bits, 16, &done, 0), 0);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(bits[0] | bits[1], 0);
    EXPECT_EQ(QVInputBitStreamGetMarker(stream.Get()), -1);
}

TEST(InputBitStream, FutureBitsLeaveTheMarker) {
    Owned data = MakeData({0xB5, 0x0F});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), 16)};
    std::uint8_t bits = 0;
    QVInputBitStreamGetBits(stream.Get(), &bits, 5, nullptr, 1);
    EXPECT_EQ(QVInputBitStreamFutureBits(stream.Get(), &bits, 7, nullptr, 1), 0);
    EXPECT_EQ(bits, 0xA0);
    EXPECT_EQ(QVInputBitStreamGetMarker(stream.Get()), 5);
}

TEST(InputBitStream, SeesDataThatChangesBetweenCalls) {
    Owned data = MakeData({0x80});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), 1000)};
    EXPECT_TRUE(QVInputBitStreamGetOneBit(stream.Get()));
    QVDataSetSize(data.Get(), 100000);  // moves the bytes
    std::memset(QVDataGetMutableBuffer(data.Get()), 0xFF, 100000);
    EXPECT_TRUE(QVInputBitStreamGetOneBit(stream.Get()));
    QVDataSetSize(data.Get(), 0);
    EXPECT_FALSE(QVInputBitStreamGetOneBit(stream.Get()));
    EXPECT_TRUE(QVInputBitStreamIsEnd(stream.Get()));
}

TEST(InputBitStream, MarkerStopsAtBothEnds) {
    Owned data = MakeData({1, 2, 3});
    Owned stream{QVInputBitStreamCreateWithData(data.Get(), 20)};
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 0, -1), 0);
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 0, 21), 20);
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 1, -4), 16);
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 2, 2), 18);
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 7, 1), 18);
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 1, -21), 0);
    // A step to before the start is a very large unsigned position, which stops at the number of bits.
    EXPECT_EQ(QVInputBitStreamSetMarker(stream.Get(), 2, -1), 20);
}

TEST(InputBitStream, ReadsWhatThePlainModelReads) {
    constexpr unsigned kSeed = 43;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Bytes bytes(random() % 40);
        for (auto& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
        const std::uint64_t numberOfBits =
            random() % 8 == 0 ? random() % 400 : random() % (8 * bytes.size() + 1);
        const bool owned = random() % 2 == 0;
        Bytes lent = bytes;
        Owned data = owned ? MakeData(bytes) : Owned{QVDataCreateNoCopy(lent.data(), lent.size(), 0)};
        Owned stream{QVInputBitStreamCreateWithData(data.Get(), numberOfBits)};
        model::InputBits plain(bytes, numberOfBits);
        for (int step = 0; step < 20; ++step) {
            const unsigned long bits = random() % 4 == 0 ? random() % 200 : random() % 20;
            std::uint8_t got[32];
            std::uint8_t expected[32];
            std::memset(got, 0xEE, sizeof got);
            std::memset(expected, 0xEE, sizeof expected);
            unsigned long gotDone = 99;
            unsigned long expectedDone = 99;
            const bool exact = random() % 2 == 0;
            if (owned && random() % 16 == 0) {
                // Another user of the Data changes it.
                bytes.resize(random() % 40);
                ASSERT_TRUE(QVDataSetSize(data.Get(), static_cast<unsigned long>(bytes.size())));
            }
            switch (random() % 6) {
                case 0: {
                    const int origin = static_cast<int>(random() % 4);
                    const long long offset = static_cast<long long>(random() % 500) - 250;
                    ASSERT_EQ(QVInputBitStreamSetMarker(stream.Get(), origin, offset),
                              plain.SetMarker(origin, offset));
                    break;
                }
                case 1:
                    ASSERT_EQ(QVInputBitStreamFutureBits(stream.Get(), got, bits, &gotDone, exact),
                              plain.FutureBits(expected, bits, &expectedDone, exact));
                    break;
                case 2: {
                    const int mode = static_cast<int>(random() % 4) - 1;
                    QVInputBitStreamSetBitStoreMode(stream.Get(), mode);
                    plain.SetMode(mode);
                    break;
                }
                case 3:
                    ASSERT_EQ(QVInputBitStreamGetOneBit(stream.Get()) != 0, plain.GetOneBit());
                    break;
                default:
                    ASSERT_EQ(QVInputBitStreamGetBits(stream.Get(), got, bits, &gotDone, exact),
                              plain.GetBits(expected, bits, &expectedDone, exact));
            }
            ASSERT_EQ(gotDone, expectedDone);
            ASSERT_EQ(std::memcmp(got, expected, sizeof got), 0);
            ASSERT_EQ(QVInputBitStreamGetMarker(stream.Get()), plain.GetMarker());
            ASSERT_EQ(QVInputBitStreamIsEnd(stream.Get()) != 0, plain.IsEnd());
        }
    }
}

// ---- Writing

TEST(OutputBitStream, LowBitsOfAValueLeadInModeOne) {
    Owned data = MakeData({});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    EXPECT_EQ(QVOutputBitStreamPutUInt8(stream.Get(), 0x05, 3, nullptr, 1), 0);
    EXPECT_EQ(QVOutputBitStreamGetNumberOfBits(stream.Get()), 3u);
    EXPECT_EQ(Contents(data.Get()), Bytes{});
    EXPECT_TRUE(QVOutputBitStreamFlush(stream.Get()));
    EXPECT_EQ(Contents(data.Get()), Bytes{0xA0});
}

TEST(OutputBitStream, TopBitsOfAValueAreWrittenInOtherModes) {
    Owned data = MakeData({});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    QVOutputBitSteamSetBitStoreMode(stream.Get(), 0);
    EXPECT_EQ(QVOutputBitStreamGetBitStoreMode(stream.Get()), 0);
    EXPECT_EQ(QVOutputBitStreamPutUInt8(stream.Get(), 0x05, 3, nullptr, 1), 0);
    EXPECT_TRUE(QVOutputBitStreamFlush(stream.Get()));
    EXPECT_EQ(Contents(data.Get()), Bytes{0x00});
}

TEST(OutputBitStream, WritingOverAByteKeepsItsOtherBits) {
    Owned data = MakeData({0xFF});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 8)};
    QVOutputBitStreamPutOneBit(stream.Get(), 0);
    EXPECT_TRUE(QVOutputBitStreamFlush(stream.Get()));
    EXPECT_EQ(Contents(data.Get()), Bytes{0x7F});
}

TEST(OutputBitStream, FullBytesAreInTheDataAtOnce) {
    Owned data = MakeData({});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    EXPECT_EQ(QVOutputBitStreamPutUInt16(stream.Get(), 0x1234, 16, nullptr, 1), 0);
    EXPECT_EQ(Contents(data.Get()), (Bytes{0x12, 0x34}));
    EXPECT_EQ(QVOutputBitStreamPutUInt32(stream.Get(), 0xFFF56789, 20, nullptr, 1), 0);
    EXPECT_EQ(Contents(data.Get()), (Bytes{0x12, 0x34, 0x56, 0x78}));
}

TEST(OutputBitStream, ReleaseWritesTheByteAtTheMarkerEvenWithoutBits) {
    Owned data = MakeData({});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    QVOutputBitStreamPutUInt8(stream.Get(), 0xAB, 8, nullptr, 1);
    stream.Reset();
    EXPECT_EQ(Contents(data.Get()), (Bytes{0xAB, 0x00}));
}

TEST(OutputBitStream, MarkerStopsAtTheNumberOfBits) {
    Owned data = MakeData({1, 2, 3});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 17)};
    EXPECT_EQ(QVOutputBitStreamSetMarker(stream.Get(), 0, 18), 17);
    QVOutputBitStreamSetNumberOfBits(stream.Get(), 100);
    EXPECT_EQ(QVOutputBitStreamSetMarker(stream.Get(), 1, 5), 100);
    EXPECT_EQ(QVOutputBitStreamSetMarker(stream.Get(), 1, -101), 0);
}

TEST(OutputBitStream, ZeroBitsStillRaiseTheNumberOfBitsToTheMarker) {
    Owned data = MakeData({1, 2, 3});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 24)};
    QVOutputBitStreamSetMarker(stream.Get(), 0, 10);
    for (int put = 0; put < 2; ++put) {
        QVOutputBitStreamSetNumberOfBits(stream.Get(), 3);
        unsigned long done = 99;
        const std::uint8_t byte = 0xFF;
        EXPECT_EQ(put == 0 ? QVOutputBitStreamPutBits(stream.Get(), &byte, 0, &done, 1)
                           : QVOutputBitStreamPutUInt16(stream.Get(), 0xFFFF, 0, &done, 1),
                  0);
        EXPECT_EQ(done, 0u);
        EXPECT_EQ(QVOutputBitStreamGetNumberOfBits(stream.Get()), 10u);
    }
    EXPECT_EQ(Contents(data.Get()), (Bytes{1, 2, 3}));
}

TEST(OutputBitStream, MoreBitsThanTheValueHasAreRefused) {
    Owned data = MakeData({});
    Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    EXPECT_EQ(QVOutputBitStreamPutUInt8(stream.Get(), 1, 9, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamPutUInt16(stream.Get(), 1, 17, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamPutUInt32(stream.Get(), 1, 33, nullptr, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamGetMarker(stream.Get()), 0);
}

TEST(OutputBitStream, OtherDataIsWrittenFromItsStart) {
    Owned first = MakeData({});
    Owned second = MakeData({0x0F});
    Owned stream{QVOutputBitStreamCreateWithData(first.Get(), 0)};
    QVOutputBitStreamPutUInt8(stream.Get(), 1, 4, nullptr, 1);
    QVOutputBitStreamSetOutputData(stream.Get(), first.Get(), 50);
    EXPECT_EQ(QVOutputBitStreamGetMarker(stream.Get()), 4) << "the same Data: nothing happens";

    QVOutputBitStreamSetOutputData(stream.Get(), second.Get(), 8);
    EXPECT_EQ(QVOutputBitStreamGetOutputData(stream.Get()), second.Get());
    EXPECT_EQ(QVOutputBitStreamGetMarker(stream.Get()), 0);
    QVOutputBitStreamPutUInt8(stream.Get(), 0xA, 4, nullptr, 1);
    stream.Reset();
    EXPECT_EQ(Contents(first.Get()), Bytes{}) << "the pending byte is not written";
    EXPECT_EQ(Contents(second.Get()), Bytes{0xAF});
}

TEST(OutputBitStream, WritesWhatThePlainModelWrites) {
    constexpr unsigned kSeed = 44;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Bytes expected(random() % 3 == 0 ? random() % 30 : 0);
        for (auto& byte : expected)
            byte = static_cast<std::uint8_t>(random());
        const std::uint64_t numberOfBits = random() % 2 == 0 ? 0 : random() % 300;
        Owned data = MakeData(expected);
        {
            Owned stream{QVOutputBitStreamCreateWithData(data.Get(), numberOfBits)};
            model::OutputBits plain(expected, numberOfBits);
            for (int step = 0; step < 25; ++step) {
                unsigned long gotDone = 99;
                unsigned long expectedDone = 99;
                const auto value = static_cast<std::uint32_t>(random());
                if (random() % 24 == 0) {
                    // Another user of the Data changes it.
                    expected.resize(random() % 40);
                    ASSERT_TRUE(QVDataSetSize(data.Get(), static_cast<unsigned long>(expected.size())));
                }
                switch (random() % 10) {
                    case 0: {
                        const int origin = static_cast<int>(random() % 4);
                        const long long offset = static_cast<long long>(random() % 400) - 200;
                        ASSERT_EQ(QVOutputBitStreamSetMarker(stream.Get(), origin, offset),
                                  plain.SetMarker(origin, offset));
                        break;
                    }
                    case 1: {
                        const int mode = random() % 2 == 0 ? 1 : static_cast<int>(random() % 4) - 1;
                        QVOutputBitSteamSetBitStoreMode(stream.Get(), mode);
                        plain.SetMode(mode);
                        break;
                    }
                    case 2:
                        ASSERT_TRUE(QVOutputBitStreamFlush(stream.Get()));
                        plain.Flush();
                        break;
                    case 3:
                        if (random() % 4 == 0) {
                            QVOutputBitStreamSetNumberOfBits(stream.Get(), value % 300);
                            plain.SetNumberOfBits(value % 300);
                        }
                        break;
                    case 4: {
                        std::uint8_t bits[40];
                        for (auto& byte : bits)
                            byte = static_cast<std::uint8_t>(random());
                        const unsigned long count = random() % (8 * sizeof bits + 1);
                        ASSERT_EQ(QVOutputBitStreamPutBits(stream.Get(), bits, count, &gotDone, 1), 0);
                        plain.PutBits(bits, count, &expectedDone);
                        break;
                    }
                    case 5:
                        ASSERT_EQ(QVOutputBitStreamPutUInt8(stream.Get(), static_cast<unsigned char>(value),
                                                            value % 9, &gotDone, 1),
                                  0);
                        plain.PutUInt(8, value, value % 9, &expectedDone);
                        break;
                    case 6:
                        ASSERT_EQ(QVOutputBitStreamPutUInt16(stream.Get(), static_cast<unsigned short>(value),
                                                             value % 17, &gotDone, 0),
                                  0);
                        plain.PutUInt(16, value, value % 17, &expectedDone);
                        break;
                    case 7:
                        ASSERT_EQ(QVOutputBitStreamPutUInt32(stream.Get(), value, value % 33, &gotDone, 1),
                                  0);
                        plain.PutUInt(32, value, value % 33, &expectedDone);
                        break;
                    default:
                        QVOutputBitStreamPutOneBit(stream.Get(), value % 2 == 0 ? 0 : 7);
                        plain.PutOneBit(value % 2 != 0);
                }
                ASSERT_EQ(gotDone, expectedDone);
                ASSERT_EQ(QVOutputBitStreamGetMarker(stream.Get()), plain.GetMarker());
                ASSERT_EQ(QVOutputBitStreamGetNumberOfBits(stream.Get()), plain.GetNumberOfBits());
                ASSERT_EQ(Contents(data.Get()), expected);
            }
        }
        ASSERT_EQ(Contents(data.Get()), expected);
    }
}

TEST(OutputBitStream, DataThatCannotTakeABytePassesThroughFlush) {
    std::uint8_t memory[2] = {0x00, 0x11};
    Owned readOnly{QVDataCreateNoCopy(memory, sizeof memory, 0)};
    Owned stream{QVOutputBitStreamCreateWithData(readOnly.Get(), 0)};
    EXPECT_EQ(QVOutputBitStreamPutUInt16(stream.Get(), 0xFFFF, 12, nullptr, 1), 0);
    EXPECT_FALSE(QVOutputBitStreamFlush(stream.Get()));
    EXPECT_EQ(memory[0], 0x00);
    EXPECT_EQ(memory[1], 0x11);

    Owned fixedSize{QVDataCreateNoCopy(memory, sizeof memory, 1)};
    stream.Reset(QVOutputBitStreamCreateWithData(fixedSize.Get(), 0));
    EXPECT_EQ(QVOutputBitStreamPutUInt32(stream.Get(), 0xABCDEF, 24, nullptr, 1), 0);
    EXPECT_FALSE(QVOutputBitStreamFlush(stream.Get()));
    EXPECT_EQ(memory[0], 0xAB);
    EXPECT_EQ(memory[1], 0xCD);
}

// ---- Bad input

TEST(BitStreams, NullNeverCrashes) {
    std::uint8_t byte = 0;
    unsigned long done = 0;
    EXPECT_EQ(QVInputBitStreamGetBits(nullptr, &byte, 1, &done, 1), QVErrParam);
    EXPECT_EQ(QVInputBitStreamFutureBits(nullptr, &byte, 1, &done, 1), QVErrParam);
    EXPECT_FALSE(QVInputBitStreamGetOneBit(nullptr));
    EXPECT_EQ(QVInputBitStreamGetNumberOfBits(nullptr), 0u);
    EXPECT_EQ(QVInputBitStreamGetMarker(nullptr), 0);
    EXPECT_EQ(QVInputBitStreamSetMarker(nullptr, 0, 1), 0);
    EXPECT_FALSE(QVInputBitStreamIsEnd(nullptr));
    QVInputBitStreamSetBitStoreMode(nullptr, 1);
    EXPECT_EQ(QVInputBitStreamGetBitStoreMode(nullptr), 0);
    QVOutputBitStreamSetOutputData(nullptr, nullptr, 1);
    EXPECT_EQ(QVOutputBitStreamGetOutputData(nullptr), nullptr);
    EXPECT_EQ(QVOutputBitStreamPutBits(nullptr, &byte, 1, &done, 1), QVErrParam);
    QVOutputBitStreamPutOneBit(nullptr, 1);
    EXPECT_EQ(QVOutputBitStreamPutUInt8(nullptr, 1, 1, &done, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamPutUInt16(nullptr, 1, 1, &done, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamPutUInt32(nullptr, 1, 1, &done, 1), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamGetNumberOfBits(nullptr), 0u);
    QVOutputBitStreamSetNumberOfBits(nullptr, 1);
    EXPECT_FALSE(QVOutputBitStreamFlush(nullptr));
    EXPECT_EQ(QVOutputBitStreamGetMarker(nullptr), 0);
    EXPECT_EQ(QVOutputBitStreamSetMarker(nullptr, 0, 1), 0);
    QVOutputBitSteamSetBitStoreMode(nullptr, 1);
    EXPECT_EQ(QVOutputBitStreamGetBitStoreMode(nullptr), 0);
}

TEST(BitStreams, NullBufferIsRefusedOnlyWithBits) {
    Owned data = MakeData({1});
    Owned in{QVInputBitStreamCreateWithData(data.Get(), 8)};
    Owned out{QVOutputBitStreamCreateWithData(data.Get(), 8)};
    EXPECT_EQ(QVInputBitStreamGetBits(in.Get(), nullptr, 1, nullptr, 0), QVErrParam);
    EXPECT_EQ(QVInputBitStreamGetBits(in.Get(), nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(QVOutputBitStreamPutBits(out.Get(), nullptr, 1, nullptr, 0), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamPutBits(out.Get(), nullptr, 0, nullptr, 0), 0);
}

TEST(BitStreams, WithoutDataThereIsNothingToReadAndNothingIsKept) {
    Owned in{QVInputBitStreamCreateWithData(nullptr, 100)};
    std::uint8_t bits = 0xFF;
    EXPECT_EQ(QVInputBitStreamGetBits(in.Get(), &bits, 8, nullptr, 0), 0);
    EXPECT_EQ(bits, 0);
    EXPECT_EQ(QVInputBitStreamGetBits(in.Get(), &bits, 8, nullptr, 1), QVErrBitsShort);
    EXPECT_EQ(QVInputBitStreamGetNumberOfBits(in.Get()), 0u);
    EXPECT_EQ(QVInputBitStreamSetMarker(in.Get(), 0, 77), 77);
    EXPECT_TRUE(QVInputBitStreamIsEnd(in.Get()));

    Owned out{QVOutputBitStreamCreateWithData(nullptr, 100)};
    EXPECT_EQ(QVOutputBitStreamPutUInt16(out.Get(), 0xFFFF, 16, nullptr, 1), 0);
    EXPECT_EQ(QVOutputBitStreamGetMarker(out.Get()), 16);
    EXPECT_FALSE(QVOutputBitStreamFlush(out.Get()));
}

TEST(BitStreams, FailedAllocationsLeaveNothingBehind) {
    const qvtest::LogCapture log;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([] {
        Owned data{QVDataCreate(nullptr, 0)};
        Owned out{QVOutputBitStreamCreateWithData(data.Get(), 0)};
        if (out) {
            for (int i = 0; i < 100; ++i)
                QVOutputBitStreamPutUInt32(out.Get(), 0x12345678, 32, nullptr, 1);
            EXPECT_EQ(QVOutputBitStreamGetMarker(out.Get()), 3200);
        }
        Owned in{QVInputBitStreamCreateWithData(data.Get(), 3200)};
        std::uint8_t bits[8];
        QVInputBitStreamGetBits(in.Get(), bits, 64, nullptr, 1);
    });
    EXPECT_GT(failures, 3u);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace
