// Hexadecimal digits in wide text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qv {

// The value of a digit in either case, or -1.
constexpr int HexDigitValue(wchar_t character) noexcept {
    if (character >= L'0' && character <= L'9') return character - L'0';
    if (character >= L'a' && character <= L'f') return character - L'a' + 10;
    if (character >= L'A' && character <= L'F') return character - L'A' + 10;
    return -1;
}

// How many digits the text begins with.
constexpr size_t CountHexDigits(std::wstring_view text) noexcept {
    size_t count = 0;
    while (count < text.size() && HexDigitValue(text[count]) >= 0)
        ++count;
    return count;
}

// The value of the digits that the text begins with, modulo 2^32; 0 without any. There are no prefixes:
// "0x1F" is 0.
constexpr uint32_t ParseHex(std::wstring_view text) noexcept {
    uint32_t value = 0;
    for (const wchar_t digit : text.substr(0, CountHexDigits(text))) {
        value = value << 4 | static_cast<uint32_t>(HexDigitValue(digit));
    }
    return value;
}

// Writes the word's four bytes, the lowest first, as eight upper-case digits.
constexpr void PutHexBytes(uint32_t word, wchar_t* out) noexcept {
    constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
    for (int byte = 0; byte < 4; ++byte, word >>= 8) {
        *out++ = kDigits[word >> 4 & 15];
        *out++ = kDigits[word & 15];
    }
}

}  // namespace qv
