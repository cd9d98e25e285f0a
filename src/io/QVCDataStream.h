// The data stream. It carries up to one buffer of bytes into a Data object; its rules are fixed as they are,
// and not those of a general stream over Data (that is QVCMemoryStream).
#pragma once

#include "io/QVStreamImpl.h"

class QVCDataStream final : public QVStreamImpl {
public:
    explicit QVCDataStream(void* data);
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    int GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    int PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    void SetMarker(int origin, long long offset) override;
    [[nodiscard]] long long GetMarker() const override;
    // 1 when the Data took the buffer's bytes, else 0.
    int Flush() override;
    [[nodiscard]] unsigned long long GetSize() const override;

    // Goes over to another Data, or to none.
    void SetData(void* data);

private:
    void Buffering();
    // The base as the Data takes offsets: its low 32 bits.
    [[nodiscard]] unsigned long BaseOffset() const { return static_cast<std::uint32_t>(base_); }
};
