// What every file object answers, whatever file system stands behind it.
#pragma once

#include "runtime/QVCBase.h"

class QVFileImpl : public QVCBase {
public:
    // The order of these operations is fixed. They answer result codes unless they say otherwise.
    virtual int OpenForReading() = 0;
    virtual int OpenForWriting() = 0;
    virtual int Close() = 0;
    virtual int SetPath(void* path) = 0;
    // The path's string, borrowed.
    [[nodiscard]] virtual void* GetPath() const = 0;
    virtual int SetMarker(int origin, long long offset) = 0;
    [[nodiscard]] virtual unsigned long long GetMarker() const = 0;
    virtual int ReadBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) = 0;
    virtual int WriteBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) = 0;
    virtual int Flush() = 0;
    [[nodiscard]] virtual unsigned long long GetSize() const = 0;
    virtual int SetSize(unsigned long long size) = 0;
    virtual int Delete(bool toTrash) = 0;
    virtual int SetPathForUnique(void* path, bool temporary) = 0;
    // Reserved; does nothing.
    virtual int EncodeToXML(void* node) = 0;

    // Whether the file is open, but for reading only.
    [[nodiscard]] virtual bool IsOpenForReading() const = 0;
    // Whether nothing stood at the marker or behind it when this object last saw the file's end. Costs no
    // system call.
    [[nodiscard]] virtual bool IsMarkerAtKnownEnd() const = 0;
};
