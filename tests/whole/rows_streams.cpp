// Byte streams and bit streams.
#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVFile.h>
#include <QVFoundation/QVStream.h>

#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr const char kBytes[2000] = "abcdefghijkl";

Owned MakeData(std::size_t size) {
    return Owned{QVDataCreate(kBytes, size)};
}

// A stream over a thousand bytes.
Owned MakeStream() {
    return Owned{QVStreamCreateWithMemory(MakeData(1000).Get())};
}

Row CreatesStream(const char* name, void* (*create)(void*)) {
    return {name,
            [create](Attempt& attempt) {
                const Owned data = MakeData(1);
                attempt.Creates([&] { return create(data.Get()); });
            },
            [create] { return create(nullptr) == nullptr; }};
}

Row OnStream(const char* name, bool (*isRight)(void* stream), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Owned stream = MakeStream();
                attempt.NeedsNoMemory([&] { return isRight(stream.Get()); });
            },
            isRightForNull};
}

// Writing a value behind the Data's end: the Data has to grow.
template <class Value>
Row PutsValue(const char* name, int (*put)(void*, Value)) {
    return {name,
            [put](Attempt& attempt) {
                const Owned stream = MakeStream();
                QVStreamSetMarker(stream.Get(), 1, 0);
                attempt.AnswersCode([&] { return put(stream.Get(), Value{1}); });
                EXPECT_EQ(QVStreamGetSize(stream.Get()), attempt.MetShortage() ? 1000 : 1000 + sizeof(Value));
            },
            [put] { return put(nullptr, Value{1}) == QVErrParam; }};
}

template <class Value>
Row GetsValue(const char* name, int (*get)(void*, Value*)) {
    return {name,
            [get](Attempt& attempt) {
                const Owned stream = MakeStream();
                attempt.NeedsNoMemory([&] {
                    Value value{};
                    return get(stream.Get(), &value) == QVNoErr && value != Value{};
                });
            },
            [get] {
                Value value{};
                return get(nullptr, &value) == QVErrParam && get(nullptr, nullptr) == QVErrParam;
            }};
}

