#include "fuzz_support.h"
#include "targets.h"

void qvfuzz::ContainerDecode(const std::uint8_t* bytes, std::size_t size) {
    Scope scope;
    void* key = scope.Keep(QVDataCreate(kContainerKey, kContainerKeySize));
    void* container = scope.Keep(QVDataCreate(bytes, size));
    (void)QVCryptoDecodeData(container, key);

    void* plain = scope.Keep(QVDataCreate(nullptr, 0));
    void* crypto = scope.Keep(QVCryptoCreate());
    QVCryptoSetKey(crypto, kContainerKey, kContainerKeySize, 0);
    QVCryptoSetSrcStream(crypto, scope.Keep(QVStreamCreateWithMemory(container)));
    QVCryptoSetDstStream(crypto, scope.Keep(QVStreamCreateWithMemory(plain)));
    const int result = QVCryptoDecode(crypto, size);
    Check(result == QVNoErr || QVDataGetSize(plain) == 0, "a refused container left output");
}
