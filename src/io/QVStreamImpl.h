// What every stream answers, and the buffer that file and data streams share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "collections/byte_store.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVStreamImpl : public QVCBase {
public:
    // The order of these operations is fixed. The integers are result codes.
    virtual int GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) = 0;
    virtual int PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) = 0;
    virtual void SetMarker(int origin, long long offset) = 0;
    [[nodiscard]] virtual long long GetMarker() const = 0;
    virtual int Flush() = 0;
    [[nodiscard]] virtual unsigned long long GetSize() const = 0;

    // The common case of GetBytes and PutBytes, for sizes above 0 and without a virtual call: the transfer
    // ends inside the buffer, so nothing is to be flushed or refilled, or inside memory that is at hand.
    // False, and nothing done, in every other case.
    [[nodiscard]] bool GetAtHand(void* to, unsigned long size) {
        if (length_ - position_ <= size || !store_) return GetFromMemory(to, size);
        const std::byte* from = buffer_.get() + position_;
        position_ += static_cast<std::uint32_t>(size);
        std::memcpy(to, from, size);
        return true;
    }
    [[nodiscard]] bool PutAtHand(const void* from, unsigned long size) {
        if (kBufferSize - position_ <= size || !store_) return PutIntoMemory(from, size);
        std::byte* to = buffer_.get() + position_;
        AdvanceAfterPut(static_cast<std::uint32_t>(size));
        std::memcpy(to, from, size);
        return true;
    }

protected:
    // Not free to change: it decides which bytes of a stream that was never flushed are in its file.
    static constexpr std::uint32_t kBufferSize = 1024;

    // A buffered stream over a store, which is retained and may be null.
    explicit QVStreamImpl(void* store)
        : store_(qv::Owned::Retaining(store)), buffer_(new std::byte[kBufferSize]) {}

    // A stream without a buffer: it is always used up and always full. The memory, which may be null, is the
    // store's own and lives as long.
    QVStreamImpl(void* store, qv::ByteStore* memory)
        : store_(qv::Owned::Retaining(store)),
          length_(kBufferSize),
          position_(kBufferSize),
          memory_(memory) {}

    // Takes what the buffer holds, at most size bytes; answers their number.
    unsigned long GetFromBuffer(void* to, unsigned long size) {
        const unsigned long count = std::min<unsigned long>(length_ - position_, size);
        if (count > 0) std::memcpy(to, buffer_.get() + position_, count);
        position_ += static_cast<std::uint32_t>(count);
        return count;
    }

    // Puts what fits into the buffer, at most size bytes; answers their number.
    unsigned long PutIntoBuffer(const void* from, unsigned long size) {
        const unsigned long count = std::min<unsigned long>(kBufferSize - position_, size);
        if (count > 0) std::memcpy(buffer_.get() + position_, from, count);
        AdvanceAfterPut(static_cast<std::uint32_t>(count));
        return count;
    }

    qv::Owned store_;  // the Data or the File
    std::unique_ptr<std::byte[]> buffer_;
    std::uint32_t length_ = 0;    // valid bytes in the buffer
    std::uint32_t position_ = 0;  // the marker inside the buffer
    bool isDirty_ = false;
    std::int64_t base_ = 0;  // where the buffer's first byte lies in the store
    qv::ByteStore* memory_ = nullptr;

private:
    bool GetFromMemory(void* to, unsigned long size) {
        const auto start = static_cast<std::size_t>(base_);
        if (memory_ == nullptr || memory_->Size() < size || start > memory_->Size() - size) return false;
        std::memmove(to, memory_->Bytes() + start, size);
        base_ += static_cast<std::int64_t>(size);
        return true;
    }
    bool PutIntoMemory(const void* from, unsigned long size) {
        const auto start = static_cast<std::size_t>(base_);
        if (memory_ == nullptr || start > memory_->Size() || !memory_->WriteInRoom(start, from, size))
            return false;
        base_ += static_cast<std::int64_t>(size);
        return true;
    }

    void AdvanceAfterPut(std::uint32_t count) {
        position_ += count;
        length_ = std::max(length_, position_);
        isDirty_ = true;
    }
};
