#include "codec/QVRingListImpl.h"

#include <algorithm>
#include <cstring>

#include <QVFoundation/QVObject.h>

std::uint16_t QVRingListImpl::GetTypeID() const {
    return QVTypeIDRingList;
}

void QVRingListImpl::SetBufferSize(std::size_t size) {
    auto buffer = std::make_unique<std::uint8_t[]>(size);
    std::copy_n(buffer_.get(), std::min<std::size_t>(capacity_, size), buffer.get());
    buffer_ = std::move(buffer);
    capacity_ = static_cast<std::uint32_t>(size);
}

void QVRingListImpl::AddValue(std::uint8_t value) {
    if (capacity_ == 0) return;
    if (count_ < capacity_) {
        buffer_[tail_++] = value;
        ++count_;
    } else if (tail_ < capacity_) {
        buffer_[tail_++] = value;
        ++head_;
    } else {
        buffer_[0] = value;
        tail_ = 1;
        // Not 1: readers rely on the origin skipping the oldest value after a wrap.
        head_ = 2;
    }
}

std::uint8_t QVRingListImpl::GetValueAtIndex(std::size_t index) const {
    return capacity_ == 0 ? std::uint8_t{0} : buffer_[PlaceAfterHead(index)];
}

std::optional<std::size_t> QVRingListImpl::FindMatchedLocation(const std::uint8_t* pattern,
                                                               std::size_t length, std::size_t start) const {
    if (capacity_ == 0 || length == 0) return std::nullopt;
    const std::size_t first = PlaceAfterHead(start);
    const std::size_t tail = std::min(tail_, capacity_);
    const std::size_t available = tail < first ? tail - first + capacity_ : tail - first;
    if (available < length) return std::nullopt;
    for (std::size_t i = first; i <= first + (available - length); ++i) {
        // The origin counts a second time here; locations are defined that way.
        if (IsMatchAt(PlaceAfterHead(i), pattern, length)) return i;
    }
    return std::nullopt;
}

std::size_t QVRingListImpl::PlaceAfterHead(std::size_t distance) const {
    return (std::size_t{head_ % capacity_} + distance % capacity_) % capacity_;
}

bool QVRingListImpl::IsMatchAt(std::size_t place, const std::uint8_t* pattern, std::size_t length) const {
    const std::size_t untilEnd = std::min<std::size_t>(length, capacity_ - place);
    return std::memcmp(&buffer_[place], pattern, untilEnd) == 0 &&
           std::memcmp(&buffer_[0], pattern + untilEnd, length - untilEnd) == 0;
}
