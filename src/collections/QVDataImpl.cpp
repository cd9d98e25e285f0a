#include "collections/QVDataImpl.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

bool QVDataImpl::SetBytes(const void* bytes, unsigned long offset, unsigned long length) {
    if (length == 0 || bytes == nullptr) return false;
    const unsigned long size = GetSize();
    const unsigned long inPlace = offset < size ? std::min(size - offset, length) : 0;
    const auto* source = static_cast<const unsigned char*>(bytes);
    if (inPlace > 0) {
        auto* target = static_cast<unsigned char*>(GetMutableBuffer());
        if (target == nullptr) return false;
        if (inPlace < length && Overlaps(bytes, length)) {
            // The bytes in place would change the rest of the source before it is appended.
            const std::vector<unsigned char> copy(source, source + length);
            return SetBytes(copy.data(), offset, length);
        }
        std::memmove(target + offset, source, inPlace);
    }
    return inPlace == length || AppendBuffer(source + inPlace, length - inPlace);
}

bool QVDataImpl::GetBytes(void* buffer, unsigned long offset, unsigned long length, unsigned long* copied) {
    const unsigned long size = GetSize();
    if (buffer == nullptr || length == 0 || offset >= size) return false;
    const unsigned long count = std::min(size - offset, length);
    std::memmove(buffer, static_cast<const unsigned char*>(GetImutableBuffer()) + offset, count);
    if (copied != nullptr) *copied = count;
    return true;
}

bool QVDataImpl::Overlaps(const void* bytes, unsigned long length) const {
    const auto* other = static_cast<const unsigned char*>(bytes);
    const auto* own = static_cast<const unsigned char*>(GetImutableBuffer());
    const std::less<const unsigned char*> below;
    return below(other, own + GetSize()) && below(own, other + length);
}
