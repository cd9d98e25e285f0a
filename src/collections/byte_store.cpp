#include "collections/byte_store.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "base/block_cache.h"
#include "base/grown_block.h"

namespace qv {
namespace {

// The first room made for a store that grows piece by piece.
constexpr std::size_t kFirstCapacity = 64;

bool LiesWithin(const std::uint8_t* place, const std::uint8_t* bytes, std::size_t size) {
    const std::less<const std::uint8_t*> below;
    return !below(place, bytes) && below(place, bytes + size);
}

}  // namespace

ByteStore::~ByteStore() {
    if (bytes_ != nullptr) FreeBlock(bytes_, capacity_);
}

void ByteStore::Reserve(std::size_t capacity) {
    if (capacity > capacity_) Reallocate(capacity);
}

void ByteStore::Resize(std::size_t size) {
    if (size > size_) {
        const std::size_t added = size - size_;
        std::memset(Extend(added), 0, added);
    }
    size_ = size;
}

std::uint8_t* ByteStore::Extend(std::size_t count) {
    if (count > kMostBytes - size_) throw std::length_error("ByteStore");
    if (size_ + count > capacity_) Grow(size_ + count);
    std::uint8_t* added = bytes_ + size_;
    size_ += count;
    return added;
}

// What is written lies in the old bytes or, when it is the store's own, moves with them.
void ByteStore::GrowAndWrite(std::size_t offset, const void* source, std::size_t count) {
    if (count > kMostBytes - offset) throw std::length_error("ByteStore");
    const auto* from = static_cast<const std::uint8_t*>(source);
    const bool isOwn = LiesWithin(from, bytes_, size_);
    const std::size_t place = isOwn ? static_cast<std::size_t>(from - bytes_) : 0;
    Grow(offset + count);
    std::memmove(bytes_ + offset, isOwn ? bytes_ + place : from, count);
    size_ = offset + count;
}

// Doubling keeps the average cost of an added byte constant.
void ByteStore::Grow(std::size_t size) {
    const std::size_t doubled = capacity_ > kMostBytes / 2 ? kMostBytes : 2 * capacity_;
    Reallocate(std::max({size, doubled, kFirstCapacity}));
}

void ByteStore::Reallocate(std::size_t capacity) {
    if (capacity > kMostBytes) throw std::length_error("ByteStore");
    auto* larger = static_cast<std::uint8_t*>(AllocateBlock(capacity));
    if (bytes_ != nullptr) {
        CopyToGrownBlock(larger, bytes_, size_);
        FreeBlock(bytes_, capacity_);
    }
    bytes_ = larger;
    capacity_ = capacity;
}

}  // namespace qv
