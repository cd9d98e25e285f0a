// What both kinds of Data answer, and the two operations that are written once for both.
#pragma once

#include <QVFoundation/QVObject.h>

#include "runtime/QVCBase.h"

class QVDataImpl : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDData; }

    // The order of these operations is fixed.
    [[nodiscard]] virtual const void* GetImutableBuffer() const = 0;
    [[nodiscard]] virtual void* GetMutableBuffer() const = 0;
    [[nodiscard]] virtual unsigned long GetSize() const = 0;
    virtual bool SetSize(unsigned long size) = 0;
    virtual bool Reserve(unsigned long capacity) = 0;
    virtual bool AppendData(void* data) = 0;
    virtual bool AppendBuffer(const void* bytes, unsigned long length) = 0;
    // Overwrites from the offset; what does not fit goes to the end, wherever the offset lies.
    virtual bool SetBytes(const void* bytes, unsigned long offset, unsigned long length);
    // Copies out what there is, at most `length` bytes; `copied` may be null.
    virtual bool GetBytes(void* buffer, unsigned long offset, unsigned long length, unsigned long* copied);

private:
    [[nodiscard]] bool Overlaps(const void* bytes, unsigned long length) const;
};
