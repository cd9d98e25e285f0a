// A stream over Data that reads, overwrites in place and grows at the end. It has no buffer: what is put is
// in the Data when the call returns, and what others do to the Data meanwhile is seen.
#pragma once

#include "collections/raw_data.h"
#include "io/QVStreamImpl.h"

class QVCMemoryStream final : public QVStreamImpl {
public:
    explicit QVCMemoryStream(void* data) : QVStreamImpl(data, qv::OwnedBytes(data)) {}
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    int GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    int PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    void SetMarker(int origin, long long offset) override;
    [[nodiscard]] long long GetMarker() const override { return base_; }
    int Flush() override;
    [[nodiscard]] unsigned long long GetSize() const override;

private:
    struct Contents {
        const void* bytes;
        unsigned long size;
    };
    [[nodiscard]] Contents GetContents() const;
};