Rows ByteStreamRows() {
    return {
        CreatesStream("QVStreamCreateWithData", QVStreamCreateWithData),
        CreatesStream("QVStreamCreateWithMemory", QVStreamCreateWithMemory),
        {"QVStreamCreateWithFile",
         [](Attempt& attempt) {
             const Owned file{QVFileCreate()};
             attempt.Creates([&] { return QVStreamCreateWithFile(file.Get()); });
         },
         [] {
             const Owned stream{QVStreamCreateWithFile(nullptr)};
             return stream && QVStreamPutUInt8(stream.Get(), 1) == QVErrFileNotFound;
         }},
        OnStream(
            "QVStreamGetBytes",
            [](void* stream) {
                char bytes[3];
                return QVStreamGetBytes(stream, bytes, 3, nullptr, 1) == QVNoErr && bytes[2] == 'c';
            },
            [] {
                char byte;
                return QVStreamGetBytes(nullptr, &byte, 1, nullptr, 1) < 0;
            }),
        {"QVStreamPutBytes",
         [](Attempt& attempt) {
             const Owned stream = MakeStream();
             attempt.AnswersCode(
                 [&] { return QVStreamPutBytes(stream.Get(), kBytes, sizeof kBytes, nullptr, 1); });
         },
         [] { return QVStreamPutBytes(nullptr, kBytes, 1, nullptr, 1) < 0; }},
        OnStream(
            "QVStreamSetMarker",
            [](void* stream) {
                QVStreamSetMarker(stream, 0, 2);
                return QVStreamGetMarker(stream) == 2;
            },
            [] {
                QVStreamSetMarker(nullptr, 0, 2);
                return true;
            }),
        OnStream(
            "QVStreamGetMarker", [](void* stream) { return QVStreamGetMarker(stream) == 0; },
            [] { return QVStreamGetMarker(nullptr) == 0; }),
        {"QVStreamFlush",
         [](Attempt& attempt) {
             const Owned data{QVDataCreate(nullptr, 0)};
             const Owned stream{QVStreamCreateWithData(data.Get())};
             QVStreamPutBytes(stream.Get(), kBytes, 1000, nullptr, 1);
             attempt.Answers(1, 0, [&] { return QVStreamFlush(stream.Get()); });
             EXPECT_EQ(QVDataGetSize(data.Get()), attempt.MetShortage() ? 0U : 1000U);
         },
         [] { return QVStreamFlush(nullptr) < 0; }},
        OnStream(
            "QVStreamGetSize", [](void* stream) { return QVStreamGetSize(stream) == 1000; },
            [] { return QVStreamGetSize(nullptr) == 0; }),
        PutsValue("QVStreamPutUInt8", QVStreamPutUInt8),
        PutsValue("QVStreamPutSInt8", QVStreamPutSInt8),
        PutsValue("QVStreamPutUInt16", QVStreamPutUInt16),
        PutsValue("QVStreamPutSInt16", QVStreamPutSInt16),
        PutsValue("QVStreamPutUInt32", QVStreamPutUInt32),
        PutsValue("QVStreamPutSInt32", QVStreamPutSInt32),
        PutsValue("QVStreamPutUInt64", QVStreamPutUInt64),
        PutsValue("QVStreamPutSInt64", QVStreamPutSInt64),
        PutsValue("QVStreamPutFloat", QVStreamPutFloat),
        PutsValue("QVStreamPutDouble", QVStreamPutDouble),
        GetsValue("QVStreamGetUInt8", QVStreamGetUInt8),
        GetsValue("QVStreamGetSInt8", QVStreamGetSInt8),
        GetsValue("QVStreamGetUInt16", QVStreamGetUInt16),
        GetsValue("QVStreamGetSInt16", QVStreamGetSInt16),
        GetsValue("QVStreamGetUInt32", QVStreamGetUInt32),
        GetsValue("QVStreamGetSInt32", QVStreamGetSInt32),
        GetsValue("QVStreamGetUInt64", QVStreamGetUInt64),
        GetsValue("QVStreamGetSInt64", QVStreamGetSInt64),
        GetsValue("QVStreamGetFloat", QVStreamGetFloat),
        GetsValue("QVStreamGetDouble", QVStreamGetDouble),
    };
}

// A bit stream that reads 'a', 0x61, then 'b', 0x62.
Row OnInput(const char* name, bool (*isRight)(void* stream), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Owned data = MakeData(2);
                const Owned stream{QVInputBitStreamCreateWithData(data.Get(), 16)};
                attempt.NeedsNoMemory([&] { return isRight(stream.Get()); });
            },
            isRightForNull};
}

