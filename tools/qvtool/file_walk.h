// Finds the files that an archive is to hold.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct FoundFile {
    std::string path;  ///< where the file lies now
    std::string
        name;  ///< its name in the archive: relative, with "/" between components, none of them "." or ".."
    std::uint64_t size = 0;
    unsigned mode = 0;  ///< permission bits
};

struct WalkResult {
    std::vector<FoundFile> files;
    std::vector<std::string> notes;   ///< what was left out on purpose, one sentence each
    std::vector<std::string> errors;  ///< what could not be looked at
    std::uint64_t totalSize = 0;
};

/// The regular files at and below the given paths: directories in the byte order of their entries' names,
/// links inside them left out, a name that was already found left out. `except` is a file to leave out: the
/// archive itself. Throws a Failure when one of the paths does not exist.
[[nodiscard]] WalkResult FindFiles(const std::vector<std::string>& paths, const std::string& except);

}  // namespace tool
