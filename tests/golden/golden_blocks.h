// Whole compressed files that are checked in, so that a change of one bit is noticed on every compiler and
// width. tests/models/make_golden_blocks.cpp writes them with the plain model.
#pragma once

#include <string>

#include "codec/coder_inputs.h"

namespace qvtest {

struct GoldenBlocks {
    const char* name;  // of the file in tests/golden, less ".golden"
    Shape shape;
    unsigned seed;
    std::size_t size;

    [[nodiscard]] Bytes Input() const { return ShapedInput(seed).Make(shape, size); }
    [[nodiscard]] std::string FileName() const { return std::string(name) + ".golden"; }
};

inline constexpr GoldenBlocks kGoldenBlocks[] = {
    {"zeros_100", Shape::kZeros, 1, 100},
    {"prose_40000", Shape::kProse, 2, 40000},
    {"two_symbols_32769", Shape::kTwoSymbols, 3, 32769},
    {"four_symbols_5000", Shape::kFourSymbols, 4, 5000},
    {"runs_32768", Shape::kRuns, 5, 32768},
    {"records_8000", Shape::kRecords, 6, 8000},
    {"random_700", Shape::kRandom, 7, 700},
    // More than 16384 tokens, so the window is rebased.
    {"base64_17500", Shape::kBase64, 8, 17500},
};

}  // namespace qvtest
