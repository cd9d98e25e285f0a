#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

#include <QVFoundation/QVBlowfish.h>
#include <QVFoundation/QVLibrary.h>

#include "crypto/pi_words.h"
#include "crypto/random_bytes.h"
#include "models/blowfish_model.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"

#if QVTEST_OPENSSL
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

namespace {

using qv::Owned;
using qvtest::Bytes;

Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

// Published vectors have big-endian halves, ours are little-endian: every four bytes turn round.
Bytes SwapHalves(Bytes bytes) {
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
        std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                     bytes.begin() + static_cast<std::ptrdiff_t>(i) + 4);
    return bytes;
}

// A published initialisation vector as the feedback code that has its effect.
unsigned long long FeedbackCode(const Bytes& vector) {
    unsigned long long code = 0;
    for (std::uint8_t byte : vector)
        code = code << 8 | byte;
    return code;
}

Owned CipherWithKey(const Bytes& key, unsigned long mode, unsigned long long feedback = 0) {
    Owned cipher(QVBlowfishCreate());
    EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), key.data(), key.size()), 1);
    QVBlowfishSetCryptoMode(cipher.Get(), mode);
    QVBlowfishSetFeedbackCode(cipher.Get(), feedback);
    return cipher;
}

Bytes Encrypt(const Owned& cipher, Bytes bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 8)
        QVBlowfishEncryptBlock(cipher.Get(), bytes.data() + i, bytes.data() + i);
    return bytes;
}

Bytes Decrypt(const Owned& cipher, Bytes bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 8)
        QVBlowfishDecryptBlock(cipher.Get(), bytes.data() + i, bytes.data() + i);
    return bytes;
}

