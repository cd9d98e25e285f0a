#include "codec/block_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <gtest/gtest.h>
#include <random>

#include "codec/coder_inputs.h"
#include "codec/token_values.h"
#include "models/plain_block_encoder.h"

namespace {

using qv::BlockEncoder;
using qvtest::Bytes;
using qvtest::Shape;
using qvtest::ShapedInput;
using Tokens = qvtest::TokenValues;

Bytes Encode(BlockEncoder& encoder, const Tokens& tokens) {
    qv::TokenList list;
    qvtest::Fill(list, tokens);
    const BlockEncoder::Block block = encoder.Encode(list);
    Bytes bytes{static_cast<std::uint8_t>(block.tokenCount & 0xFF),
                static_cast<std::uint8_t>(block.tokenCount >> 8)};
    bytes.insert(bytes.end(), block.body, block.body + block.bodySize);
    return bytes;
}

Tokens Literals(const std::vector<std::uint32_t>& counts) {
    Tokens tokens;
    for (std::size_t value = 0; value < counts.size(); ++value) {
        tokens.insert(tokens.end(), counts[value], static_cast<std::uint16_t>(value));
    }
    return tokens;
}

TEST(BitWriter, PutsBitsFromTheTopOfEachByte) {
    std::uint8_t buffer[32] = {};
    qv::BitWriter bits(buffer);
    EXPECT_EQ(bits.Size(), 0u);
    bits.Put(0, 0);
    bits.Put(5, 3);
    EXPECT_EQ(bits.Size(), 1u);
    EXPECT_EQ(buffer[0], 0xA0);
    bits.Put(0x1F, 5);
    bits.Put(0x123456789ABCDE, 56);
    bits.Put(1, 1);
    EXPECT_EQ(bits.Size(), 9u);
    const Bytes expected{0xBF, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0x80};
    EXPECT_EQ(Bytes(buffer, buffer + 9), expected);
}

TEST(TokenList, CountsSymbolsAndTheBucketsOfOffsets) {
    qv::TokenList tokens;
    tokens.AddLiteral('a');
    tokens.AddMatch(3, 0);
    tokens.AddMatch(3, 127);
    tokens.AddMatch(255, 8191);
    tokens.AddLiteral('a');
    EXPECT_EQ(tokens.Size(), 5u);
    EXPECT_EQ(tokens.SymbolCounts()['a'], 2u);
    EXPECT_EQ(tokens.SymbolCounts()[256], 2u);
    EXPECT_EQ(tokens.SymbolCounts()[508], 1u);
    EXPECT_EQ(tokens.OffsetCounts()[0], 1u);
    EXPECT_EQ(tokens.OffsetCounts()[127], 1u);
    EXPECT_EQ(tokens.OffsetCounts()[qv::OffsetBucket(8191)], 1u);
    EXPECT_EQ(tokens.OffsetCounts()[qv::OffsetBucket(qv::Token::kNoOffset)], 0u) << "literals";
    tokens.Clear();
    EXPECT_EQ(tokens.Size(), 0u);
    EXPECT_EQ(tokens.SymbolCounts()['a'], 0u);
    EXPECT_EQ(tokens.OffsetCounts()[127], 0u);
}

TEST(TokenList, OffsetsOfOneBucketAreOfOneClass) {
    std::array<int, qv::kOffsetBuckets> classes{};
    for (unsigned offset = 0; offset < 8192; ++offset) {
        const std::size_t bucket = qv::OffsetBucket(offset);
        ASSERT_LT(bucket, qv::OffsetBucket(qv::Token::kNoOffset));
        const int offsetClass = std::bit_width(offset);
        if (classes[bucket] == 0) classes[bucket] = offsetClass;
        ASSERT_EQ(classes[bucket], offsetClass) << offset;
    }
    EXPECT_EQ(qv::OffsetBucket(qv::Token::kNoOffset), qv::kOffsetBuckets - 1);
}

TEST(BlockEncoder, OneRepeatedByteTakesNoBits) {
    // Three literals and no matches: one length symbol, the empty code, and no distances.
    BlockEncoder encoder;
    const Bytes block = Encode(encoder, {'x', 'x', 'x'});
    // 3 tokens; the table of no lengths at all is written as 00000 00000; no distances 0000.
    EXPECT_EQ(block, (Bytes{3, 0, 0x00, 0x00}));
}

TEST(BlockEncoder, OneLengthForAllSymbolsStandsForTheWholeTable) {
    // The four lowest bytes with length 2 each: only the length symbol 4 occurs, written as 00000 00100; then
    // no distances, 0000; then the codes 00 01 10 11.
    BlockEncoder encoder;
    const Bytes block = Encode(encoder, {0, 1, 2, 3});
    EXPECT_EQ(block, (Bytes{4, 0, 0b00000001, 0b00000000, 0b01101100}));
}

TEST(BlockEncoder, EqualsThePlainModelForSmallChunks) {
    constexpr unsigned kSeed = 31;
    ShapedInput input(kSeed);
    qv::SlidingWindow window;
    BlockEncoder encoder;
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        const Shape shape = qvtest::kAllShapes[input.Below(std::size(qvtest::kAllShapes))];
        const Bytes bytes = input.Make(shape, 1 + input.Below(200));
        const Tokens tokens = qvtest::TokenValuesOf(window, bytes);
        ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
    }
}

