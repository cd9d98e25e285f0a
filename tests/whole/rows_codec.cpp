// Base64, block transforms, the block compressor and its parts, and the pattern search.
#include <cstring>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBase64.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVBlockTransform.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDeflate.h>
#include <QVFoundation/QVHuffman.h>
#include <QVFoundation/QVLZSS.h>
#include <QVFoundation/QVPatternSearch.h>
#include <QVFoundation/QVRingList.h>
#include <QVFoundation/QVTree.h>

#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr unsigned char kABC[] = {'c', 'a', 'b'};

Rows BufferRows() {
    return {
        {"QVBase64Encode",
         [](Attempt& attempt) { attempt.OthersLog().Lends([] { return QVBase64Encode("Man", 3); }); },
         TakesNoHandle},
        {"QVBase64Decode",
         [](Attempt& attempt) { attempt.OthersLog().Lends([] { return QVBase64Decode("TWFu", 4); }); },
         TakesNoHandle},
        {"QVBWTEncode",
         [](Attempt& attempt) {
             unsigned char sorted[3];
             unsigned long primary = 1;
             attempt.AnswersCode([&] { return QVBWTEncode(sorted, &primary, kABC, 3); });
         },
         TakesNoHandle},
        {"QVBWTDecode",
         [](Attempt& attempt) {
             unsigned char back[3];
             attempt.AnswersCode([&] { return QVBWTDecode(back, kABC, 3, 0); });
         },
         TakesNoHandle},
        {"QVMTFEncode",
         [](Attempt& attempt) {
             unsigned char places[3];
             attempt.NeedsNoMemory([&] { return QVMTFEncode(places, kABC, 3) == QVNoErr; });
         },
         TakesNoHandle},
        {"QVBMSearchPattern",
         [](Attempt& attempt) {
             unsigned long position = 0;
             attempt.NeedsNoMemory(
                 [&] { return QVBMSearchPattern(kABC, 3, kABC + 1, 2, &position) == 1 && position == 1; });
         },
         TakesNoHandle},
    };
}

Rows CompressorRows() {
    return {
        {"QVDeflateCreate", [](Attempt& attempt) { attempt.Creates(QVDeflateCreate); }, TakesNoHandle},
        {"QVDeflateEncode",
         [](Attempt& attempt) {
             const Owned encoder{QVDeflateCreate()};
             const Owned text{QVDataCreate("abcabcabc", 9)};
             const Owned result{QVDataCreate(nullptr, 0)};
             const Owned source{QVStreamCreateWithMemory(text.Get())};
             const Owned destination{QVStreamCreateWithMemory(result.Get())};
             attempt.OthersLog().AnswersCode(
                 [&] { return QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()); });
         },
         [] {
             const Owned encoder{QVDeflateCreate()};
             const Owned data{QVDataCreate("abc", 3)};
             const Owned stream{QVStreamCreateWithMemory(data.Get())};
             return QVDeflateEncode(nullptr, nullptr, nullptr) == QVErrParam &&
                    QVDeflateEncode(nullptr, stream.Get(), stream.Get()) == QVErrParam &&
                    QVDeflateEncode(encoder.Get(), nullptr, stream.Get()) == QVErrParam &&
                    QVDeflateEncode(encoder.Get(), stream.Get(), nullptr) == QVErrParam;
         }},
        {"QVLZSSCreate", [](Attempt& attempt) { attempt.Creates(QVLZSSCreate); }, TakesNoHandle},
        {"QVLZSSAppendValue",
         [](Attempt& attempt) {
             const Owned dictionary{QVLZSSCreate()};
             attempt.NeedsNoMemory([&] { QVLZSSAppendValue(dictionary.Get(), 'a'); }, [] { return true; });
         },
         [] {
             QVLZSSAppendValue(nullptr, 'a');
             return true;
         }},
        {"QVLZSSSearchSlideDic",
         [](Attempt& attempt) {
             const Owned dictionary{QVLZSSCreate()};
             for (const unsigned char value : kABC)
                 QVLZSSAppendValue(dictionary.Get(), value);
             unsigned char length = 0;
             attempt.NeedsNoMemory([&] {
                 return QVLZSSSearchSlideDic(dictionary.Get(), kABC, 3, nullptr, &length) == 1 && length == 3;
             });
         },
         [] { return QVLZSSSearchSlideDic(nullptr, kABC, 3, nullptr, nullptr) == 0; }},
    };
}

// A coder for three symbols.
Owned MakeCoder() {
    const unsigned int frequencies[] = {1, 1, 2};
    Owned coder{QVHuffmanCreate()};
    QVHuffmanSetFrequencyTable(coder.Get(), frequencies, 3);
    return coder;
}

// A table that is made when it is first asked for.
Row LendsTable(const char* name, void* (*get)(void*)) {
    return {name,
            [get](Attempt& attempt) {
                const Owned coder = MakeCoder();
                attempt.OthersLog().Lends([&] { return get(coder.Get()); });
            },
            [get] { return get(nullptr) == nullptr; }};
}

