// The result codes that stand for the file system's errors.
#pragma once

#include <QVFoundation/QVObject.h>

#include "platform/file_system.h"

namespace qv {

// For file objects, to which "exists already" is an error like any other.
[[nodiscard]] constexpr int FileCode(FileError error) noexcept {
    switch (error) {
        case FileError::kNone:
            return QVNoErr;
        case FileError::kNotFound:
            return QVErrFileNotFound;
        case FileError::kBadArgument:
            return QVErrParam;
        case FileError::kPermission:
            return QVErrPermission;
        case FileError::kExists:
        case FileError::kOther:
            break;
    }
    return QVErrIO;
}

// For the file manager.
[[nodiscard]] constexpr int ManagerCode(FileError error) noexcept {
    return error == FileError::kExists ? int{QVErrDuplicate} : FileCode(error);
}

}  // namespace qv
