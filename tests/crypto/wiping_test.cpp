// Secrets are gone from memory before it is given back: keys, what is made of them, and plaintext on its way.
#include <algorithm>
#include <gtest/gtest.h>

#include <QVFoundation/QVBlowfish.h>
#include <QVFoundation/QVMD5.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "crypto/container_tools.h"
#include "crypto/pi_words.h"
#include "models/blowfish_model.h"
#include "support/failing_allocator.h"

namespace {

using qv::Owned;
using qvtest::Bytes;

// Looks for parts of secrets in every block that is freed while it lives.
class FreedSecrets {
public:
    // The secrets stay the test's, so that they are not freed themselves.
    explicit FreedSecrets(const std::vector<Bytes>& secrets) : secrets_(secrets), watch_(&Inspect, this) {}
    explicit FreedSecrets(std::vector<Bytes>&&) = delete;

    // Hands back what the library's block cache keeps, so that it is looked at as well.
    int Found() const {
        qvtest::LiveAllocations();
        return found_;
    }

private:
    static void Inspect(void* context, const void* block, std::size_t size) {
        auto& self = *static_cast<FreedSecrets*>(context);
        const auto* bytes = static_cast<const std::uint8_t*>(block);
        for (const Bytes& secret : self.secrets_) {
            if (std::search(bytes, bytes + size, secret.begin(), secret.end()) != bytes + size) ++self.found_;
        }
    }

    const std::vector<Bytes>& secrets_;
    int found_ = 0;
    qvtest::WatchFrees watch_;
};

const Bytes kKey = {'a', ' ', 'k', 'e', 'y', ' ', 'n', 'o', 'b', 'o', 'd', 'y', ' ', 's', 'e', 'e', 's'};
const std::vector<Bytes> kKeyAlone = {kKey};

// Pieces of the tables that a key is turned into.
std::vector<Bytes> TableParts(const Bytes& key) {
    const qvmodel::Blowfish model(qvtest::PiWords(), key);
    const auto part = [](const std::uint32_t* words) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(words);
        return Bytes(bytes, bytes + 16);
    };
    return {part(model.P), part(model.P + 14), part(model.S[0]), part(model.S[1] + 100),
            part(model.S[3] + 252)};
}

TEST(Wiping, TheTestSeesWhatIsNotWiped) {
    FreedSecrets secrets(kKeyAlone);
    { const Bytes copy = kKey; }
    EXPECT_EQ(secrets.Found(), 1);
}

TEST(Wiping, BlowfishTablesWhenTheCipherDies) {
    const std::vector<Bytes> parts = TableParts(kKey);
    FreedSecrets secrets(parts);
    {
        const Owned cipher(QVBlowfishCreate());
        ASSERT_EQ(QVBlowfishSetKey(cipher.Get(), kKey.data(), kKey.size()), 1);
    }
    EXPECT_EQ(secrets.Found(), 0);
}

TEST(Wiping, BlowfishTablesWhenTheKeyChanges) {
    const std::vector<Bytes> parts = TableParts(kKey);
    const Owned cipher(QVBlowfishCreate());
    ASSERT_EQ(QVBlowfishSetKey(cipher.Get(), kKey.data(), kKey.size()), 1);
    FreedSecrets secrets(parts);
    ASSERT_EQ(QVBlowfishSetKey(cipher.Get(), "other", 5), 1);
    EXPECT_EQ(secrets.Found(), 0);
}

TEST(Wiping, BytesThatWaitInAHasher) {
    FreedSecrets secrets(kKeyAlone);
    {
        const Owned md5(QVMD5Create());
        QVMD5Initialize(md5.Get());
        QVMD5Update(md5.Get(), kKey.data(), kKey.size());
        QVMD5Finish(md5.Get());
    }
    EXPECT_EQ(secrets.Found(), 0);
}

TEST(Wiping, ContainerKeyWhenItIsReplacedAndWhenTheObjectDies) {
    FreedSecrets secrets(kKeyAlone);
    {
        const Owned crypto(QVCryptoCreate());
        QVCryptoSetKey(crypto.Get(), kKey.data(), kKey.size(), 0);
        QVCryptoSetKey(crypto.Get(), "other", 5, 0);
        QVCryptoSetKey(crypto.Get(), kKey.data(), kKey.size(), 40);
        QVCryptoSetKey(crypto.Get(), nullptr, 0, 0);
        QVCryptoSetKey(crypto.Get(), kKey.data(), kKey.size(), 0);
    }
    EXPECT_EQ(secrets.Found(), 0);
}

TEST(Wiping, EverythingAContainerPassesThrough) {
    qvtest::RandomBytes random(60);
    const Bytes plain = random.Make(1000);
    const Bytes container = qvtest::Encode(plain, kKey);
    std::vector<Bytes> parts = TableParts(kKey);
    parts.push_back(kKey);
    parts.emplace_back(plain.begin(), plain.begin() + 16);
    parts.emplace_back(plain.begin() + 500, plain.begin() + 516);
    parts.emplace_back(plain.end() - 16, plain.end());

    const Owned key = qvtest::MakeData(kKey);
    const Owned plainData = qvtest::MakeData(plain);
    const Owned containerData = qvtest::MakeData(container);
    const qv::LocalPool pool;  // the caller's results live until the test has looked
    FreedSecrets secrets(parts);
    void* encoded = QVCryptoEncodeData(plainData.Get(), key.Get());
    void* decoded = QVCryptoDecodeData(containerData.Get(), key.Get());
    EXPECT_EQ(secrets.Found(), 0);
    EXPECT_EQ(QVDataGetSize(encoded), 64u + 1000);
    EXPECT_EQ(qvtest::BytesOf(decoded), plain);
}

TEST(Wiping, WhatARefusedContainerPassedThrough) {
    qvtest::RandomBytes random(61);
    const Bytes plain = random.Make(1000);
    Bytes container = qvtest::Encode(plain, kKey);
    container.back() ^= 1;  // the plaintext before it comes out right
    const Owned key = qvtest::MakeData(kKey);
    const Owned data = qvtest::MakeData(container);
    std::vector<Bytes> parts = TableParts(kKey);
    parts.push_back(kKey);
    parts.emplace_back(plain.begin(), plain.begin() + 16);
    parts.emplace_back(plain.begin() + 500, plain.begin() + 516);
    FreedSecrets secrets(parts);
    EXPECT_EQ(QVCryptoDecodeData(data.Get(), key.Get()), nullptr);
    EXPECT_EQ(secrets.Found(), 0);
}

}  // namespace
