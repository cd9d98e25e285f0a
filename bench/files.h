// A folder for the files of one row, which goes with it, and whole files in and out.
#pragma once

#include <filesystem>
#include <string>

#include "inputs.h"

namespace bench {

class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

void WriteFile(const std::filesystem::path& path, const Bytes& contents);
std::string ReadFile(const std::filesystem::path& path);

}  // namespace bench