TEST(Blowfish, PublishedSingleBlocks) {
    struct Vector {
        const char* key;
        const char* plain;
        const char* cipher;
    };
    const Vector vectors[] = {
        {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
        {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
        {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
        {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
        {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
    };
    for (const Vector& v : vectors) {
        const Owned cipher = CipherWithKey(FromHex(v.key), QVBlowfishModeECB);
        EXPECT_EQ(SwapHalves(Encrypt(cipher, SwapHalves(FromHex(v.plain)))), FromHex(v.cipher)) << v.key;
        EXPECT_EQ(SwapHalves(Decrypt(cipher, SwapHalves(FromHex(v.cipher)))), FromHex(v.plain)) << v.key;
    }
}

TEST(Blowfish, PublishedKeyLengths) {
    const Bytes key = FromHex("F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677");
    const Bytes plain = SwapHalves(FromHex("FEDCBA9876543210"));
    const std::pair<std::size_t, const char*> vectors[] = {
        {1, "F9AD597C49DB005E"},  {2, "E91D21C1D961A6D6"},  {8, "E87A244E2CC85E82"},
        {16, "93142887EE3BE15C"}, {24, "05044B62FA52D080"},
    };
    for (const auto& [size, expected] : vectors) {
        const Owned cipher = CipherWithKey(
            Bytes(key.begin(), key.begin() + static_cast<std::ptrdiff_t>(size)), QVBlowfishModeECB);
        EXPECT_EQ(SwapHalves(Encrypt(cipher, plain)), FromHex(expected)) << size;
    }
}

TEST(Blowfish, PublishedChain) {
    Bytes plain = FromHex("37363534333231204E6F77206973207468652074696D6520666F722000000000");
    const Bytes expected = FromHex("6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC");
    const Bytes key = FromHex("0123456789ABCDEFF0E1D2C3B4A59687");
    const unsigned long long start = FeedbackCode(FromHex("FEDCBA9876543210"));
    const Owned cipher = CipherWithKey(key, QVBlowfishModeCBC, start);
    EXPECT_EQ(SwapHalves(Encrypt(cipher, SwapHalves(plain))), expected);
    QVBlowfishSetFeedbackCode(cipher.Get(), start);
    EXPECT_EQ(SwapHalves(Decrypt(cipher, SwapHalves(expected))), plain);
}

#if QVTEST_OPENSSL
TEST(Blowfish, ChainsAsOpenSSLDoes) {
    OSSL_LIB_CTX* library = OSSL_LIB_CTX_new();
    OSSL_PROVIDER* legacy = OSSL_PROVIDER_load(library, "legacy");
    EVP_CIPHER* blowfish = EVP_CIPHER_fetch(library, "BF-CBC", nullptr);
    ASSERT_NE(blowfish, nullptr);
    qvtest::RandomBytes random(20);
    for (std::size_t keySize = 1; keySize <= 56; ++keySize) {
        const Bytes key = random.Make(keySize);
        const Bytes vector = random.Make(8);
        const Bytes plain = random.Make(8 * (1 + random.Below(20)));

        Bytes expected(plain.size());
        int size = 0;
        EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
        EVP_EncryptInit_ex(context, blowfish, nullptr, nullptr, nullptr);
        EVP_CIPHER_CTX_set_key_length(context, static_cast<int>(keySize));
        EVP_EncryptInit_ex(context, nullptr, nullptr, key.data(), vector.data());
        EVP_CIPHER_CTX_set_padding(context, 0);
        EVP_EncryptUpdate(context, expected.data(), &size, plain.data(), static_cast<int>(plain.size()));
        EVP_CIPHER_CTX_free(context);
        ASSERT_EQ(static_cast<std::size_t>(size), plain.size());

        const Owned cipher = CipherWithKey(key, QVBlowfishModeCBC, FeedbackCode(vector));
        EXPECT_EQ(SwapHalves(Encrypt(cipher, SwapHalves(plain))), expected) << keySize;
        QVBlowfishSetFeedbackCode(cipher.Get(), FeedbackCode(vector));
        EXPECT_EQ(SwapHalves(Decrypt(cipher, SwapHalves(expected))), plain) << keySize;
    }
    EVP_CIPHER_free(blowfish);
    OSSL_PROVIDER_unload(legacy);
    OSSL_LIB_CTX_free(library);
}
#endif

TEST(Blowfish, BlocksAndFeedbackCodeFollowTheModel) {
    qvtest::RandomBytes random(21);
    for (int round = 0; round < 20; ++round) {
        const Bytes key = random.Make(1 + random.Below(56));
        const Owned cipher = CipherWithKey(key, QVBlowfishModeCBC);
        qvmodel::Blowfish model(qvtest::PiWords(), key);
        for (int step = 0; step < 60; ++step) {
            if (random.Below(4) == 0) {
                model.chained = random.Below(2) == 0;
                QVBlowfishSetCryptoMode(cipher.Get(), model.chained ? 0 : 1 + random.Below(5));
            }
            if (random.Below(8) == 0) {
                model.feedback = random.Word64();
                QVBlowfishSetFeedbackCode(cipher.Get(), model.feedback);
            }
            const Bytes in = random.Make(8);
            Bytes out(8), expected(8);
            if (random.Below(2) == 0) {
                QVBlowfishEncryptBlock(cipher.Get(), in.data(), out.data());
                model.EncryptBlock(in.data(), expected.data());
            } else {
                QVBlowfishDecryptBlock(cipher.Get(), in.data(), out.data());
                model.DecryptBlock(in.data(), expected.data());
            }
            EXPECT_EQ(out, expected);
            EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()), model.feedback);
        }
    }
}

TEST(Blowfish, EqualBlocksDifferInAChainAndAgreeAlone) {
    const Bytes plain(16, 7);
    const Bytes chained = Encrypt(CipherWithKey({1, 2, 3}, QVBlowfishModeCBC, 5), plain);
    EXPECT_FALSE(std::equal(chained.begin(), chained.begin() + 8, chained.begin() + 8));
    const Bytes alone = Encrypt(CipherWithKey({1, 2, 3}, QVBlowfishModeECB, 5), plain);
    EXPECT_TRUE(std::equal(alone.begin(), alone.begin() + 8, alone.begin() + 8));
}

TEST(Blowfish, DecipheringAloneStillMovesTheFeedbackCode) {
    const Owned cipher = CipherWithKey({9}, QVBlowfishModeECB, 0x1111111111111111);
    const Bytes block = {1, 2, 3, 4, 5, 6, 7, 8};
    Encrypt(cipher, block);
    EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()), 0x1111111111111111u);
    Decrypt(cipher, block);
    EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()), 0x0403020108070605u);  // the first half lies on top
}

