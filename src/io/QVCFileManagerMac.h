// The file manager of the platform's file system. Named after the first platform it was written for;
// everything that differs between systems lies behind platform/file_system.h.
#pragma once

#include <cstdint>

#include "io/QVCFileManager.h"

class QVCFileManagerMac final : public QVCFileManager {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override;

    [[nodiscard]] bool IsExistsAtPath(void* path) override;
    [[nodiscard]] bool IsDirectory(void* path) override;
    int MakeDirectory(void* path, bool intermediate) override;
    int DeleteItem(void* path) override;
    int CopyItem(void* source, void* destination) override;
    int EncodeToXML(void* node) override;

private:
    // A new array of the path's components, without their separators. Leaves pieces in the top temporary
    // pool.
    [[nodiscard]] static void* TokenizePathComponents(void* path);
};
