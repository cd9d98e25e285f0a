// Items of the file system as wholes.
#pragma once

#include <string>

#include "platform/file_system.h"

namespace qv {

// Removes a file, a link or an empty directory. Needs no memory.
FileError RemoveItem(const std::string& path);

// Copies a file, or a directory with everything in it, into a directory, under its own name. A name that is
// taken gives kExists, a directory into itself kBadArgument, anything that is no file, directory or link
// kOther. After a failure nothing of the copy is left.
FileError CopyItem(const std::string& source, const std::string& directory);

}  // namespace qv
