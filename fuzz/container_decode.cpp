#include "fuzz_support.h"
#include "targets.h"

// The key is fixed, so that mutations of a true container get as far as the fingerprint.
void qvfuzz::ContainerDecode(const std::uint8_t* bytes, std::size_t size) {
    Scope scope;
    static constexpr char kKey[] = "fuzzing key";
    void* key = scope.Keep(QVDataCreate(kKey, sizeof kKey - 1));
    void* container = scope.Keep(QVDataCreate(bytes, size));
    (void)QVCryptoDecodeData(container, key);

    void* plain = scope.Keep(QVDataCreate(nullptr, 0));
    void* crypto = scope.Keep(QVCryptoCreate());
    QVCryptoSetKey(crypto, kKey, sizeof kKey - 1, 0);
    QVCryptoSetSrcStream(crypto, scope.Keep(QVStreamCreateWithMemory(container)));
    QVCryptoSetDstStream(crypto, scope.Keep(QVStreamCreateWithMemory(plain)));
    const int result = QVCryptoDecode(crypto, size);
    Check(result == QVNoErr || QVDataGetSize(plain) == 0, "a refused container left output");
}