Rows InputBitStreamRows() {
    return {
        {"QVInputBitStreamCreateWithData",
         [](Attempt& attempt) {
             const Owned data = MakeData(2);
             attempt.Creates([&] { return QVInputBitStreamCreateWithData(data.Get(), 16); });
         },
         [] {
             const Owned stream{QVInputBitStreamCreateWithData(nullptr, 16)};
             return stream && QVInputBitStreamIsEnd(stream.Get()) == 1;
         }},
        OnInput(
            "QVInputBitStreamGetBits",
            [](void* stream) {
                unsigned char byte = 0;
                return QVInputBitStreamGetBits(stream, &byte, 8, nullptr, 1) == QVNoErr && byte == 'a';
            },
            [] {
                unsigned char byte = 0;
                return QVInputBitStreamGetBits(nullptr, &byte, 8, nullptr, 1) < 0;
            }),
        OnInput(
            "QVInputBitStreamFutureBits",
            [](void* stream) {
                unsigned char byte = 0;
                return QVInputBitStreamFutureBits(stream, &byte, 8, nullptr, 1) == QVNoErr && byte == 'a';
            },
            [] {
                unsigned char byte = 0;
                return QVInputBitStreamFutureBits(nullptr, &byte, 8, nullptr, 1) < 0;
            }),
        OnInput(
            "QVInputBitStreamGetOneBit", [](void* stream) { return QVInputBitStreamGetOneBit(stream) == 0; },
            [] { return QVInputBitStreamGetOneBit(nullptr) == 0; }),
        OnInput(
            "QVInputBitStreamGetNumberOfBits",
            [](void* stream) { return QVInputBitStreamGetNumberOfBits(stream) == 16; },
            [] { return QVInputBitStreamGetNumberOfBits(nullptr) == 0; }),
        OnInput(
            "QVInputBitStreamGetMarker", [](void* stream) { return QVInputBitStreamGetMarker(stream) == 0; },
            [] { return QVInputBitStreamGetMarker(nullptr) == 0; }),
        OnInput(
            "QVInputBitStreamSetMarker",
            [](void* stream) { return QVInputBitStreamSetMarker(stream, 0, 3) == 3; },
            [] { return QVInputBitStreamSetMarker(nullptr, 0, 3) == 0; }),
        OnInput(
            "QVInputBitStreamIsEnd", [](void* stream) { return QVInputBitStreamIsEnd(stream) == 0; },
            [] {
                QVInputBitStreamIsEnd(nullptr);
                return true;
            }),
        OnInput(
            "QVInputBitStreamSetBitStoreMode",
            [](void* stream) {
                QVInputBitStreamSetBitStoreMode(stream, 0);
                return QVInputBitStreamGetBitStoreMode(stream) == 0;
            },
            [] {
                QVInputBitStreamSetBitStoreMode(nullptr, 0);
                return true;
            }),
        OnInput(
            "QVInputBitStreamGetBitStoreMode",
            [](void* stream) { return QVInputBitStreamGetBitStoreMode(stream) == 1; },
            [] { return QVInputBitStreamGetBitStoreMode(nullptr) == 0; }),
    };
}

// A bit stream that writes over two bytes.
Row OnOutput(const char* name, bool (*isRight)(void* stream), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Owned data = MakeData(2);
                const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 16)};
                attempt.NeedsNoMemory([&] { return isRight(stream.Get()); });
            },
            isRightForNull};
}

// Writes so many bits that the Data has to grow. Only the flush tells that it could not; the call goes on.
Row PutsBits(const char* name, int bits, int (*put)(void* stream)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned data{QVDataCreate(nullptr, 0)};
                const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
                attempt.Answers(int{QVNoErr}, int{QVNoErr}, [&] { return put(stream.Get()); });
                EXPECT_EQ(QVOutputBitStreamGetMarker(stream.Get()), bits);
            },
            [put] { return put(nullptr) == QVErrParam; }};
}

