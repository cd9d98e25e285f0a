#include "support/temporary_directory.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>

namespace qvtest {

TemporaryDirectory::TemporaryDirectory() {
    std::string name = std::filesystem::temp_directory_path().string() + "/qvtest-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory: " + name);
    path_ = std::filesystem::canonical(name).string();
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::string& path, std::string_view contents) {
    std::ofstream out(path, std::ios::binary);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

}  // namespace qvtest
