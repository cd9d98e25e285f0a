#include "inputs.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace bench {

namespace {

void AppendFile(Bytes& bytes, const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    bytes.insert(bytes.end(), std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Numbers below a limit, the same on every run.
class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed) {}
    std::uint32_t operator()(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

private:
    std::mt19937 random_;
};

Bytes RepeatTo(Bytes bytes, std::size_t size) {
    if (bytes.empty()) throw std::runtime_error("the input's source files are not on this machine");
    bytes.reserve(size + bytes.size());
    while (bytes.size() < size) {
        const std::size_t some = std::min(bytes.size(), size - bytes.size());
        bytes.insert(bytes.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(some));
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

Bytes English(std::size_t size) {
    Bytes bytes;
    for (const char* name : {"GPL-3", "LGPL-2.1", "MPL-1.1", "GFDL-1.3", "GPL-2", "Apache-2.0", "Artistic"}) {
        AppendFile(bytes, std::filesystem::path("/usr/share/common-licenses") / name);
    }
    return RepeatTo(std::move(bytes), size);
}

Bytes SourceText(std::size_t size) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(QV_BENCH_CXX_HEADERS)) {
        if (entry.path().extension() == ".h") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    Bytes bytes;
    for (const auto& path : paths)
        AppendFile(bytes, path);
    return RepeatTo(std::move(bytes), size);
}

Bytes Json(std::size_t size) {
    static constexpr const char* kNames[] = {"anna",  "bertrand", "chiara", "dmitri",
                                             "elena", "farouk",   "greta"};
    Dice dice(7);
    std::string text = "[\n";
    for (unsigned id = 1; text.size() < size; ++id) {
        text += "  {\"id\": " + std::to_string(id) + ", \"name\": \"" + kNames[dice(7)] +
                "\", \"balance\": " + std::to_string(dice(100'000)) + "." + std::to_string(dice(90) + 10) +
                ", \"active\": " + (dice(3) == 0 ? "false" : "true") + ", \"tags\": [\"" + kNames[dice(7)] +
                "\", \"" + kNames[dice(7)] + "\"]},\n";
    }
    text.resize(size);
    return {text.begin(), text.end()};
}

Bytes Runs(std::size_t size) {
    Dice dice(8);
    Bytes bytes;
    while (bytes.size() < size)
        bytes.insert(bytes.end(), 1 + dice(200), static_cast<std::uint8_t>(dice(256)));
    bytes.resize(size);
    return bytes;
}

Bytes Records(std::size_t size) {
    Dice dice(9);
    Bytes bytes;
    std::uint32_t time = 1'500'000'000;
    for (std::uint32_t id = 1; bytes.size() < size; ++id) {
        time += dice(60);
        const std::uint32_t fields[8] = {id, time,    dice(1000), dice(16),
                                         0,  dice(3), 0xFFFFFFFF, dice(0x80000000)};
        const auto* raw = reinterpret_cast<const std::uint8_t*>(fields);
        bytes.insert(bytes.end(), raw, raw + sizeof(fields));
    }
    bytes.resize(size);
    return bytes;
}

Bytes Random(std::size_t size) {
    Dice dice(10);
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>(dice(256));
    return bytes;
}

Bytes FewSymbols(std::size_t size, unsigned values) {
    Dice dice(11);
    Bytes bytes(size);
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>('a' + dice(values));
    return bytes;
}

}  // namespace bench
