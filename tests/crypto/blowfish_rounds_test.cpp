#include "crypto/blowfish_rounds.h"

#include <gtest/gtest.h>

#include "crypto/pi_words.h"
#include "crypto/random_bytes.h"
#include "models/blowfish_model.h"

namespace {

struct Key {
    explicit Key(const qvtest::Bytes& bytes) {
        qv::ExpandBlowfishKey(bytes.data(), bytes.size(), substitutes, subkeys);
    }
    qv::BlowfishTables Tables() const { return {substitutes.data(), subkeys.data()}; }

    qv::BlowfishSubstitutes substitutes;
    qv::BlowfishSubkeys subkeys;
};

TEST(BlowfishRounds, ScheduleEveryKeyLengthAsTheModelDoes) {
    qvtest::RandomBytes random(1);
    for (std::size_t size = 1; size <= qv::kBlowfishLongestKey; ++size) {
        const qvtest::Bytes bytes = random.Make(size);
        const Key key(bytes);
        const qvmodel::Blowfish model(qvtest::PiWords(), bytes);
        EXPECT_TRUE(std::equal(key.subkeys.begin(), key.subkeys.end(), model.P)) << size;
        EXPECT_TRUE(std::equal(key.substitutes.begin(), key.substitutes.end(), model.S[0])) << size;
    }
}

TEST(BlowfishRounds, EncipherAndDecipherAsTheModelDoes) {
    qvtest::RandomBytes random(2);
    const qvtest::Bytes bytes = random.Make(16);
    const Key key(bytes);
    const qvmodel::Blowfish model(qvtest::PiWords(), bytes);
    for (int i = 0; i < 1000; ++i) {
        const qv::BlowfishHalves plain = qv::BlowfishFeedback(random.Word64()).Halves();
        std::uint32_t l = plain.left, r = plain.right;
        model.Encipher(l, r);
        const qv::BlowfishHalves cipher = qv::EncipherBlowfish(key.Tables(), plain);
        EXPECT_EQ(cipher.left, l);
        EXPECT_EQ(cipher.right, r);
        model.Decipher(l, r);
        const qv::BlowfishHalves back = qv::DecipherBlowfish(key.Tables(), cipher);
        EXPECT_EQ(back.left, l);
        EXPECT_EQ(back.right, r);
        EXPECT_EQ(back.left, plain.left);
        EXPECT_EQ(back.right, plain.right);
    }
}

TEST(BlowfishRounds, ReadHalvesLittleEndian) {
    const std::uint8_t block[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const qv::BlowfishHalves halves = qv::LoadBlowfishBlock(block);
    EXPECT_EQ(halves.left, 0x04030201u);
    EXPECT_EQ(halves.right, 0x08070605u);
    std::uint8_t back[8];
    qv::StoreBlowfishBlock(halves, back);
    EXPECT_TRUE(std::equal(block, block + 8, back));
}

}  // namespace
