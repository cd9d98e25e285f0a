#include "collections/handle_store.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/block_cache.h"
#include "base/grown_block.h"

namespace qv {
namespace {

// The first store that grows by itself holds this many: one of the smallest blocks.
constexpr std::size_t kFirstCapacity = 4;

constexpr std::size_t kMostHandles =
    static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(void*);

}  // namespace

HandleStore::~HandleStore() {
    if (storage_ != nullptr) FreeBlock(storage_, Capacity() * sizeof(void*));
}

void* HandleStore::Exchange(std::size_t index, void* handle) noexcept {
    return std::exchange(begin_[index], handle);
}

void HandleStore::Reserve(std::size_t capacity) {
    if (capacity > Capacity()) Reallocate(capacity, 0);
}

void HandleStore::Insert(std::size_t index, void* handle) {
    if (2 * index < Count()) {
        if (begin_ == storage_) MakeRoomAtFront();
        std::copy(begin_, begin_ + index, begin_ - 1);
        --begin_;
    } else {
        if (IsFull()) MakeRoomAtBack();
        std::copy_backward(begin_ + index, end_, end_ + 1);
        ++end_;
    }
    begin_[index] = handle;
}

void* HandleStore::Remove(std::size_t index) noexcept {
    void* removed = begin_[index];
    if (2 * index < Count()) {
        std::copy_backward(begin_, begin_ + index, begin_ + index + 1);
        ++begin_;
    } else {
        std::copy(begin_ + index + 1, end_, begin_ + index);
        --end_;
    }
    return removed;
}

void HandleStore::Swap(HandleStore& other) noexcept {
    std::swap(storage_, other.storage_);
    std::swap(begin_, other.begin_);
    std::swap(end_, other.end_);
    std::swap(limit_, other.limit_);
}

void HandleStore::MakeRoomAtBack() {
    MakeRoom(static_cast<std::size_t>(begin_ - storage_), false);
}

void HandleStore::MakeRoomAtFront() {
    MakeRoom(static_cast<std::size_t>(limit_ - end_), true);
}

// `spare` is the room at the other end. Moving the handles over costs as much as there are handles, so it
// pays only when the room gained is in proportion; else the store grows. A front that needed room gets half
// of what there is, since whoever inserts at the front may append as well; a back gets all of it.
void HandleStore::MakeRoom(std::size_t spare, bool atFront) {
    const std::size_t count = Count();
    const auto frontRoom = [&](std::size_t capacity) { return atFront ? (capacity - count + 1) / 2 : 0; };
    if (spare == 0 || spare < count / 2) {
        try {
            const std::size_t capacity = std::max(kFirstCapacity, 2 * Capacity());
            return Reallocate(capacity, frontRoom(capacity));
        } catch (const std::exception&) {
            // What was reserved can always be used, if slowly.
            if (spare == 0) throw;
        }
    }
    Slide(frontRoom(Capacity()));
}

void HandleStore::Slide(std::size_t frontRoom) noexcept {
    void** target = storage_ + frontRoom;
    if (target < begin_) {
        std::copy(begin_, end_, target);
    } else {
        std::copy_backward(begin_, end_, target + Count());
    }
    end_ = target + Count();
    begin_ = target;
}

void HandleStore::Reallocate(std::size_t capacity, std::size_t frontRoom) {
    if (capacity > kMostHandles) throw std::length_error("HandleStore");
    HandleStore larger;
    larger.storage_ = static_cast<void**>(AllocateBlock(capacity * sizeof(void*)));
    larger.limit_ = larger.storage_ + capacity;
    larger.begin_ = larger.storage_ + frontRoom;
    CopyToGrownBlock(larger.begin_, begin_, Count() * sizeof(void*));
    larger.end_ = larger.begin_ + Count();
    Swap(larger);
}

}  // namespace qv
