#include "models/ring_list_model.h"

namespace qv::model {

bool RingList::SetBufferSize(size_t size) {
    if (size == 0) return false;
    buffer_.resize(size);
    return true;
}

void RingList::AddValue(uint8_t value) {
    const size_t capacity = buffer_.size();
    if (capacity == 0) return;
    if (count_ < capacity) {
        buffer_[tail_] = value;
        ++tail_;
        ++count_;
    } else if (tail_ < capacity) {
        buffer_[tail_] = value;
        ++head_;
        ++tail_;
    } else {
        buffer_[0] = value;
        tail_ = 1;
        head_ = 2;
    }
}

uint8_t RingList::GetValueAtIndex(size_t index) const {
    return buffer_.empty() ? uint8_t{0} : buffer_[(head_ + index) % buffer_.size()];
}

std::optional<size_t> RingList::FindMatchedLocation(const std::vector<uint8_t>& pattern, size_t start) const {
    const size_t capacity = buffer_.size();
    if (pattern.empty() || capacity == 0) return std::nullopt;
    const size_t tail = tail_ < capacity ? tail_ : capacity;
    for (size_t i = (start + head_) % capacity;; ++i) {
        const size_t available = tail - i + (tail < i ? capacity : 0);
        if (available < pattern.size()) return std::nullopt;
        size_t k = 0;
        while (k < pattern.size() && pattern[k] == buffer_[(head_ + i + k) % capacity])
            ++k;
        if (k == pattern.size()) return i;
    }
}

}  // namespace qv::model
