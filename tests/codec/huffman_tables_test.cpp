#include "codec/huffman_tables.h"

#include <gtest/gtest.h>
#include <random>

#include "models/plain_huffman.h"

namespace {

using qv::HuffmanNode;
using qv::HuffmanTables;
using Frequencies = std::vector<std::uint32_t>;

void ExpectSameTree(const HuffmanTables& tables, const model::HuffmanNodePtr& root) {
    struct Open {
        std::size_t node;
        const model::HuffmanNode* plain;
    };
    std::vector<Open> open{{tables.Nodes().size() - 1, root.get()}};
    while (!open.empty()) {
        const Open at = open.back();
        open.pop_back();
        const HuffmanNode& node = tables.Nodes()[at.node];
        ASSERT_EQ(node.symbol, at.plain->code);
        ASSERT_EQ(node.frequency, at.plain->freq);
        ASSERT_EQ(node.codeLength, at.plain->bitLen);
        ASSERT_EQ(node.first != HuffmanNode::kNoChild, !at.plain->children.empty());
        if (at.plain->children.empty()) continue;
        open.push_back({node.first, at.plain->children[0].get()});
        open.push_back({node.second, at.plain->children[1].get()});
    }
}

void ExpectSameTables(HuffmanTables& tables, const Frequencies& frequencies) {
    const model::HuffmanTables plain = model::MakeHuffmanTables(frequencies);
    tables.Build(frequencies.data(), frequencies.size());
    ASSERT_EQ(tables.Lengths(), plain.lengths);
    ASSERT_EQ(tables.Patterns(), plain.patterns);
    ExpectSameTree(tables, plain.root);
}

Frequencies Fibonacci(std::size_t count) {
    Frequencies frequencies{1, 1};
    while (frequencies.size() < count) {
        frequencies.push_back(frequencies[frequencies.size() - 1] + frequencies[frequencies.size() - 2]);
    }
    return frequencies;
}

TEST(HuffmanTables, InnerNodesComeBeforeLeavesOfEqualFrequency) {
    HuffmanTables tables;
    const Frequencies frequencies{1, 1, 2};
    tables.Build(frequencies.data(), frequencies.size());
    EXPECT_EQ(tables.Lengths(), (Frequencies{2, 2, 1}));
    EXPECT_EQ(tables.Patterns(), (Frequencies{2, 3, 0}));
    const HuffmanNode& root = tables.Nodes().back();
    EXPECT_EQ(tables.Nodes()[root.first].symbol, -1);
    EXPECT_EQ(tables.Nodes()[root.second].symbol, 2);
}

TEST(HuffmanTables, WithoutSymbolsThereIsOneNode) {
    HuffmanTables tables;
    const Frequencies frequencies(5, 0);
    tables.Build(frequencies.data(), frequencies.size());
    EXPECT_TRUE(tables.IsSingleNode());
    EXPECT_EQ(tables.Nodes().back().symbol, 0);
    EXPECT_EQ(tables.Lengths(), frequencies);
    EXPECT_EQ(tables.Patterns(), frequencies);
}

TEST(HuffmanTables, TheOnlySymbolHasACodeOfNoBits) {
    HuffmanTables tables;
    const Frequencies frequencies{0, 0, 77, 0};
    tables.Build(frequencies.data(), frequencies.size());
    EXPECT_TRUE(tables.IsSingleNode());
    EXPECT_EQ(tables.Nodes().back().symbol, 2);
    EXPECT_EQ(tables.Nodes().back().frequency, 1u);
    EXPECT_EQ(tables.Lengths(), Frequencies(4, 0));
    EXPECT_EQ(tables.Patterns(), Frequencies(4, 0));
}

TEST(HuffmanTables, LengthsAreLimitedTo16AndCodesOf15And16BitsAreZero) {
    for (std::size_t count = 2; count <= 47; ++count) {  // the sum fits into 32 bits up to 45
        SCOPED_TRACE(count);
        HuffmanTables tables;
        const Frequencies frequencies = Fibonacci(count);
        ExpectSameTables(tables, frequencies);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_LE(tables.Lengths()[i], 16u);
            EXPECT_NE(tables.Lengths()[i], 0u);
            if (tables.Lengths()[i] >= 15) {
                EXPECT_EQ(tables.Patterns()[i], 0u);
            }
        }
    }
}

// The search for a leaf to lengthen starts at 13 bits. Started at 15, the same frequencies would give a
// complete code with other lengths; these are worked out by hand for 18 symbols: one leaf of each length 1 ..
// 16 and the two of 17.
TEST(HuffmanTables, LengtheningStartsAt13Bits) {
    HuffmanTables tables;
    const Frequencies frequencies = Fibonacci(18);
    tables.Build(frequencies.data(), frequencies.size());
    // Lengths 17, 17, 16, 15, ..., 1 count as three of 16: one too many codes. The leaf of 13 goes to 14, and
    // so does one of 16.
    const Frequencies expected{16, 16, 15, 14, 14, 14, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1};
    EXPECT_EQ(tables.Lengths(), expected);
}

TEST(HuffmanTables, EqualTheFullyResortedOnesForSmallAlphabets) {
    constexpr unsigned kSeed = 21;
    std::mt19937 random(kSeed);
    HuffmanTables tables;
    for (int round = 0; round < 8000; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Frequencies frequencies(1 + random() % 12);
        const std::uint32_t limit = round % 3 == 0 ? 3 : round % 3 == 1 ? 40 : 0xFFFFFFFF;
        for (auto& frequency : frequencies)
            frequency = static_cast<std::uint32_t>(random()) % limit;
        ExpectSameTables(tables, frequencies);
    }
}

TEST(HuffmanTables, EqualTheFullyResortedOnesForWholeAlphabets) {
    constexpr unsigned kSeed = 22;
    std::mt19937 random(kSeed);
    HuffmanTables tables;
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Frequencies frequencies(128);
        for (auto& frequency : frequencies) {
            const auto bits = static_cast<std::uint32_t>(random()) % 24;
            frequency = static_cast<std::uint32_t>(random()) % (1u << bits);
        }
        ExpectSameTables(tables, frequencies);
    }
}

TEST(HuffmanTables, SumsThatWrapAround32BitsKeepTheOrderOfTheList) {
    constexpr unsigned kSeed = 23;
    std::mt19937 random(kSeed);
    HuffmanTables tables;
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        Frequencies frequencies(3 + random() % 40);
        for (auto& frequency : frequencies)
            frequency = static_cast<std::uint32_t>(random()) | 0x40000000u << random() % 2;
        ExpectSameTables(tables, frequencies);
    }
}

TEST(HuffmanTables, ReservedRoomNeedsNoMoreMemory) {
    HuffmanTables tables;
    tables.Reserve(512);
    const Frequencies frequencies = Fibonacci(40);
    tables.Build(frequencies.data(), frequencies.size());
    const HuffmanNode* const nodes = tables.Nodes().data();
    const Frequencies all(512, 7);
    tables.Build(all.data(), all.size());
    EXPECT_EQ(tables.Nodes().data(), nodes);
    EXPECT_EQ(tables.Lengths(), Frequencies(512, 9));
}

}  // namespace
