// The contiguous store under the array: handles, as plain pointers, with spare room at both ends. It owns its
// memory and knows nothing of what the handles stand for.
#pragma once

#include <cstddef>

namespace qv {

// Appending, inserting at the front, and removing at either end take constant time (adding: on average). In
// between, the shorter side moves.
class HandleStore {
public:
    HandleStore() noexcept = default;
    HandleStore(const HandleStore&) = delete;
    HandleStore& operator=(const HandleStore&) = delete;
    ~HandleStore();

    [[nodiscard]] std::size_t Count() const noexcept { return static_cast<std::size_t>(end_ - begin_); }
    [[nodiscard]] void* const* begin() const noexcept { return begin_; }
    [[nodiscard]] void* const* end() const noexcept { return end_; }

    // The index must lie below the count.
    [[nodiscard]] void* At(std::size_t index) const noexcept { return begin_[index]; }
    // Answers what stood there before.
    void* Exchange(std::size_t index, void* handle) noexcept;

    // Up to `capacity` handles will then fit without further memory. Throws std::bad_alloc or
    // std::length_error.
    void Reserve(std::size_t capacity);

    // Whether the next handle at the back takes further memory, or a move within it.
    [[nodiscard]] bool IsFull() const noexcept { return end_ == limit_; }

    // Both throw as Reserve does and then change nothing. `index` lies below the count, or at it.
    void Append(void* handle) {
        if (IsFull()) MakeRoomAtBack();
        *end_++ = handle;
    }
    void Insert(std::size_t index, void* handle);

    // Answers the handle; the later ones move down.
    void* Remove(std::size_t index) noexcept;

    // Keeps the memory.
    void Clear() noexcept { begin_ = end_ = storage_; }

    void Swap(HandleStore& other) noexcept;

private:
    [[nodiscard]] std::size_t Capacity() const noexcept {
        return static_cast<std::size_t>(limit_ - storage_);
    }
    void MakeRoomAtBack();
    void MakeRoomAtFront();
    void MakeRoom(std::size_t spare, bool atFront);
    void Slide(std::size_t frontRoom) noexcept;
    void Reallocate(std::size_t capacity, std::size_t frontRoom);

    // storage_ <= begin_ <= end_ <= limit_; the handles lie from begin_ to end_.
    void** storage_ = nullptr;
    void** begin_ = nullptr;
    void** end_ = nullptr;
    void** limit_ = nullptr;
};

}  // namespace qv
