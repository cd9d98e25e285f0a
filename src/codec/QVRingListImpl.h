// The ring list: a circular byte buffer that remembers the last values added.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "runtime/QVCBase.h"

class QVRingListImpl final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    // For 1 <= size < 2^32. Throws std::bad_alloc and changes nothing when there is no memory.
    void SetBufferSize(std::size_t size);
    [[nodiscard]] std::size_t GetBufferSize() const { return capacity_; }
    [[nodiscard]] std::size_t GetSize() const { return count_; }

    void AddValue(std::uint8_t value);
    [[nodiscard]] std::uint8_t GetValueAtIndex(std::size_t index) const;
    [[nodiscard]] std::optional<std::size_t> FindMatchedLocation(const std::uint8_t* pattern,
                                                                 std::size_t length, std::size_t start) const;

private:
    // The place in the buffer that lies `distance` places after the origin. The capacity is not 0.
    [[nodiscard]] std::size_t PlaceAfterHead(std::size_t distance) const;
    [[nodiscard]] bool IsMatchAt(std::size_t place, const std::uint8_t* pattern, std::size_t length) const;

    std::unique_ptr<std::uint8_t[]> buffer_;
    std::uint32_t capacity_ = 0;
    std::uint32_t count_ = 0;
    std::uint32_t head_ = 0;  // where reading begins; may exceed the capacity
    std::uint32_t tail_ = 0;  // where the next value goes; the capacity or more: at the front again
};
