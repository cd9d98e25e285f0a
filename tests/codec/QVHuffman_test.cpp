#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBitStream.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVHuffman.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVTree.h>

#include "codec/QVHuffmanCodingImpl.h"
#include "models/plain_huffman.h"
#include "runtime/Handle.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;
using Table = std::vector<std::uint32_t>;

Owned MakeCoder(const Table& frequencies) {
    Owned coder{QVHuffmanCreate()};
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), frequencies.data(),
                                         static_cast<unsigned long>(frequencies.size())),
              0);
    return coder;
}

Table Values(void* data) {
    Table table(QVDataGetSize(data) / 4);
    if (!table.empty()) std::memcpy(table.data(), QVDataGetImutableBuffer(data), table.size() * 4);
    return table;
}

Table Patterns(void* coder) {
    void* array = QVHuffmanGetBitPatternTable(coder);
    Table table;
    for (unsigned long i = 0; i < QVArrayGetCount(array); ++i) {
        void* number = QVArrayGetObjectAtIndex(array, i);
        EXPECT_EQ(QVNumberGetNativeType(number), 3);
        table.push_back(QVNumberGetUInt32Value(number));
    }
    return table;
}

void ExpectNode(void* tree, const model::HuffmanNode& plain) {
    void* context = QVTreeGetContext(tree);
    ASSERT_EQ(QVGetTypeID(context), QVTypeIDDictionary);
    EXPECT_EQ(QVDictionaryCount(context), 3u);
    void* code = QVDictionaryGetObject(context, L"code");
    void* frequency = QVDictionaryGetObject(context, L"freq");
    void* length = QVDictionaryGetObject(context, L"bitLen");
    EXPECT_EQ(QVNumberGetNativeType(code), 7);
    EXPECT_EQ(QVNumberGetNativeType(frequency), 3);
    EXPECT_EQ(QVNumberGetNativeType(length), 3);
    EXPECT_EQ(QVNumberGetSInt32Value(code), plain.code);
    EXPECT_EQ(QVNumberGetUInt32Value(frequency), plain.freq);
    EXPECT_EQ(QVNumberGetUInt32Value(length), plain.bitLen);
}

void ExpectTree(void* tree, const model::HuffmanNode& plain) {
    ExpectNode(tree, plain);
    void* children = QVTreeGetChildren(tree);
    ASSERT_EQ(QVArrayGetCount(children), plain.children.size());
    for (unsigned long i = 0; i < plain.children.size(); ++i) {
        void* child = QVArrayGetObjectAtIndex(children, i);
        EXPECT_EQ(QVTreeGetParent(child), tree);
        ExpectTree(child, *plain.children[i]);
    }
}

TEST(Huffman, ShowsItsTablesAsObjects) {
    std::mt19937 random(3);
    std::vector<Table> tables{{1, 1, 2}, {0, 0, 0}, {0, 9, 0}, {5, 5}, {0xFFFFFFFF, 0xFFFFFFFF, 3}};
    for (int i = 0; i < 20; ++i) {
        Table table(1 + random() % 60);
        for (auto& frequency : table)
            frequency = static_cast<std::uint32_t>(random()) >> random() % 32;
        tables.push_back(table);
    }
    Table fibonacci{1, 1};
    while (fibonacci.size() < 30)
        fibonacci.push_back(fibonacci.end()[-1] + fibonacci.end()[-2]);
    tables.push_back(fibonacci);

    for (const Table& frequencies : tables) {
        const Owned coder = MakeCoder(frequencies);
        EXPECT_EQ(QVGetTypeID(coder.Get()), QVTypeIDHuffman);
        const model::HuffmanTables plain = model::MakeHuffmanTables(frequencies);
        EXPECT_EQ(Values(QVHuffmanGetFrequencyTableData(coder.Get())), frequencies);
        EXPECT_EQ(Values(QVHuffmanGetBitLengthTableData(coder.Get())), plain.lengths);
        EXPECT_EQ(Patterns(coder.Get()), plain.patterns);
        ExpectTree(QVHuffmanGetRootTree(coder.Get()), *plain.root);
        EXPECT_TRUE(QVTreeIsRoot(QVHuffmanGetRootTree(coder.Get())));
    }
}

TEST(Huffman, LendsTheSameObjectsUntilTheNextTable) {
    const Owned coder = MakeCoder({1, 2, 3});
    void* tree = QVHuffmanGetRootTree(coder.Get());
    EXPECT_EQ(QVHuffmanGetRootTree(coder.Get()), tree);
    EXPECT_EQ(QVGetRetainCount(tree), 1u);
    EXPECT_EQ(QVHuffmanGetBitPatternTable(coder.Get()), QVHuffmanGetBitPatternTable(coder.Get()));
    EXPECT_EQ(QVHuffmanGetBitLengthTableData(coder.Get()), QVHuffmanGetBitLengthTableData(coder.Get()));

    const Table next{4, 4};
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), next.data(), 2), 0);
    EXPECT_EQ(Values(QVHuffmanGetFrequencyTableData(coder.Get())), next);
    EXPECT_EQ(Values(QVHuffmanGetBitLengthTableData(coder.Get())), (Table{1, 1}));
    EXPECT_EQ(Patterns(coder.Get()), (Table{0, 1}));
}

