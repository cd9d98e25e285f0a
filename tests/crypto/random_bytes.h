// Bytes for tests that are the same in every run.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace qvtest {

using Bytes = std::vector<std::uint8_t>;

class RandomBytes {
public:
    explicit RandomBytes(std::uint32_t seed) : engine_(seed) {}

    // 0 to limit - 1.
    std::size_t Below(std::size_t limit) { return engine_() % limit; }
    std::uint64_t Word64() { return std::uint64_t{engine_()} << 32 | engine_(); }
    Bytes Make(std::size_t size) {
        Bytes bytes(size);
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(engine_());
        return bytes;
    }

private:
    std::mt19937 engine_;
};

}  // namespace qvtest
