// What every file manager answers, whatever file system stands behind it.
#pragma once

#include "runtime/QVCBase.h"

class QVCFileManager : public QVCBase {
public:
    // The order of these operations is fixed. Paths are strings; the integers are result codes.
    [[nodiscard]] virtual bool IsExistsAtPath(void* path) = 0;
    [[nodiscard]] virtual bool IsDirectory(void* path) = 0;
    virtual int MakeDirectory(void* path, bool intermediate) = 0;
    virtual int DeleteItem(void* path) = 0;
    virtual int CopyItem(void* source, void* destination) = 0;
    // Reserved; does nothing.
    virtual int EncodeToXML(void* node) = 0;
};