TEST(Huffman, ItsOwnLentFrequenciesCanBeSetAgain) {
    const Owned coder = MakeCoder({1, 2, 3, 4});
    const auto* lent = static_cast<const unsigned int*>(
        QVDataGetImutableBuffer(QVHuffmanGetFrequencyTableData(coder.Get())));
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), lent + 1, 3), 0);
    EXPECT_EQ(Values(QVHuffmanGetFrequencyTableData(coder.Get())), (Table{2, 3, 4}));
}

TEST(Huffman, WritesCodesFromTheTopDown) {
    const Owned coder = MakeCoder({1, 1, 2, 0});
    const Owned data{QVDataCreate(nullptr, 0)};
    Owned bits{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    for (const unsigned symbol : {2u, 0u, 3u, 1u})
        EXPECT_EQ(QVHuffmanEncode(coder.Get(), bits.Get(), symbol), 0);
    EXPECT_EQ(QVOutputBitStreamGetNumberOfBits(bits.Get()), 5u)
        << "symbol 3 does not occur and takes no bits";
    bits.Reset();
    EXPECT_EQ(*static_cast<const unsigned char*>(QVDataGetImutableBuffer(data.Get())), 0b01011000);
}

TEST(Huffman, RefusesWhatItHasNoCodeFor) {
    const Owned data{QVDataCreate(nullptr, 0)};
    const Owned bits{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    const Owned coder{QVHuffmanCreate()};
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), bits.Get(), 0), QVErrParam) << "no tables yet";
    EXPECT_EQ(QVHuffmanGetFrequencyTableData(coder.Get()), nullptr);
    EXPECT_EQ(QVHuffmanGetBitLengthTableData(coder.Get()), nullptr);
    EXPECT_EQ(QVHuffmanGetRootTree(coder.Get()), nullptr);
    EXPECT_EQ(QVHuffmanGetBitPatternTable(coder.Get()), nullptr);

    const Table frequencies{1, 2};
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), frequencies.data(), 2), 0);
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), bits.Get(), 2), QVErrParam);
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), bits.Get(), 0xFFFFFFFF), QVErrParam);
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), nullptr, 0), QVErrParam);
    EXPECT_EQ(QVOutputBitStreamGetNumberOfBits(bits.Get()), 0u);
}

TEST(Huffman, ANullOrEmptyTableChangesNothing) {
    const Owned coder = MakeCoder({1, 2});
    void* const lengths = QVHuffmanGetBitLengthTableData(coder.Get());
    const unsigned int one = 1;
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), nullptr, 2), QVErrParam);
    EXPECT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), &one, 0), QVErrParam);
    EXPECT_EQ(QVHuffmanGetBitLengthTableData(coder.Get()), lengths);
}

QVHuffmanCodingImpl& ObjectOf(const Owned& coder) {
    return *qv::FromHandle<QVHuffmanCodingImpl>(coder.Get());
}

// The bytes of the stream after its release: the last one holds what is left, be it no bit.
Table Encoded(const Owned& coder, std::initializer_list<unsigned> symbols) {
    Owned data{QVDataCreate(nullptr, 0)};
    Owned bits{QVOutputBitStreamCreateWithData(data.Get(), 0)};
    for (const unsigned symbol : symbols)
        EXPECT_EQ(QVHuffmanEncode(coder.Get(), bits.Get(), symbol), 0);
    bits.Reset();
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data.Get()));
    return {bytes, bytes + QVDataGetSize(data.Get())};
}

TEST(Huffman, CountsHowOftenEachByteOccurs) {
    const std::uint8_t bytes[] = {7, 255, 7, 0, 7};
    Table expected(256, 0);
    expected[0] = 1;
    expected[7] = 3;
    expected[255] = 1;
    Table counts(256, 99);
    EXPECT_EQ(QVHuffmanCodingImpl::CountFrequencyOfData(bytes, sizeof bytes, counts.data()), 0);
    EXPECT_EQ(counts, expected);
    EXPECT_EQ(QVHuffmanCodingImpl::CountFrequencyOfData(nullptr, 0, counts.data()), 0);
    EXPECT_EQ(counts, Table(256, 0));
}

