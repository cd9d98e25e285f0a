// The folder into which an archive's files are written back, and nothing outside it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "descriptor.h"

namespace tool {

class ExtractionFolder final {
public:
    /// Opens the folder, making it when it does not exist; its parent must. Throws a Failure when that is
    /// refused.
    explicit ExtractionFolder(const std::string& path);

    /// Writes the next piece of a file to the descriptor.
    using Writer = std::function<void(int descriptor)>;

    /// Makes a new file with the permission bits `mode` (and the folders on the way to it) and has its bytes
    /// written. `name` is relative, with "/" between components; links are never followed, and a file that is
    /// there stays untouched unless `overwrite` has it replaced in the end. When anything fails a Failure is
    /// thrown and no part of the new file is left; a signal that ends the program leaves none either.
    void WriteFile(const std::string& name, unsigned mode, bool overwrite, const Writer& writer);

private:
    Descriptor descriptor_;
};

/// A name's components. Throws a Failure for a name that is empty, absolute, or has an empty, "." or ".."
/// component.
[[nodiscard]] std::vector<std::string> SafeComponents(const std::string& name);

}  // namespace tool
