// The growing run of bytes under Data. Unlike a vector it can grow without filling what is about to be
// overwritten.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace qv {

class ByteStore {
public:
    // Data holds fewer than 2^32 bytes everywhere; where addresses are short, half of that is the limit.
    static constexpr std::size_t kMostBytes =
        sizeof(std::size_t) > 4 ? 0xFFFFFFFFU
                                : static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());

    ByteStore() noexcept = default;
    ByteStore(const ByteStore&) = delete;
    ByteStore& operator=(const ByteStore&) = delete;
    ~ByteStore();

    // Null while there are no bytes.
    [[nodiscard]] std::uint8_t* Bytes() const noexcept { return size_ > 0 ? bytes_ : nullptr; }
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    // The same for callers who know that there are some.
    [[nodiscard]] std::uint8_t* FirstByte() const noexcept { return bytes_; }

    // All of these throw std::bad_alloc or, beyond the limit, std::length_error, and then change nothing.

    // Room for `capacity` bytes in all.
    void Reserve(std::size_t capacity);
    // New bytes are 0.
    void Resize(std::size_t size);
    // Adds `count` bytes of unknown value and answers where they begin.
    std::uint8_t* Extend(std::size_t count);
    // Overwrites from `offset`, which is at most the size, and adds what reaches beyond the end. The source
    // may lie inside this store.
    void Write(std::size_t offset, const void* source, std::size_t count) {
        if (count > 0 && !WriteInRoom(offset, source, count)) GrowAndWrite(offset, source, count);
    }
    // The same for `count` bytes above 0, while it needs no more room. False, and nothing done, when it does.
    [[nodiscard]] bool WriteInRoom(std::size_t offset, const void* source, std::size_t count) noexcept {
        if (count > capacity_ || offset > capacity_ - count) return false;
        std::memmove(bytes_ + offset, source, count);
        size_ = std::max(size_, offset + count);
        return true;
    }
    void Append(const void* source, std::size_t count) { Write(size_, source, count); }

    // The room behind the last byte. Bytes that have been written there can be added as they are; until then
    // they belong to nobody.
    [[nodiscard]] std::size_t SpareSize() const noexcept { return capacity_ - size_; }
    [[nodiscard]] std::uint8_t* Spare() const noexcept { return bytes_ + size_; }
    void AddSpare(std::size_t count) noexcept { size_ += count; }

private:
    void GrowAndWrite(std::size_t offset, const void* source, std::size_t count);
    void Grow(std::size_t size);
    void Reallocate(std::size_t capacity);

    std::uint8_t* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace qv
