#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVCrypto.h>
#include <QVFoundation/QVData.h>

#include "base/secure_wipe.h"
#include "crypto/QVCryptoImpl.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"

using qv::Owned;
using qv::With;

namespace {

// A container is larger than its plaintext by its header and, at most, seven bytes of padding.
constexpr unsigned long kContainerGrowth = qv::kContainerHeaderSize + 7;

// Zero bytes with room to grow. Should the room not be there, growing will tell.
Owned CreateResult(unsigned long size, unsigned long capacity) {
    Owned result(QVDataCreate(nullptr, 0));
    QVDataReserve(result.Get(), capacity);
    if (QVDataSetSize(result.Get(), size) == 0) result.Reset();
    return result;
}

// Runs `process` from the Data's bytes to the result's, with the key Data's bytes as they are.
void* Process(int (*process)(void*, unsigned long long), void* data, void* key, Owned result) {
    const Owned crypto(QVCryptoCreate());
    const Owned source(QVStreamCreateWithMemory(data));
    const Owned destination(QVStreamCreateWithMemory(result.Get()));
    if (QVCryptoSetKey(crypto.Get(), QVDataGetImutableBuffer(key), QVDataGetSize(key), 0) != QVNoErr)
        return nullptr;
    QVCryptoSetSrcStream(crypto.Get(), source.Get());
    QVCryptoSetDstStream(crypto.Get(), destination.Get());
    if (process(crypto.Get(), QVDataGetSize(data)) != QVNoErr) {
        // What was written may be plaintext that the fingerprint has turned out to be wrong for.
        qv::SecureWipe(QVDataGetMutableBuffer(result.Get()), QVDataGetSize(result.Get()));
        return nullptr;
    }
    return QVTEMPOBJ(result.Detach());
}

// The result of QVCryptoDecodeData is nobody else's until the container has been found right.
int DecodeUnseen(void* crypto, unsigned long long size) noexcept {
    return With<QVCryptoImpl>(crypto, int{QVErrParam}, [&](QVCryptoImpl& c) { return c.DecodeUnseen(size); });
}

}  // namespace

void* QVCryptoCreate() noexcept {
    return qv::CreateObject<QVCryptoImpl>();
}

int QVCryptoSetKey(void* crypto, const void* key, unsigned long length,
                   unsigned long minimumLength) noexcept {
    return With<QVCryptoImpl>(crypto, int{QVErrParam},
                              [&](QVCryptoImpl& c) { return c.SetKey(key, length, minimumLength); });
}

void QVCryptoSetSrcStream(void* crypto, void* stream) noexcept {
    With<QVCryptoImpl>(crypto, [&](QVCryptoImpl& c) { c.SetSrcStream(stream); });
}

void* QVCryptoGetSrcStream(void* crypto) noexcept {
    return With<QVCryptoImpl, void*>(crypto, nullptr, [](const QVCryptoImpl& c) { return c.GetSrcStream(); });
}

void QVCryptoSetDstStream(void* crypto, void* stream) noexcept {
    With<QVCryptoImpl>(crypto, [&](QVCryptoImpl& c) { c.SetDstStream(stream); });
}

void* QVCryptoGetDstStream(void* crypto) noexcept {
    return With<QVCryptoImpl, void*>(crypto, nullptr, [](const QVCryptoImpl& c) { return c.GetDstStream(); });
}

int QVCryptoEncode(void* crypto, unsigned long long size) noexcept {
    return With<QVCryptoImpl>(crypto, int{QVErrParam}, [&](QVCryptoImpl& c) { return c.Encode(size); });
}

int QVCryptoDecode(void* crypto, unsigned long long size) noexcept {
    return With<QVCryptoImpl>(crypto, int{QVErrParam}, [&](QVCryptoImpl& c) { return c.Decode(size); });
}

void* QVCryptoEncodeData(void* data, void* key) noexcept {
    if (data == nullptr) return nullptr;
    return Process(&QVCryptoEncode, data, key, CreateResult(0, QVDataGetSize(data) + kContainerGrowth));
}

void* QVCryptoDecodeData(void* data, void* key) noexcept {
    if (data == nullptr) return nullptr;
    return Process(&DecodeUnseen, data, key, CreateResult(QVDataGetSize(key), QVDataGetSize(data)));
}
