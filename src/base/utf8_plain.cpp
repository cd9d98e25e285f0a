#include <bit>
#include <cstdint>
#include <cstring>

#include "base/utf8_kernels.h"

namespace qv::plain {
namespace {

constexpr uint64_t kHighBits = 0x8080808080808080;
constexpr uint64_t kLowBits = kHighBits >> 7;

uint64_t LoadWord(const char* at) noexcept {
    uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// Reads the character at the start of `size` > 0 bytes: the bytes it takes (1 to 4), or 0 when they are not
// valid.
size_t DecodeOne(const unsigned char* bytes, size_t size, uint32_t& character) noexcept {
    const auto continues = [&](size_t i) { return (bytes[i] & 0xC0) == 0x80; };
    const auto bits = [&](size_t i) { return static_cast<uint32_t>(bytes[i] & 0x3F); };
    const uint32_t lead = bytes[0];
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    if (lead < 0xE0) {
        if (lead < 0xC2 || size < 2 || !continues(1)) return 0;
        character = (lead & 0x1F) << 6 | bits(1);
        return 2;
    }
    if (lead < 0xF0) {
        if (size < 3 || !continues(1) || !continues(2)) return 0;
        character = (lead & 0x0F) << 12 | bits(1) << 6 | bits(2);
        return character >= 0x800 && (character & 0xF800) != 0xD800 ? 3 : 0;
    }
    if (lead > 0xF4 || size < 4 || !continues(1) || !continues(2) || !continues(3)) return 0;
    character = (lead & 0x07) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
    return character >= 0x10000 && character <= 0x10FFFF ? 4 : 0;
}

// The bytes of a character (1 to 4), or 0 when it is a surrogate or above U+10FFFF.
size_t SizeOf(uint32_t character) noexcept {
    if (character < 0x80) return 1;
    if (character < 0x800) return 2;
    if (character < 0x10000) return (character & 0xF800) == 0xD800 ? 0 : 3;
    return character <= 0x10FFFF ? 4 : 0;
}

// Writes a character of `size` bytes.
void EncodeOne(uint32_t character, size_t size, char* out) noexcept {
    const auto trail = [&](int shift) { return static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    switch (size) {
        case 1:
            out[0] = static_cast<char>(character);
            return;
        case 2:
            out[0] = static_cast<char>(0xC0 | character >> 6);
            out[1] = trail(0);
            return;
        case 3:
            out[0] = static_cast<char>(0xE0 | character >> 12);
            out[1] = trail(6);
            out[2] = trail(0);
            return;
        default:
            out[0] = static_cast<char>(0xF0 | character >> 18);
            out[1] = trail(12);
            out[2] = trail(6);
            out[3] = trail(0);
    }
}

}  // namespace

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
    size_t count = size;
    size_t at = 0;
    for (; size - at >= 8; at += 8) {
        const uint64_t word = LoadWord(bytes + at);
        const uint64_t continuations = word >> 7 & ~(word >> 6) & kLowBits;
        count -= static_cast<size_t>(std::popcount(continuations));
    }
    for (; at < size; ++at) {
        count -= (bytes[at] & 0xC0) == 0x80;
    }
    return count;
}

Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room,
                        Utf8Progress from) noexcept {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    auto [at, written] = from;
    while (at < size && written < room) {
        if (size - at >= 8 && room - written >= 8 && (LoadWord(bytes + at) & kHighBits) == 0) {
            for (size_t i = 0; i < 8; ++i) {
                out[written + i] = static_cast<wchar_t>(in[at + i]);
            }
            at += 8;
            written += 8;
            continue;
        }
        uint32_t character;
        const size_t taken = DecodeOne(in + at, size - at, character);
        if (taken == 0) break;
        at += taken;
        out[written++] = static_cast<wchar_t>(character);
    }
    return {at, written};
}

Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                        Utf8Progress from) noexcept {
    auto [at, written] = from;
    while (at < count) {
        const auto character = static_cast<uint32_t>(text[at]);
        const size_t size = SizeOf(character);
        if (size == 0 || size > room - written) break;
        EncodeOne(character, size, out + written);
        ++at;
        written += size;
    }
    return {at, written};
}

}  // namespace qv::plain
