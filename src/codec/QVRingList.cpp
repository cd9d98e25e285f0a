#include <cstdint>

#include <QVFoundation/QVRingList.h>

#include "codec/QVRingListImpl.h"
#include "runtime/Guard.h"

using namespace qv;

void* QVRingListCreate(void) noexcept {
    return CreateObject<QVRingListImpl>();
}

int QVRingListSetBufferSize(void* ringList, unsigned long size) noexcept {
    if (ringList == nullptr || size == 0) return QVErrParam;
    if (size > UINT32_MAX) return QVErrMemory;
    return With<QVRingListImpl>(ringList, int{QVErrMemory}, [=](QVRingListImpl& ring) {
        ring.SetBufferSize(size);
        return QVNoErr;
    });
}

unsigned long QVRingListGetBufferSize(void* ringList) noexcept {
    return With<QVRingListImpl>(ringList, 0UL,
                                [](const QVRingListImpl& ring) { return ring.GetBufferSize(); });
}

unsigned long QVRingListGetSize(void* ringList) noexcept {
    return With<QVRingListImpl>(ringList, 0UL, [](const QVRingListImpl& ring) { return ring.GetSize(); });
}

void QVRingListAddValue(void* ringList, unsigned char value) noexcept {
    With<QVRingListImpl>(ringList, [=](QVRingListImpl& ring) { ring.AddValue(value); });
}

unsigned char QVRingListGetValueAtIndex(void* ringList, unsigned long index) noexcept {
    return With<QVRingListImpl>(ringList, std::uint8_t{0},
                                [=](const QVRingListImpl& ring) { return ring.GetValueAtIndex(index); });
}

QVBoolean QVRingListFindMatchedLocation(void* ringList, const void* pattern, unsigned long length,
                                        unsigned long start, unsigned long* location) noexcept {
    if (pattern == nullptr || location == nullptr) return false;
    return With<QVRingListImpl>(ringList, QVBoolean{0}, [=](const QVRingListImpl& ring) {
        const auto found = ring.FindMatchedLocation(static_cast<const std::uint8_t*>(pattern), length, start);
        if (found) *location = *found;
        return found.has_value();
    });
}
