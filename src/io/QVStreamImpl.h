// What every stream answers, and the buffer that file and data streams share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

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

    // The common case of GetBytes and PutBytes, without a virtual call: the transfer ends inside the buffer,
    // so nothing is to be flushed or refilled. False, and nothing done, in every other case.
    [[nodiscard]] bool GetInsideBuffer(void* to, unsigned long size) {
        if (length_ - position_ <= size || !store_) return false;
        std::memcpy(to, buffer_.get() + position_, size);
        position_ += static_cast<std::uint32_t>(size);
        return true;
    }
    [[nodiscard]] bool PutInsideBuffer(const void* from, unsigned long size) {
        if (kBufferSize - position_ <= size || !store_) return false;
        std::memcpy(buffer_.get() + position_, from, size);
        AdvanceAfterPut(static_cast<std::uint32_t>(size));
        return true;
    }

protected:
    // Each format's headers and tables fit into it, and it is well below a page; callers see its size in what
    // a stream has written before it is flushed.
    static constexpr std::uint32_t kBufferSize = 1024;

    // A buffered stream over a store, which is retained and may be null.
    explicit QVStreamImpl(void* store)
        : store_(qv::Owned::Retaining(store)),
          buffer_(std::make_unique_for_overwrite<std::byte[]>(kBufferSize)) {}

    // A stream without a buffer: it is always used up and always full.
    struct Unbuffered {};
    QVStreamImpl(void* store, Unbuffered)
        : store_(qv::Owned::Retaining(store)), length_(kBufferSize), position_(kBufferSize) {}

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

private:
    void AdvanceAfterPut(std::uint32_t count) {
        position_ += count;
        length_ = std::max(length_, position_);
        isDirty_ = true;
    }
};
