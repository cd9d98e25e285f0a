// Random bytes of the shapes that coders meet, small ones far more often than large ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace qvtest {

class ShapedBytes {
public:
    explicit ShapedBytes(unsigned seed) : random_(seed) {}

    // A number below `limit`.
    std::size_t Below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    // Nearly always below 80, now and then a few hundred, seldom up to `most`.
    std::size_t SomeSize(std::size_t most) {
        const std::size_t kind = Below(200);
        return Below(kind == 0 ? most + 1 : kind < 20 ? 400 : 80);
    }

    // Random, of two or of four values, long or short runs, prose, one value, or ascending.
    std::vector<std::uint8_t> Make(std::size_t size) {
        static constexpr std::string_view kProse =
            "the quick brown fox jumps over the lazy dog; it was the best of times, it was the worst of "
            "times. ";
        const std::size_t shape = Below(8);
        const std::size_t start = Below(kProse.size());
        std::vector<std::uint8_t> bytes(size);
        for (std::size_t i = 0; i < size; ++i) {
            const bool goesOn = i > 0 && Below(shape == 3 ? 8 : 100) != 0;
            switch (shape) {
                case 0:
                    bytes[i] = static_cast<std::uint8_t>(Below(256));
                    break;
                case 1:
                    bytes[i] = static_cast<std::uint8_t>(Below(2));
                    break;
                case 2:
                    bytes[i] = static_cast<std::uint8_t>(Below(4) * 80);
                    break;
                case 3:
                case 4:
                    bytes[i] = goesOn ? bytes[i - 1] : static_cast<std::uint8_t>(Below(256));
                    break;
                case 5:
                    bytes[i] = static_cast<std::uint8_t>(kProse[(start + i) % kProse.size()]);
                    break;
                case 6:
                    bytes[i] = 255;
                    break;
                default:
                    bytes[i] = static_cast<std::uint8_t>(start + i);
                    break;
            }
        }
        return bytes;
    }

private:
    std::mt19937 random_;
};

}  // namespace qvtest