Rows HuffmanRows() {
    return {
        {"QVHuffmanCreate", [](Attempt& attempt) { attempt.Creates(QVHuffmanCreate); }, TakesNoHandle},
        {"QVHuffmanSetFrequencyTable",
         [](Attempt& attempt) {
             const unsigned int frequencies[] = {1, 1, 2};
             const Owned coder = MakeCoder();
             attempt.OthersLog().AnswersCode(
                 [&] { return QVHuffmanSetFrequencyTable(coder.Get(), frequencies, 3); }, {QVErrParam});
             EXPECT_EQ(QVHuffmanGetFrequencyTableData(coder.Get()) == nullptr, attempt.MetShortage());
         },
         [] {
             const unsigned int frequency = 1;
             return QVHuffmanSetFrequencyTable(nullptr, &frequency, 1) == QVErrParam;
         }},
        {"QVHuffmanEncode",
         [](Attempt& attempt) {
             const Owned coder = MakeCoder();
             const Owned data{QVDataCreate("a", 1)};
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             attempt.NeedsNoMemory([&] { return QVHuffmanEncode(coder.Get(), stream.Get(), 2) == QVNoErr; });
         },
         [] {
             const Owned coder = MakeCoder();
             const Owned data{QVDataCreate("a", 1)};
             const Owned stream{QVOutputBitStreamCreateWithData(data.Get(), 0)};
             return QVHuffmanEncode(nullptr, nullptr, 2) == QVErrParam &&
                    QVHuffmanEncode(nullptr, stream.Get(), 2) == QVErrParam &&
                    QVHuffmanEncode(coder.Get(), nullptr, 2) == QVErrParam;
         }},
        {"QVHuffmanGetFrequencyTableData",
         [](Attempt& attempt) {
             const Owned coder = MakeCoder();
             attempt.NeedsNoMemory([&] { return QVHuffmanGetFrequencyTableData(coder.Get()) != nullptr; });
         },
         [] { return QVHuffmanGetFrequencyTableData(nullptr) == nullptr; }},
        LendsTable("QVHuffmanGetBitLengthTableData", QVHuffmanGetBitLengthTableData),
        LendsTable("QVHuffmanGetRootTree", QVHuffmanGetRootTree),
        LendsTable("QVHuffmanGetBitPatternTable", QVHuffmanGetBitPatternTable),
    };
}

// A function of a ring list with room for four values that holds "cab".
Row OnRing(const char* name, bool (*isRight)(void* ring), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Owned ring{QVRingListCreate()};
                QVRingListSetBufferSize(ring.Get(), 4);
                for (const unsigned char value : kABC)
                    QVRingListAddValue(ring.Get(), value);
                attempt.NeedsNoMemory([&] { return isRight(ring.Get()); });
            },
            isRightForNull};
}

Rows RingListRows() {
    return {
        {"QVRingListCreate", [](Attempt& attempt) { attempt.Creates(QVRingListCreate); }, TakesNoHandle},
        {"QVRingListSetBufferSize",
         [](Attempt& attempt) {
             const Owned ring{QVRingListCreate()};
             attempt.AnswersCode([&] { return QVRingListSetBufferSize(ring.Get(), 1000); });
             EXPECT_EQ(QVRingListGetBufferSize(ring.Get()), attempt.MetShortage() ? 0U : 1000U);
         },
         [] { return QVRingListSetBufferSize(nullptr, 1) < 0; }},
        OnRing(
            "QVRingListGetBufferSize", [](void* ring) { return QVRingListGetBufferSize(ring) == 4; },
            [] { return QVRingListGetBufferSize(nullptr) == 0; }),
        OnRing(
            "QVRingListGetSize", [](void* ring) { return QVRingListGetSize(ring) == 3; },
            [] { return QVRingListGetSize(nullptr) == 0; }),
        OnRing(
            "QVRingListAddValue",
            [](void* ring) {
                QVRingListAddValue(ring, 'd');
                return QVRingListGetSize(ring) == 4;
            },
            [] {
                QVRingListAddValue(nullptr, 'd');
                return true;
            }),
        OnRing(
            "QVRingListGetValueAtIndex", [](void* ring) { return QVRingListGetValueAtIndex(ring, 1) == 'a'; },
            [] { return QVRingListGetValueAtIndex(nullptr, 1) == 0; }),
        OnRing(
            "QVRingListFindMatchedLocation",
            [](void* ring) {
                unsigned long location = 0;
                return QVRingListFindMatchedLocation(ring, "ab", 2, 0, &location) == 1 && location == 1;
            },
            [] {
                unsigned long location = 0;
                return QVRingListFindMatchedLocation(nullptr, "ab", 2, 0, &location) == 0;
            }),
    };
}

}  // namespace

Rows CodecRows() {
    return Joined({BufferRows(), CompressorRows(), HuffmanRows(), RingListRows()});
}

}  // namespace qvtest
