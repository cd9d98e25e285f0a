// Data that owns its bytes and can grow.
#pragma once

#include "collections/QVDataImpl.h"
#include "collections/byte_store.h"

class QVHeapBaseDataImpl final : public QVDataImpl {
public:
    QVHeapBaseDataImpl() noexcept = default;
    // A copy of the bytes, or zeros for null. Throws when there is no room.
    QVHeapBaseDataImpl(const void* bytes, unsigned long size);

    [[nodiscard]] const void* GetImutableBuffer() const override { return store_.Bytes(); }
    [[nodiscard]] void* GetMutableBuffer() const override { return store_.Bytes(); }
    [[nodiscard]] unsigned long GetSize() const override { return static_cast<unsigned long>(store_.Size()); }
    bool SetSize(unsigned long size) override;
    bool Reserve(unsigned long capacity) override;
    bool AppendData(void* data) override;
    bool AppendBuffer(const void* bytes, unsigned long length) override;

    // Adds bytes of unknown value and answers where they begin. Throws when there is no room.
    unsigned char* Extend(unsigned long length) { return store_.Extend(length); }
    [[nodiscard]] qv::ByteStore& Store() { return store_; }

private:
    qv::ByteStore store_;
};
