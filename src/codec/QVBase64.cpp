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

// Data holds fewer bytes than 2^32. Longer texts, and bytes whose text would be longer, are refused unread.
constexpr unsigned long long kMostBytes = UINT32_MAX / 4 * 3;
constexpr unsigned long long kMostCharacters = UINT32_MAX / 3 * 4;

Owned CreateData(uint64_t size) {
    return Owned(CreateDataToFill(static_cast<size_t>(size)));
}

}  // namespace

void* QVBase64Encode(const void* bytes, unsigned long long length) noexcept {
    if (length > kMostBytes || (bytes == nullptr && length > 0)) return nullptr;
    Owned data = CreateData(Base64EncodedSize(length));
    if (!data) return nullptr;
    EncodeBase64(static_cast<const uint8_t*>(bytes), static_cast<size_t>(length),
                 static_cast<char*>(QVDataGetMutableBuffer(data.Get())));
    return QVTEMPOBJ(data.Detach());
}

void* QVBase64Decode(const void* text, unsigned long long length) noexcept {
    if (length > kMostCharacters || (text == nullptr && length > 0)) return nullptr;
    const auto* characters = static_cast<const char*>(text);
    // Without the padding that usually ends a text, the room is nearly always the exact size.
    for (int padding = 0; padding < 2 && length > 0 && characters[length - 1] == '='; ++padding)
        --length;
    const uint64_t room = Base64DecodedSize(length);
    Owned data = CreateData(room);
    if (!data) return nullptr;
    const auto size = DecodeBase64(characters, static_cast<size_t>(length),
                                   static_cast<uint8_t*>(QVDataGetMutableBuffer(data.Get())));
    if (!size || (*size < room && !QVDataSetSize(data.Get(), static_cast<unsigned long>(*size))))
        return nullptr;
    return QVTEMPOBJ(data.Detach());
}
