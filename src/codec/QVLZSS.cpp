// The sliding dictionary: the C functions.
#include <QVFoundation/QVLZSS.h>

#include "codec/QVLZ77Impl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;

void* QVLZSSCreate() noexcept {
    return CreateObject<QVLZ77Impl>();
}

void QVLZSSAppendValue(void* dictionary, unsigned char value) noexcept {
    With<QVLZ77Impl>(dictionary, [=](QVLZ77Impl& d) { d.AppendValue(value); });
}

QVBoolean QVLZSSSearchSlideDic(void* dictionary, const void* lookahead, unsigned long size,
                               unsigned short* offset, unsigned char* length) noexcept {
    if (lookahead == nullptr) return 0;
    return With<QVLZ77Impl>(dictionary, QVBoolean{0}, [=](QVLZ77Impl& d) {
        const auto match = d.SearchSlideDic(static_cast<const std::uint8_t*>(lookahead), size);
        if (match.length == 0) return false;
        if (offset != nullptr) *offset = match.offset;
        if (length != nullptr) *length = match.length;
        return true;
    });
}
