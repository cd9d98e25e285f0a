// Data over memory that its caller keeps owning. It never grows.
#pragma once

#include "collections/QVDataImpl.h"

class QVNoCopyData final : public QVDataImpl {
public:
    QVNoCopyData(void* buffer, std::uint32_t size, bool writable) noexcept
        : buffer_(buffer), size_(size), writable_(writable) {}

    [[nodiscard]] const void* GetImutableBuffer() const override { return buffer_; }
    [[nodiscard]] void* GetMutableBuffer() const override { return writable_ ? buffer_ : nullptr; }
    [[nodiscard]] unsigned long GetSize() const override { return size_; }
    bool SetSize(unsigned long) override { return false; }
    bool Reserve(unsigned long) override { return false; }
    bool AppendData(void*) override { return false; }
    bool AppendBuffer(const void*, unsigned long) override { return false; }

private:
    void* buffer_;
    std::uint32_t size_;
    bool writable_;
};
