// UTF-8 byte by byte, written from the table of well-formed byte sequences in the Unicode Standard.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qvmodel {

struct WellFormedSequence {
    unsigned char firstLow, firstHigh;
    unsigned char secondLow, secondHigh;  // any further byte is 80..BF
    int length;
};

inline constexpr WellFormedSequence kWellFormed[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

// The length of the well-formed sequence at the start of the bytes, or 0.
inline int SequenceLength(std::string_view bytes) {
    const auto isIn = [&](size_t i, int low, int high) {
        if (i >= bytes.size()) return false;
        const int byte = static_cast<unsigned char>(bytes[i]);
        return low <= byte && byte <= high;
    };
    for (const WellFormedSequence& row : kWellFormed) {
        if (!isIn(0, row.firstLow, row.firstHigh)) continue;
        if (row.length >= 2 && !isIn(1, row.secondLow, row.secondHigh)) return 0;
        if (row.length >= 3 && !isIn(2, 0x80, 0xBF)) return 0;
        if (row.length >= 4 && !isIn(3, 0x80, 0xBF)) return 0;
        return row.length;
    }
    return 0;
}

inline std::optional<std::wstring> DecodeUtf8(std::string_view bytes) {
    std::wstring text;
    while (!bytes.empty()) {
        const int length = SequenceLength(bytes);
        if (length == 0) return std::nullopt;
        constexpr int kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
        int character = bytes[0] & kLeadBits[length];
        for (int i = 1; i < length; ++i) {
            character = character * 64 + (bytes[static_cast<size_t>(i)] & 0x3F);
        }
        text += static_cast<wchar_t>(character);
        bytes.remove_prefix(static_cast<size_t>(length));
    }
    return text;
}

inline bool IsCodePoint(wchar_t character) {
    const auto value = static_cast<unsigned long>(character) & 0xFFFFFFFF;
    return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

// A character that is no code point becomes `substitute`, or ends everything when there is none.
inline std::optional<std::string> EncodeUtf8(std::wstring_view text, std::optional<char> substitute = {}) {
    std::string bytes;
    const auto add = [&](long byte) { bytes += static_cast<char>(byte); };
    for (const wchar_t character : text) {
        const long value = character;
        if (!IsCodePoint(character)) {
            if (!substitute) return std::nullopt;
            bytes += *substitute;
        } else if (value < 0x80) {
            add(value);
        } else if (value < 0x800) {
            add(0xC0 + value / 64);
            add(0x80 + value % 64);
        } else if (value < 0x10000) {
            add(0xE0 + value / 4096);
            add(0x80 + value / 64 % 64);
            add(0x80 + value % 64);
        } else {
            add(0xF0 + value / 262144);
            add(0x80 + value / 4096 % 64);
            add(0x80 + value / 64 % 64);
            add(0x80 + value % 64);
        }
    }
    return bytes;
}

}  // namespace qvmodel
