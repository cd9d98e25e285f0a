#include <gtest/gtest.h>

#include "crypto/container_decipher.h"
#include "crypto/container_encipher.h"
#include "crypto/pi_words.h"
#include "crypto/random_bytes.h"
#include "models/blowfish_model.h"
#include "models/md5_model.h"

namespace {

using qvtest::Bytes;

class ContainerCipher : public ::testing::Test {
protected:
    ContainerCipher() { qv::ExpandBlowfishKey(key.data(), key.size(), substitutes, subkeys); }

    qv::BlowfishTables Tables() const { return {substitutes.data(), subkeys.data()}; }

    Bytes ModelEncipher(Bytes bytes, std::uint64_t feedback) const {
        qvmodel::Blowfish model(qvtest::PiWords(), key);
        model.feedback = feedback;
        for (std::size_t i = 0; i < bytes.size(); i += 8)
            model.EncryptBlock(&bytes[i], &bytes[i]);
        return bytes;
    }

    qvtest::RandomBytes random{30};
    Bytes key = random.Make(20);
    qv::BlowfishSubstitutes substitutes;
    qv::BlowfishSubkeys subkeys;
};

TEST_F(ContainerCipher, EnciphersAndHashesAsTheModelsDo) {
    for (std::size_t blocks = 0; blocks <= 70; ++blocks) {
        const Bytes plain = random.Make(8 * blocks);
        const std::uint64_t feedback = random.Word64();
        const Bytes expected = ModelEncipher(plain, feedback);
        Bytes hashed = expected;
        hashed.insert(hashed.end(), key.begin(), key.end());

        Bytes bytes = plain;
        qv::ContainerEncipher encipher(Tables(), feedback);
        encipher.Encipher(bytes.data(), bytes.size());
        EXPECT_EQ(bytes, expected) << blocks;
        EXPECT_EQ(encipher.Finish(key.data(), key.size()), qvmodel::HashMd5(hashed)) << blocks;

        Bytes again = bytes;
        qv::ContainerDecipher decipher(Tables(), feedback);
        decipher.Decipher(bytes.data(), bytes.size());
        EXPECT_EQ(bytes, plain) << blocks;

        qv::FingerprintingDecipher fingerprinting(Tables(), feedback);
        fingerprinting.Decipher(again.data(), again.size());
        EXPECT_EQ(again, plain) << blocks;
        EXPECT_EQ(fingerprinting.Finish(key.data(), key.size()), qvmodel::HashMd5(hashed)) << blocks;
    }
}

TEST_F(ContainerCipher, PiecesGiveWhatOneCallGives) {
    for (int round = 0; round < 100; ++round) {
        const Bytes plain = random.Make(8 * random.Below(200));
        const Bytes expected = ModelEncipher(plain, 99);
        Bytes hashed = expected;
        hashed.insert(hashed.end(), key.begin(), key.end());

        Bytes bytes = plain;
        qv::ContainerEncipher encipher(Tables(), 99);
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t size = std::min(bytes.size() - at, 64 * random.Below(8));
            encipher.Encipher(bytes.data() + at, size);
            at += size;
        }
        EXPECT_EQ(bytes, expected) << "round " << round;
        EXPECT_EQ(encipher.Finish(key.data(), key.size()), qvmodel::HashMd5(hashed)) << "round " << round;

        Bytes again = bytes;
        qv::FingerprintingDecipher fingerprinting(Tables(), 99);
        for (std::size_t at = 0; at < again.size();) {
            const std::size_t size = std::min(again.size() - at, 64 * random.Below(8));
            fingerprinting.Decipher(again.data() + at, size);
            at += size;
        }
        EXPECT_EQ(again, plain) << "round " << round;
        EXPECT_EQ(fingerprinting.Finish(key.data(), key.size()), qvmodel::HashMd5(hashed))
            << "round " << round;

        qv::ContainerDecipher decipher(Tables(), 99);
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t size = std::min(bytes.size() - at, 8 * random.Below(30));
            decipher.Decipher(bytes.data() + at, size);
            at += size;
        }
        EXPECT_EQ(bytes, plain) << "round " << round;
    }
}

}  // namespace
