#include <algorithm>
#include <cstddef>

#include <QVFoundation/QVBlockTransform.h>

#include "codec/block_transform.h"
#include "codec/move_to_front.h"
#include "runtime/Guard.h"

using namespace qv;

int QVBWTEncode(unsigned char* out, unsigned long* primaryIndex, const unsigned char* in,
                unsigned long size) noexcept {
    if (size > 0 && (out == nullptr || in == nullptr)) return QVErrParam;
    if (size > 1 && primaryIndex == nullptr) return QVErrParam;
    return Guard(int{QVErrMemory}, [=] {
        const auto primary = EncodeBlockTransform(in, size, out);
        if (!primary) return QVErrNotFound;
        *primaryIndex = *primary;
        return QVNoErr;
    });
}

int QVBWTDecode(unsigned char* out, const unsigned char* in, long size, long primaryIndex) noexcept {
    if (size < 0 || primaryIndex < 0 || primaryIndex >= std::max(size, 1L)) return QVErrParam;
    if (size > 0 && (out == nullptr || in == nullptr)) return QVErrParam;
    return Guard(int{QVErrMemory}, [=] {
        DecodeBlockTransform(in, static_cast<std::size_t>(size), static_cast<std::size_t>(primaryIndex), out);
        return QVNoErr;
    });
}

int QVMTFEncode(unsigned char* out, const unsigned char* in, long size) noexcept {
    if (size < 0 || (size > 0 && (out == nullptr || in == nullptr))) return QVErrParam;
    EncodeMoveToFront(in, static_cast<std::size_t>(size), out);
    return QVNoErr;
}