Rows OutputBitStreamRows() {
    return {
        {"QVOutputBitStreamCreateWithData",
         [](Attempt& attempt) {
             const Owned data = MakeData(2);
             attempt.Creates([&] { return QVOutputBitStreamCreateWithData(data.Get(), 0); });
         },
         [] {
             const Owned stream{QVOutputBitStreamCreateWithData(nullptr, 0)};
             return QVOutputBitStreamFlush(stream.Get()) == 0;
         }},
        {"QVOutputBitStreamSetOutputData",
         [](Attempt& attempt) {
             const Owned data = MakeData(2);
             const Owned other = MakeData(2);
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             attempt.NeedsNoMemory(
                 [&] { QVOutputBitStreamSetOutputData(stream.Get(), other.Get(), 0); },
                 [&] { return QVOutputBitStreamGetOutputData(stream.Get()) == other.Get(); });
         },
         [] {
             const Owned data = MakeData(2);
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             QVOutputBitStreamSetOutputData(nullptr, nullptr, 0);
             QVOutputBitStreamSetOutputData(nullptr, data.Get(), 0);
             QVOutputBitStreamSetOutputData(stream.Get(), nullptr, 0);
             return true;
         }},
        OnOutput(
            "QVOutputBitStreamGetOutputData",
            [](void* stream) { return QVDataGetSize(QVOutputBitStreamGetOutputData(stream)) == 2; },
            [] { return QVOutputBitStreamGetOutputData(nullptr) == nullptr; }),
        PutsBits("QVOutputBitStreamPutBits", 8000,
                 [](void* stream) { return QVOutputBitStreamPutBits(stream, kBytes, 8000, nullptr, 1); }),
        {"QVOutputBitStreamPutOneBit",
         [](Attempt& attempt) {
             const Owned data{QVDataCreate(nullptr, 0)};
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             QVOutputBitStreamPutBits(stream.Get(), kBytes, 7, nullptr, 1);
             attempt.Changes(
                 8, 8, [&] { QVOutputBitStreamPutOneBit(stream.Get(), 1); },
                 [&] { return QVOutputBitStreamGetMarker(stream.Get()); });
             EXPECT_EQ(QVDataGetSize(data.Get()), attempt.MetShortage() ? 0U : 1U);
         },
         [] {
             QVOutputBitStreamPutOneBit(nullptr, 1);
             return true;
         }},
        PutsBits("QVOutputBitStreamPutUInt8", 8,
                 [](void* stream) { return QVOutputBitStreamPutUInt8(stream, 1, 8, nullptr, 1); }),
        PutsBits("QVOutputBitStreamPutUInt16", 16,
                 [](void* stream) { return QVOutputBitStreamPutUInt16(stream, 1, 16, nullptr, 1); }),
        PutsBits("QVOutputBitStreamPutUInt32", 32,
                 [](void* stream) { return QVOutputBitStreamPutUInt32(stream, 1, 32, nullptr, 1); }),
        OnOutput(
            "QVOutputBitStreamGetNumberOfBits",
            [](void* stream) { return QVOutputBitStreamGetNumberOfBits(stream) == 16; },
            [] { return QVOutputBitStreamGetNumberOfBits(nullptr) == 0; }),
        OnOutput(
            "QVOutputBitStreamSetNumberOfBits",
            [](void* stream) {
                QVOutputBitStreamSetNumberOfBits(stream, 3);
                return QVOutputBitStreamGetNumberOfBits(stream) == 3;
            },
            [] {
                QVOutputBitStreamSetNumberOfBits(nullptr, 3);
                return true;
            }),
        {"QVOutputBitStreamFlush",
         [](Attempt& attempt) {
             const Owned data{QVDataCreate(nullptr, 0)};
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             attempt.Answers(1, 0, [&] { return QVOutputBitStreamFlush(stream.Get()); });
             EXPECT_EQ(QVDataGetSize(data.Get()), attempt.MetShortage() ? 0U : 1U);
         },
         [] { return QVOutputBitStreamFlush(nullptr) == 0; }},
        OnOutput(
            "QVOutputBitStreamGetMarker",
            [](void* stream) { return QVOutputBitStreamGetMarker(stream) == 0; },
            [] { return QVOutputBitStreamGetMarker(nullptr) == 0; }),
        OnOutput(
            "QVOutputBitStreamSetMarker",
            [](void* stream) { return QVOutputBitStreamSetMarker(stream, 0, 3) == 3; },
            [] { return QVOutputBitStreamSetMarker(nullptr, 0, 3) == 0; }),
        OnOutput(
            "QVOutputBitSteamSetBitStoreMode",
            [](void* stream) {
                QVOutputBitSteamSetBitStoreMode(stream, 0);
                return QVOutputBitStreamGetBitStoreMode(stream) == 0;
            },
            [] {
                QVOutputBitSteamSetBitStoreMode(nullptr, 0);
                return true;
            }),
        OnOutput(
            "QVOutputBitStreamGetBitStoreMode",
            [](void* stream) { return QVOutputBitStreamGetBitStoreMode(stream) == 1; },
            [] { return QVOutputBitStreamGetBitStoreMode(nullptr) == 0; }),
    };
}

}  // namespace

Rows StreamRows() {
    return Joined({ByteStreamRows(), InputBitStreamRows(), OutputBitStreamRows()});
}

}  // namespace qvtest
