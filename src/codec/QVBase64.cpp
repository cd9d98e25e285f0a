#include <cstddef>
#include <cstdint>

#include <QVFoundation/QVBase64.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "codec/base64.h"
#include "collections/raw_data.h"
#include "runtime/Owned.h"

using namespace qv;

namespace {

// Data holds fewer bytes than 2^32, so no input of this length or more has a result.
constexpr unsigned long long kTooLong = 1ULL << 33;

Owned CreateData(uint64_t size) {
    return Owned(size > UINT32_MAX ? nullptr : CreateDataToFill(static_cast<size_t>(size)));
}

}  // namespace

void* QVBase64Encode(const void* bytes, unsigned long long length) noexcept {
    if (length >= kTooLong || (bytes == nullptr && length > 0)) return nullptr;
    Owned data = CreateData(Base64EncodedSize(length));
    if (!data) return nullptr;
    EncodeBase64(static_cast<const uint8_t*>(bytes), static_cast<size_t>(length),
                 static_cast<char*>(QVDataGetMutableBuffer(data.Get())));
    return QVTEMPOBJ(data.Detach());
}

void* QVBase64Decode(const void* text, unsigned long long length) noexcept {
    if (length >= kTooLong || (text == nullptr && length > 0)) return nullptr;
    Owned data = CreateData(Base64DecodedRoom(length));
    if (!data) return nullptr;
    const auto size = DecodeBase64(static_cast<const char*>(text), static_cast<size_t>(length),
                                   static_cast<uint8_t*>(QVDataGetMutableBuffer(data.Get())));
    if (!size || !QVDataSetSize(data.Get(), static_cast<unsigned long>(*size))) return nullptr;
    return QVTEMPOBJ(data.Detach());
}
