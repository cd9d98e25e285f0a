// Inputs that reach the corners of the dictionary and of the block format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace qvtest {

using Bytes = std::vector<std::uint8_t>;

enum class Shape {
    kRandom,         // nearly no matches: two rebases of the window a chunk
    kLetters,        // short matches and more than 16384 tokens: lists that lead over other pairs
    kBase64,         // hardly any matches, long pair lists
    kFourSymbols,    // matches of 5 to 7 bytes among thousands of candidates
    kTwoSymbols,     // matches of 10 to 13 bytes
    kTwoSymbolRuns,  // long runs of two symbols
    kRuns,           // runs of any byte, many of them longer than 255
    kZeros,          // zeros, which also lie behind the window's live end
    kZerosAndOnes,   // runs of zeros between other bytes
    kProse,
    kRecords,  // fixed fields, counters and zeros
};

inline constexpr Shape kAllShapes[] = {Shape::kRandom,      Shape::kLetters,    Shape::kBase64,
                                       Shape::kFourSymbols, Shape::kTwoSymbols, Shape::kTwoSymbolRuns,
                                       Shape::kRuns,        Shape::kZeros,      Shape::kZerosAndOnes,
                                       Shape::kProse,       Shape::kRecords};

// The generator's raw numbers are used, never a distribution: those differ between standard libraries.
class ShapedInput {
public:
    explicit ShapedInput(unsigned seed) : random_(seed) {}

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }

    Bytes Make(Shape shape, std::size_t size) {
        Bytes bytes;
        while (bytes.size() < size)
            AddPiece(shape, bytes);
        bytes.resize(size);
        return bytes;
    }

private:
    void AddRun(Bytes& bytes, std::uint32_t value, std::uint32_t count) {
        bytes.insert(bytes.end(), count, static_cast<std::uint8_t>(value));
    }

    void AddPiece(Shape shape, Bytes& bytes) {
        static constexpr std::string_view kWords[] = {
            "the ", "and ", "of ", "window", "byte", "s ",          "longest ", "match, ",
            "is ",  "a ",   "in ", "oldest", ". ",   "dictionary ", "\n",       "that "};
        switch (shape) {
            case Shape::kRandom:
                return AddRun(bytes, Below(256), 1);
            case Shape::kLetters:
                return AddRun(bytes, 'a' + Below(26), 1);
            case Shape::kBase64:
                return AddRun(bytes, '0' + Below(64), 1);
            case Shape::kFourSymbols:
                return AddRun(bytes, static_cast<unsigned char>("ACGT"[Below(4)]), 1);
            case Shape::kTwoSymbols:
                return AddRun(bytes, Below(2), 1);
            case Shape::kTwoSymbolRuns: {
                // Numbers are drawn one a statement: the order within a call is each compiler's own.
                const std::uint32_t length = 1 + Below(40);
                return AddRun(bytes, Below(2), length);
            }
            case Shape::kRuns: {
                const std::uint32_t length = 1 + Below(Below(4) == 0 ? 600 : 12);
                return AddRun(bytes, Below(256), length);
            }
            case Shape::kZeros:
                return AddRun(bytes, 0, 100);
            case Shape::kZerosAndOnes:
                AddRun(bytes, 0, Below(6));
                return AddRun(bytes, Below(3), 1);
            case Shape::kProse: {
                const std::string_view word = kWords[Below(16)];
                bytes.insert(bytes.end(), word.begin(), word.end());
                if (Below(20) == 0) AddRun(bytes, 'A' + Below(26), 1);
                return;
            }
            case Shape::kRecords:
                ++counter_;
                for (int i = 0; i < 4; ++i)
                    AddRun(bytes, counter_ >> (8 * i) & 0xFF, 1);
                AddRun(bytes, Below(16), 1);
                AddRun(bytes, 0, 3);
                AddRun(bytes, Below(200), 2);
                return AddRun(bytes, 0, 6);
        }
    }

    std::mt19937 random_;
    std::uint32_t counter_ = 0;
};

}  // namespace qvtest
