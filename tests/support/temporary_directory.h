// A private directory for one test, removed with everything in it. Works through the C++ library's file
// functions, so that what the tests expect does not come from the code under test.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qvtest {

class TemporaryDirectory {
public:
    TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory();

    [[nodiscard]] const std::string& Path() const { return path_; }
    // The path of an item in the directory.
    [[nodiscard]] std::string operator/(std::string_view name) const {
        return path_ + "/" + std::string(name);
    }

private:
    std::string path_;
};

void WriteFile(const std::string& path, std::string_view contents);
[[nodiscard]] std::string ReadFile(const std::string& path);
[[nodiscard]] bool Exists(const std::string& path);

}  // namespace qvtest
