// Containers for tests: made and read through memory streams, written by hand, and the codes a seed leads to.
#pragma once

#include <cstdlib>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVStream.h>

#include "crypto/random_bytes.h"
#include "runtime/Owned.h"

namespace qvtest {

inline qv::Owned MakeData(const Bytes& bytes) {
    return qv::Owned(QVDataCreate(bytes.data(), bytes.size()));
}

inline Bytes BytesOf(void* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return {bytes, bytes + QVDataGetSize(data)};
}

inline qv::Owned MakeCrypto(const Bytes& key, const qv::Owned& source, const qv::Owned& destination) {
    qv::Owned crypto(QVCryptoCreate());
    QVCryptoSetKey(crypto.Get(), key.data(), key.size(), 0);
    QVCryptoSetSrcStream(crypto.Get(), source.Get());
    QVCryptoSetDstStream(crypto.Get(), destination.Get());
    return crypto;
}

struct Outcome {
    int code;
    Bytes bytes;  // the destination's, which began as `before`
};

inline Outcome Run(int (*process)(void*, unsigned long long), const Bytes& bytes, const Bytes& key,
                   const Bytes& before = {}) {
    const qv::Owned source = MakeData(bytes);
    const qv::Owned destination = MakeData(before);
    const qv::Owned in(QVStreamCreateWithMemory(source.Get()));
    const qv::Owned out(QVStreamCreateWithMemory(destination.Get()));
    const qv::Owned crypto = MakeCrypto(key, in, out);
    const int code = process(crypto.Get(), bytes.size());
    return {code, BytesOf(destination.Get())};
}

inline Bytes Encode(const Bytes& plain, const Bytes& key) {
    return Run(&QVCryptoEncode, plain, key).bytes;
}

inline Outcome Decode(const Bytes& container, const Bytes& key, const Bytes& before = {}) {
    return Run(&QVCryptoDecode, container, key, before);
}

// The generator's next feedback code: four draws.
inline std::uint64_t NextFeedbackCode() {
    const auto draw = [] { return static_cast<std::uint64_t>(std::rand()); };
    std::uint64_t code = 0;
    for (int shift : {32, 0, 32, 0})
        code ^= draw() << shift;
    return code;
}

struct FeedbackCodes {
    std::uint64_t body;
    std::uint64_t header;
};

// Sets the generator off so that the next container gets these codes.
inline FeedbackCodes Seed(unsigned seed) {
    QVRandom();  // the first call of a process seeds
    std::srand(seed);
    FeedbackCodes codes;
    codes.body = NextFeedbackCode();
    codes.header = NextFeedbackCode();
    std::srand(seed);
    return codes;
}

}  // namespace qvtest
