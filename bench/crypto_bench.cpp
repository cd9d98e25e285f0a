// MD5, Blowfish and the encrypted container.

// OpenSSL 3 marks these functions as old; they are the fastest way to them.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <algorithm>
#include <cstring>
#include <memory>
#include <openssl/blowfish.h>
#include <openssl/md5.h>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVBlowfish.h>
#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVMD5.h>
#include <QVFoundation/QVObject.h>

#include "bench.h"
#include "inputs.h"

namespace bench {

namespace {

Comparison CompareMD5(std::size_t size) {
    const Bytes in = Random(size);
    const QVHashValue128 ours = QVHashMD5(in.data(), in.size());
    unsigned char expected[MD5_DIGEST_LENGTH];
    MD5(in.data(), in.size(), expected);
    Require(std::memcmp(&ours, expected, sizeof(expected)) == 0, "another hash");
    return {Times([in] { Keep(QVHashMD5(in.data(), in.size())); }), Times([in] {
                unsigned char digest[MD5_DIGEST_LENGTH];
                Keep(MD5(in.data(), in.size(), digest));
            }),
            "OpenSSL MD5()"};
}

constexpr std::size_t kText = 1 << 16;
constexpr char kKey[] = "sixteen byte key";

std::shared_ptr<void> MakeCipher() {
    const std::shared_ptr<void> cipher(QVBlowfishCreate(), QVRelease);
    Require(QVBlowfishSetKey(cipher.get(), kKey, 16), "no key");
    return cipher;
}

// Our cipher reads a block's halves as little-endian numbers, the peer as big-endian ones; with that turned
// round both give the same bytes.
void SwapWords(Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        std::swap(bytes[i], bytes[i + 3]);
        std::swap(bytes[i + 1], bytes[i + 2]);
    }
}

void Encipher(void* cipher, const Bytes& in, Bytes& out) {
    QVBlowfishSetFeedbackCode(cipher, 0);
    for (std::size_t i = 0; i < in.size(); i += 8)
        QVBlowfishEncryptBlock(cipher, &in[i], &out[i]);
}

void Decipher(void* cipher, const Bytes& in, Bytes& out) {
    QVBlowfishSetFeedbackCode(cipher, 0);
    for (std::size_t i = 0; i < in.size(); i += 8)
        QVBlowfishDecryptBlock(cipher, &in[i], &out[i]);
}

void RunPeer(const BF_KEY& key, const Bytes& in, Bytes& out, int direction) {
    unsigned char vector[8] = {};
    BF_cbc_encrypt(in.data(), out.data(), static_cast<long>(in.size()), &key, vector, direction);
}

Comparison CompareCipher(bool enciphering) {
    const Bytes in = Random(kText);
    const auto cipher = MakeCipher();
    BF_KEY key;
    BF_set_key(&key, 16, reinterpret_cast<const unsigned char*>(kKey));
    Bytes ours(kText), peers(kText), swapped = in;
    SwapWords(swapped);
    const int direction = enciphering ? BF_ENCRYPT : BF_DECRYPT;
    (enciphering ? Encipher : Decipher)(cipher.get(), in, ours);
    RunPeer(key, swapped, peers, direction);
    SwapWords(peers);
    Require(ours == peers, "other bytes");
    return {Times([=, out = Bytes(kText)]() mutable {
                (enciphering ? Encipher : Decipher)(cipher.get(), in, out);
            }),
            Times([=, out = Bytes(kText)]() mutable { RunPeer(key, in, out, direction); }),
            "OpenSSL BF_cbc_encrypt"};
}

Comparison CompareKeySetting() {
    const auto cipher = MakeCipher();
    return {Times([cipher] { Keep(QVBlowfishSetKey(cipher.get(), kKey, 16)); }),
            Times([key = BF_KEY{}]() mutable {
                BF_set_key(&key, 16, reinterpret_cast<const unsigned char*>(kKey));
                Keep(key);
            }),
            "OpenSSL BF_set_key"};
}

// ---- the container ----

constexpr std::size_t kPlain = 10'000'000;
constexpr std::size_t kContainerHeader = 64;
constexpr std::size_t kFingerprintOffset = 40;

std::shared_ptr<void> MakeData(const void* bytes, std::size_t size) {
    return {QVDataCreate(bytes, static_cast<unsigned long>(size)), QVRelease};
}

Bytes BytesOf(void* data) {
    Require(data != nullptr, "no result");
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return {bytes, bytes + QVDataGetSize(data)};
}

// A plaintext, its container, and the peer's key.
struct ContainerInput {
    Bytes plain = Random(kPlain);
    Bytes container;
    std::shared_ptr<void> plainData = MakeData(plain.data(), plain.size());
    std::shared_ptr<void> keyData = MakeData(kKey, 16);
    std::shared_ptr<void> containerData;
    BF_KEY key;

    ContainerInput() {
        BF_set_key(&key, 16, reinterpret_cast<const unsigned char*>(kKey));
        container = BytesOf(QVCryptoEncodeData(plainData.get(), keyData.get()));
        containerData = MakeData(container.data(), container.size());
        QVTemporaryObjectsPoolHandleEvents();
        CheckFingerprint();
        CheckBody();
        Require(BytesOf(QVCryptoDecodeData(containerData.get(), keyData.get())) == plain,
                "another plaintext");
        QVTemporaryObjectsPoolHandleEvents();
    }

    [[nodiscard]] Bytes Body() const { return {container.begin() + kContainerHeader, container.end()}; }

private:
    // The peer's hash of the enciphered body and the key stands in the header.
    void CheckFingerprint() const {
        Require(container.size() == kContainerHeader + kPlain, "another size");
        Bytes hashed = Body();
        hashed.insert(hashed.end(), kKey, kKey + 16);
        unsigned char expected[MD5_DIGEST_LENGTH];
        MD5(hashed.data(), hashed.size(), expected);
        Require(std::memcmp(&container[kFingerprintOffset], expected, sizeof(expected)) == 0,
                "another fingerprint");
    }

    // The peer deciphers the body; its first block depends on the feedback code, the others do not.
    void CheckBody() const {
        Bytes swapped = Body();
        SwapWords(swapped);
        Bytes deciphered(swapped.size());
        RunPeer(key, swapped, deciphered, BF_DECRYPT);
        SwapWords(deciphered);
        Require(std::equal(plain.begin() + 8, plain.end(), deciphered.begin() + 8), "another body");
    }
};

Comparison CompareContainerEncoding() {
    const auto input = std::make_shared<ContainerInput>();
    return {
        DrainPool(Times([input] { Keep(QVCryptoEncodeData(input->plainData.get(), input->keyData.get())); }),
                  1),
        Times([input, out = Bytes(kPlain)]() mutable { RunPeer(input->key, input->plain, out, BF_ENCRYPT); }),
        "floor: the Blowfish chain alone (OpenSSL)"};
}

Comparison CompareContainerDecoding() {
    const auto input = std::make_shared<ContainerInput>();
    return {DrainPool(Times([input] {
                          Keep(QVCryptoDecodeData(input->containerData.get(), input->keyData.get()));
                      }),
                      1),
            Times([input, body = input->Body(), out = Bytes(kPlain)]() mutable {
                unsigned char digest[MD5_DIGEST_LENGTH];
                Keep(MD5(body.data(), body.size(), digest));
                RunPeer(input->key, body, out, BF_DECRYPT);
            }),
            "OpenSSL MD5, then BF_cbc_encrypt"};
}

}  // namespace

void AddCryptoComparisons(Suite& suite) {
    for (const std::size_t size : {16, 1024, 1048576}) {
        suite.Add("md5." + std::to_string(size), [=] { return CompareMD5(size); });
    }
    suite.Add("blowfish.cbc_encrypt", [] { return CompareCipher(true); });
    suite.Add("blowfish.cbc_decrypt", [] { return CompareCipher(false); });
    suite.Add("blowfish.set_key", CompareKeySetting);
    suite.Add("container.encode_10MB", CompareContainerEncoding);
    suite.Add("container.decode_10MB", CompareContainerDecoding);
}

}  // namespace bench