TEST(Blowfish, KeysAreOneToFiftySixBytes) {
    const Bytes key(57, 1);
    const Owned cipher = CipherWithKey(Bytes(1, 1), QVBlowfishModeECB);
    const Bytes before = Encrypt(cipher, Bytes(8));
    EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), key.data(), 0), 0);
    EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), key.data(), 57), 0);
    EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), nullptr, 8), 0);
    EXPECT_EQ(Encrypt(cipher, Bytes(8)), before);  // refused keys change nothing
    EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), key.data(), 56), 1);
    EXPECT_EQ(Encrypt(cipher, Bytes(8)), before);  // one byte repeated is the same key at any length
}

TEST(Blowfish, NewCipherIsChainedWithARandomFeedbackCode) {
    QVRandom();  // the first call seeds
    std::srand(42);
    const Owned cipher(QVBlowfishCreate());
    std::srand(42);
    const long long r0 = QVRandom(), r1 = QVRandom(), r2 = QVRandom(), r3 = QVRandom();
    EXPECT_EQ(QVGetTypeID(cipher.Get()), 9);
    EXPECT_EQ(QVBlowfishGetCryptoMode(cipher.Get()), 0u);
    EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()),
              static_cast<unsigned long long>(((r0 << 32) | r1) ^ ((r2 << 32) | r3)));
}

TEST(Blowfish, WithoutAKeyTheResultIsZeros) {
    const Owned cipher(QVBlowfishCreate());
    QVBlowfishSetFeedbackCode(cipher.Get(), 77);
    EXPECT_EQ(Encrypt(cipher, Bytes(8, 1)), Bytes(8, 0));
    EXPECT_EQ(Decrypt(cipher, Bytes(8, 1)), Bytes(8, 0));
    EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()), 77u);
}

TEST(Blowfish, RunningOutOfMemoryLeavesTheOldKey) {
    const std::size_t live = qvtest::LiveAllocations();
    EXPECT_EQ(qvtest::FailEachAllocation([] { const Owned cipher(QVBlowfishCreate()); }), 1u);
    {
        const Owned cipher = CipherWithKey({1}, QVBlowfishModeECB);
        const Bytes before = Encrypt(cipher, Bytes(8));
        int refusals = 0;
        qvtest::FailEachAllocation([&] {
            if (!QVBlowfishSetKey(cipher.Get(), "other", 5)) {
                ++refusals;
            }
        });
        EXPECT_EQ(refusals, 2);
        EXPECT_NE(Encrypt(cipher, Bytes(8)), before);
        qvtest::FailAllocation failing(0);
        EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), "\1", 1), 0);
        std::uint8_t block[8] = {};
        QVBlowfishEncryptBlock(cipher.Get(), block, block);
        EXPECT_FALSE(std::equal(block, block + 8, before.begin()));
    }
    EXPECT_EQ(qvtest::LiveAllocations(), live);
}

TEST(Blowfish, NullHandlesAndBuffersDoNothing) {
    std::uint8_t block[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(QVBlowfishSetKey(nullptr, "k", 1), 0);
    QVBlowfishEncryptBlock(nullptr, block, block);
    QVBlowfishDecryptBlock(nullptr, block, block);
    QVBlowfishSetCryptoMode(nullptr, 1);
    QVBlowfishSetFeedbackCode(nullptr, 1);
    EXPECT_EQ(QVBlowfishGetCryptoMode(nullptr), 0u);
    EXPECT_EQ(QVBlowfishGetFeedbackCode(nullptr), 0u);

    const Owned cipher = CipherWithKey({1}, QVBlowfishModeCBC, 5);
    QVBlowfishEncryptBlock(cipher.Get(), nullptr, block);
    QVBlowfishEncryptBlock(cipher.Get(), block, nullptr);
    QVBlowfishDecryptBlock(cipher.Get(), nullptr, block);
    QVBlowfishDecryptBlock(cipher.Get(), block, nullptr);
    EXPECT_EQ(QVBlowfishGetFeedbackCode(cipher.Get()), 5u);
    EXPECT_EQ(block[0], 1);
}

}  // namespace