TEST(BlockEncoder, EqualsThePlainModelForWholeChunks) {
    constexpr unsigned kSeed = 32;
    ShapedInput input(kSeed);
    qv::SlidingWindow window;
    BlockEncoder encoder;
    for (const Shape shape : qvtest::kAllShapes) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " shape " << static_cast<int>(shape));
        const Bytes bytes = input.Make(shape, qv::kChunkSize);
        const Tokens tokens = qvtest::TokenValuesOf(window, bytes);
        ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
    }
}

TEST(BlockEncoder, RunsOfZeroLengthsInEveryForm) {
    // Two bytes with a gap of 0 to 64 symbols between them, so runs of 1, 2, 3 .. 18, 19 and 20 and more.
    BlockEncoder encoder;
    for (std::uint16_t gap = 0; gap <= 64; ++gap) {
        SCOPED_TRACE(gap);
        Tokens tokens{5, 5, 5, static_cast<std::uint16_t>(6 + gap), static_cast<std::uint16_t>(130 + gap), 2};
        ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
    }
}

TEST(BlockEncoder, EveryOffsetClassAndLongDistanceCodes) {
    // Offsets whose classes are as rare as Fibonacci numbers get codes of 1 to 13 bits: distance lengths 7
    // and above.
    Tokens tokens;
    unsigned rarity = 1;
    unsigned next = 1;
    for (unsigned distanceClass = 0; distanceClass <= 13; ++distanceClass) {
        for (unsigned i = 0; i < rarity; ++i) {
            const unsigned first = distanceClass == 0 ? 0 : 1u << (distanceClass - 1);
            tokens.push_back(static_cast<std::uint16_t>(256 + i % 253));
            tokens.push_back(static_cast<std::uint16_t>(first + (distanceClass == 0 ? 0 : i % first)));
        }
        const unsigned sum = rarity + next;
        rarity = next;
        next = sum;
    }
    BlockEncoder encoder;
    ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
}

TEST(BlockEncoder, CodesOf15And16BitsAreWrittenAsZeros) {
    std::vector<std::uint32_t> counts{1, 1};
    while (counts.size() < 21)
        counts.push_back(counts[counts.size() - 1] + counts[counts.size() - 2]);
    const Tokens tokens = Literals(counts);
    ASSERT_LE(tokens.size(), qv::kChunkSize);
    BlockEncoder encoder;
    ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
}

TEST(BlockEncoder, LiteralsAndMatchesInAnyOrderEqualThePlainModel) {
    constexpr unsigned kSeed = 33;
    std::mt19937 random(kSeed);
    BlockEncoder encoder;
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << " round " << round);
        const std::size_t count = 1 + random() % (round % 20 == 0 ? 3000 : 40);
        const unsigned matchesOf16 = round % 17;  // from none to all
        const unsigned values = 1u << random() % 9;
        Tokens tokens;
        for (std::size_t i = 0; i < count; ++i) {
            if (random() % 16 >= matchesOf16) {
                tokens.push_back(static_cast<std::uint16_t>(random() % values));
            } else {
                tokens.push_back(static_cast<std::uint16_t>(256 + random() % 253));
                tokens.push_back(static_cast<std::uint16_t>(random() % (1u << random() % 14)));
            }
        }
        ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
    }
}

TEST(BlockEncoder, NeighboursWithTheLongestCodesEqualThePlainModel) {
    // Fibonacci numbers give the rarest symbols codes of up to 16 bits. These are matches here, with
    // distances just as uneven, and the rarest stand side by side: up to 66 bits for two tokens.
    Tokens tokens;
    unsigned rarity = 1;
    unsigned next = 1;
    for (unsigned i = 0; i < 20; ++i) {
        for (unsigned n = 0; n < rarity; ++n) {
            if (i >= 6) {
                tokens.push_back(static_cast<std::uint16_t>(i));
            } else {
                tokens.push_back(static_cast<std::uint16_t>(256 + i));
                tokens.push_back(static_cast<std::uint16_t>(8191u >> i));
            }
        }
        const unsigned sum = rarity + next;
        rarity = next;
        next = sum;
    }
    ASSERT_LE(tokens.size(), qv::kChunkSize);
    BlockEncoder encoder;
    for (int shift = 0; shift < 4; ++shift) {  // the encoder goes by four tokens
        ASSERT_EQ(Encode(encoder, tokens), model::EncodeBlock(tokens));
        tokens.insert(tokens.begin(), 19);
    }
}

TEST(BlockEncoder, AnEncoderCanBeUsedAgain) {
    BlockEncoder encoder;
    const Tokens first{1, 2, 3, 256, 0, 500, 8191};
    const Tokens second{9};
    const Bytes firstBlock = Encode(encoder, first);
    EXPECT_EQ(Encode(encoder, second), model::EncodeBlock(second));
    EXPECT_EQ(Encode(encoder, first), firstBlock);
}

}  // namespace
