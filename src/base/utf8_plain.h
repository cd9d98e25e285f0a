#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

/// The portable UTF-8 conversions: what every processor can run, and what the vector versions are tested
/// against.
namespace qv::plain {

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept;
std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept;
std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept;

/// Reads the character at the start of `size` > 0 bytes. The bytes it takes (1 to 4), or 0 when they are not
/// valid.
inline size_t DecodeOne(const unsigned char* bytes, size_t size, uint32_t& character) noexcept {
    const auto continues = [&](size_t i) { return (bytes[i] & 0xC0) == 0x80; };
    const uint32_t lead = bytes[0];
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    if (lead < 0xE0) {
        if (lead < 0xC2 || size < 2 || !continues(1)) return 0;
        character = (lead & 0x1F) << 6 | (bytes[1] & 0x3Fu);
        return 2;
    }
    if (lead < 0xF0) {
        if (size < 3 || !continues(1) || !continues(2)) return 0;
        character = (lead & 0x0F) << 12 | (bytes[1] & 0x3Fu) << 6 | (bytes[2] & 0x3Fu);
        return character >= 0x800 && (character & 0xF800) != 0xD800 ? 3 : 0;
    }
    if (lead > 0xF4 || size < 4 || !continues(1) || !continues(2) || !continues(3)) return 0;
    character = (lead & 0x07) << 18 | (bytes[1] & 0x3Fu) << 12 | (bytes[2] & 0x3Fu) << 6 | (bytes[3] & 0x3Fu);
    return character >= 0x10000 && character <= 0x10FFFF ? 4 : 0;
}

/// Writes one character. The bytes written (1 to 4), or 0 when it is a surrogate or above U+10FFFF.
inline size_t EncodeOne(uint32_t character, char* out) noexcept {
    const auto trail = [&](int shift) { return static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        out[0] = static_cast<char>(character);
        return 1;
    }
    if (character < 0x800) {
        out[0] = static_cast<char>(0xC0 | character >> 6);
        out[1] = trail(0);
        return 2;
    }
    if (character < 0x10000) {
        if ((character & 0xF800) == 0xD800) return 0;
        out[0] = static_cast<char>(0xE0 | character >> 12);
        out[1] = trail(6);
        out[2] = trail(0);
        return 3;
    }
    if (character > 0x10FFFF) return 0;
    out[0] = static_cast<char>(0xF0 | character >> 18);
    out[1] = trail(12);
    out[2] = trail(6);
    out[3] = trail(0);
    return 4;
}

}  // namespace qv::plain
