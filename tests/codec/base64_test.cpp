#include "codec/base64.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "models/base64_model.h"
#include "support/guarded_memory.h"
#include "support/shaped_bytes.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<const qv::Base64Vectors*> VectorsOfThisProcessor() {
    std::vector<const qv::Base64Vectors*> vectors = {&qv::kBase64Plain};
#if QV_X86
    if (qv::HasAvx2()) vectors.push_back(&qv::kBase64Avx2);
    if (qv::HasAvx512Bytes()) {
        vectors.push_back(&qv::kBase64Avx512);
    }
#endif
    return vectors;
}

std::string Encode(const Bytes& bytes, const qv::Base64Vectors& vectors) {
    std::string text(static_cast<std::size_t>(qv::Base64EncodedSize(bytes.size())), '?');
    qv::EncodeBase64(bytes.data(), bytes.size(), text.data(), vectors);
    return text;
}

// Decodes into room of exactly the promised size, with a guard behind it.
std::optional<Bytes> Decode(const std::string& text, const qv::Base64Vectors& vectors) {
    constexpr std::size_t kGuard = 64;
    const auto room = static_cast<std::size_t>(qv::Base64DecodedSize(text.size()));
    Bytes bytes(room + kGuard, 0xEE);
    const auto decoded = qv::DecodeBase64(text.data(), text.size(), bytes.data(), vectors);
    EXPECT_EQ(Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(room), bytes.end()), Bytes(kGuard, 0xEE));
    if (!decoded) return std::nullopt;
    bytes.resize(*decoded);
    return bytes;
}

TEST(Base64, GivesTheVectorsOfRfc4648) {
    const std::pair<std::string, std::string> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, text] : vectors) {
        const Bytes bytes(plain.begin(), plain.end());
        EXPECT_EQ(Encode(bytes, qv::kBase64Plain), text);
        EXPECT_EQ(Decode(text, qv::kBase64Plain), bytes);
    }
}

TEST(Base64, EncodesAsThePlainModelDoes) {
    const auto vectors = VectorsOfThisProcessor();
    qvtest::ShapedBytes random(21);
    for (int round = 0; round < 25'000; ++round) {
        const Bytes bytes = random.Make(random.SomeSize(3000));
        const std::string expected = qv::model::EncodeBase64(bytes);
        for (const auto* v : vectors)
            ASSERT_EQ(Encode(bytes, *v), expected) << "round " << round;
    }
}

TEST(Base64, DecodesAsThePlainModelDoes) {
    const auto vectors = VectorsOfThisProcessor();
    qvtest::ShapedBytes random(22);
    for (int round = 0; round < 25'000; ++round) {
        std::string text = qv::model::EncodeBase64(random.Make(random.SomeSize(3000)));
        // Cut texts, ends in the middle and wrong characters.
        if (random.Below(3) == 0) text.resize(random.Below(text.size() + 1));
        for (std::size_t changes = random.Below(3); changes > 0 && !text.empty(); --changes) {
            const char c = random.Below(2) == 0 ? '=' : static_cast<char>(random.Below(256));
            text[random.Below(text.size())] = c;
        }
        const auto expected = qv::model::DecodeBase64(text);
        for (const auto* v : vectors)
            ASSERT_EQ(Decode(text, *v), expected) << "round " << round << ": " << text;
    }
}

// Input and output end where their memory ends.
TEST(Base64, TouchesNothingBehindItsInputAndItsRoom) {
    constexpr std::size_t kMostBytes = 300;
    const qvtest::GuardedMemory plainMemory(kMostBytes);
    const qvtest::GuardedMemory textMemory(2 * kMostBytes);
    const qvtest::GuardedMemory roomMemory(kMostBytes);
    qvtest::ShapedBytes random(24);
    for (std::size_t size = 0; size <= kMostBytes; ++size) {
        const Bytes bytes = random.Make(size);
        const std::string expected = qv::model::EncodeBase64(bytes);
        auto* plain = plainMemory.Last<std::uint8_t>(size);
        auto* text = textMemory.Last<char>(expected.size());
        auto* room =
            roomMemory.Last<std::uint8_t>(static_cast<std::size_t>(qv::Base64DecodedSize(expected.size())));
        std::copy(bytes.begin(), bytes.end(), plain);
        for (const auto* v : VectorsOfThisProcessor()) {
            qv::EncodeBase64(plain, size, text, *v);
            ASSERT_EQ(std::string(text, expected.size()), expected);
            ASSERT_EQ(qv::DecodeBase64(text, expected.size(), room, *v), size);
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), room)) << size;
        }
    }
}

TEST(Base64, RefusesOneWrongByteAtEveryPosition) {
    qvtest::ShapedBytes random(23);
    for (const std::size_t size : {1, 2, 3, 24, 48, 150}) {
        const std::string text = qv::model::EncodeBase64(random.Make(size));
        const std::size_t end = std::min(text.find('='), text.size());
        for (const auto* v : VectorsOfThisProcessor()) {
            for (std::size_t at = 0; at < end; ++at) {
                for (const char wrong :
                     {' ', '\n', '\0', '-', '_', '.', ',', '@', '[', '`', '{', ':', '\x7F',
                      static_cast<char>(0x80), static_cast<char>(0xC1), static_cast<char>(0xFF)}) {
                    std::string spoilt = text;
                    spoilt[at] = wrong;
                    ASSERT_FALSE(Decode(spoilt, *v)) << at << " of " << text.size();
                }
            }
        }
    }
}

TEST(Base64, TellsEveryByteValueApartInEveryPlaceOfAVector) {
    for (const auto* v : VectorsOfThisProcessor()) {
        for (std::size_t at = 0; at < 64; ++at) {
            for (int value = 0; value < 256; ++value) {
                std::string text(160, 'A');
                text[at] = static_cast<char>(value);
                ASSERT_EQ(Decode(text, *v), qv::model::DecodeBase64(text))
                    << "byte " << value << " at " << at;
            }
        }
    }
}

TEST(Base64, ComputesSizesWithoutOverflow) {
    EXPECT_EQ(qv::Base64EncodedSize(0), 0U);
    EXPECT_EQ(qv::Base64EncodedSize(1), 4U);
    EXPECT_EQ(qv::Base64EncodedSize(3), 4U);
    EXPECT_EQ(qv::Base64EncodedSize(4), 8U);
    EXPECT_EQ(qv::Base64DecodedSize(0), 0U);
    EXPECT_EQ(qv::Base64DecodedSize(1), 0U);
    EXPECT_EQ(qv::Base64DecodedSize(2), 1U);
    EXPECT_EQ(qv::Base64DecodedSize(3), 2U);
    EXPECT_EQ(qv::Base64DecodedSize(4), 3U);
    EXPECT_EQ(qv::Base64DecodedSize(UINT64_MAX), UINT64_MAX / 4 * 3 + 2);
}

}  // namespace
