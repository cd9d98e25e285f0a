// A stream over an open file. The buffer is a window on the file that moves on when it is used up; between
// two calls the file's own marker stands just behind it. The steps are fixed, also where they surprise (see
// QVStream.h).
#pragma once

#include "io/QVFileImpl.h"
#include "io/QVStreamImpl.h"

class QVFileStreamImpl final : public QVStreamImpl {
public:
    explicit QVFileStreamImpl(void* file);
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    int GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    int PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) override;
    void SetMarker(int origin, long long offset) override;
    [[nodiscard]] long long GetMarker() const override;
    int Flush() override;
    [[nodiscard]] unsigned long long GetSize() const override;

    // Goes over to another file, or to none. The buffer and the marker stay as they are.
    int SetFile(void* file);

private:
    [[nodiscard]] QVFileImpl* File() const;
    void Buffering();
    void RefillAfterPut();
    int FlushBuffer();
    void WriteBuffer();

    int lostWrite_ = 0;  // why put bytes were lost; the next Flush tells
};