TEST(Huffman, AReplacedObjectIsLentAndTheOthersStay) {
    const Owned coder = MakeCoder({1, 1, 2});
    const Table lengths = Values(QVHuffmanGetBitLengthTableData(coder.Get()));
    const Owned data{QVDataCreate("abcd", 4)};
    const Owned tree{QVTreeCreate()};
    ObjectOf(coder).SetFrequencyTableData(data.Get());
    ObjectOf(coder).SetRootTree(tree.Get());
    EXPECT_EQ(QVGetRetainCount(data.Get()), 2u);
    EXPECT_EQ(QVHuffmanGetFrequencyTableData(coder.Get()), data.Get());
    EXPECT_EQ(QVHuffmanGetRootTree(coder.Get()), tree.Get());
    EXPECT_EQ(Values(QVHuffmanGetBitLengthTableData(coder.Get())), lengths);
    EXPECT_EQ(Patterns(coder.Get()), (Table{2, 3, 0}));

    ObjectOf(coder).SetFrequencyTableData(nullptr);
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1u);
    EXPECT_EQ(QVHuffmanGetFrequencyTableData(coder.Get()), nullptr);
    EXPECT_EQ(QVHuffmanGetRootTree(coder.Get()), tree.Get());
}

TEST(Huffman, EncodesByReplacedTables) {
    const Owned coder = MakeCoder({1, 1, 2});
    EXPECT_EQ(Encoded(coder, {0, 1, 2}), Table{0xB0}) << "10, 11, 0";

    const Table lengths = {4, 4, 8};
    const Owned data{QVDataCreate(lengths.data(), 12)};
    ObjectOf(coder).SetBitLengthTableData(data.Get());
    EXPECT_EQ(Encoded(coder, {0, 1, 2}), (Table{0x23, 0x00, 0x00})) << "2, 3, 0 in 4, 4, 8 bits";

    const Owned patterns{QVArrayCreateWithCapacity(1)};
    const Owned number{QVNumberCreateWithUInt32(0xA)};
    QVArrayAddObject(patterns.Get(), number.Get());
    ObjectOf(coder).SetBitPatternTable(patterns.Get());
    EXPECT_EQ(Encoded(coder, {0, 0}), (Table{0xAA, 0x00}));
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), nullptr, 1), -2) << "a symbol without a pattern";

    ObjectOf(coder).SetBitLengthTableData(nullptr);
    EXPECT_EQ(QVHuffmanEncode(coder.Get(), nullptr, 0), -2) << "a symbol without a length";

    const Table frequencies = {1, 1, 2};
    ASSERT_EQ(QVHuffmanSetFrequencyTable(coder.Get(), frequencies.data(), 3), 0);
    EXPECT_EQ(Encoded(coder, {0, 1, 2}), Table{0xB0}) << "new tables replace them all";
}

TEST(Huffman, WithoutMemoryNoObjectIsReplaced) {
    const qvtest::LogCapture log;
    const Table frequencies{1, 1, 2};
    const Owned tree{QVTreeCreate()};
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned coder{QVHuffmanCreate()};
        if (QVHuffmanSetFrequencyTable(coder.Get(), frequencies.data(), 3) != 0) return;
        try {
            ObjectOf(coder).SetRootTree(tree.Get());
            EXPECT_EQ(QVHuffmanGetRootTree(coder.Get()), tree.Get());
        } catch (const std::bad_alloc&) {
            EXPECT_NE(QVHuffmanGetRootTree(coder.Get()), tree.Get());
        }
    });
    EXPECT_GT(failures, 20u);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(Huffman, NullNeverCrashes) {
    const unsigned int one = 1;
    EXPECT_EQ(QVHuffmanSetFrequencyTable(nullptr, &one, 1), QVErrParam);
    EXPECT_EQ(QVHuffmanEncode(nullptr, nullptr, 0), QVErrParam);
    EXPECT_EQ(QVHuffmanGetFrequencyTableData(nullptr), nullptr);
    EXPECT_EQ(QVHuffmanGetBitLengthTableData(nullptr), nullptr);
    EXPECT_EQ(QVHuffmanGetRootTree(nullptr), nullptr);
    EXPECT_EQ(QVHuffmanGetBitPatternTable(nullptr), nullptr);
}

TEST(Huffman, WithoutMemoryThereAreNoTablesAndNothingLeaks) {
    const qvtest::LogCapture log;
    const Table frequencies{1, 1, 2, 3, 5};
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned coder{QVHuffmanCreate()};
        const bool built = QVHuffmanSetFrequencyTable(coder.Get(), frequencies.data(), 5) == 0;
        void* tree = QVHuffmanGetRootTree(coder.Get());
        void* array = QVHuffmanGetBitPatternTable(coder.Get());
        void* lengths = QVHuffmanGetBitLengthTableData(coder.Get());
        // An object is complete or not there, and there is none without tables.
        if (tree != nullptr) {
            EXPECT_EQ(QVArrayGetCount(QVTreeGetChildren(tree)), 2u);
        }
        if (array != nullptr) {
            EXPECT_EQ(QVArrayGetCount(array), 5u);
        }
        if (!built) {
            EXPECT_EQ(tree, nullptr);
            EXPECT_EQ(array, nullptr);
            EXPECT_EQ(lengths, nullptr);
            EXPECT_EQ(QVHuffmanGetFrequencyTableData(coder.Get()), nullptr);
        }
    });
    EXPECT_GT(failures, 20u);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace
