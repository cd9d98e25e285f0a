// MD5 and Blowfish.

// OpenSSL 3 marks these functions as old; they are the fastest way to them.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <cstring>
#include <memory>
#include <openssl/blowfish.h>
#include <openssl/md5.h>

#include <QVFoundation/QVBlowfish.h>
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

}  // namespace

void AddCryptoComparisons(Suite& suite) {
    for (const std::size_t size : {16, 1024, 1048576}) {
        suite.Add("md5." + std::to_string(size), [=] { return CompareMD5(size); });
    }
    suite.Add("blowfish.cbc_encrypt", [] { return CompareCipher(true); });
    suite.Add("blowfish.cbc_decrypt", [] { return CompareCipher(false); });
    suite.Add("blowfish.set_key", CompareKeySetting);
}

}  // namespace bench
