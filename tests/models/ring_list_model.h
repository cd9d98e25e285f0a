// The ring list's rules, one line of code for each line of the definition.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qv::model {

class RingList {
public:
    // False for size 0, which changes nothing.
    bool SetBufferSize(size_t size);
    size_t GetBufferSize() const { return buffer_.size(); }
    size_t GetSize() const { return count_; }
    void AddValue(uint8_t value);
    uint8_t GetValueAtIndex(size_t index) const;
    std::optional<size_t> FindMatchedLocation(const std::vector<uint8_t>& pattern, size_t start) const;

private:
    std::vector<uint8_t> buffer_;
    size_t count_ = 0;
    size_t head_ = 0;
    size_t tail_ = 0;
};

}  // namespace qv::model
