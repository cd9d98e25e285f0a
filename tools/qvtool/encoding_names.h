// Encodings by name, as users write them.
#pragma once

#include <map>
#include <string>

#include "tool.h"

namespace tool {

// Lower-case names to encodings, without byte-order marks.
[[nodiscard]] inline const std::map<std::string, QVEncodingInfo>& EncodingNames() {
    static const std::map<std::string, QVEncodingInfo> names = {
        {"shift_jis", {QVEncodingShiftJIS, 0, 0}},
        {"iso-2022-jp", {QVEncodingISO2022JP, 0, 0}},
        {"euc-jp", {QVEncodingEUCJP, 0, 0}},
        {"utf-8", {QVEncodingUTF8, 0, 0}},
        {"utf-16le", {QVEncodingUTF16, 1, 0}},
        {"utf-16be", {QVEncodingUTF16, 2, 0}},
        {"utf-32le", {QVEncodingUTF32, 1, 0}},
        {"utf-32be", {QVEncodingUTF32, 2, 0}},
        {"mac-roman", {0, 0, 0}},
    };
    return names;
}

}  // namespace tool
