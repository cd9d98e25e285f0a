// Plain ASCII between bytes and wide characters, where it lies. Keys and names are short and mostly ASCII:
// for them a loop at hand beats the choice of a vector one (see utf8.h for everything else).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qv {

// Narrows the ASCII characters that `text` begins with and answers how many these are; `out` has room for
// `count` bytes.
inline std::size_t NarrowAscii(const wchar_t* text, std::size_t count, char* out) noexcept {
    const auto code = [text](std::size_t i) { return static_cast<std::uint32_t>(text[i]); };
    std::size_t at = 0;
    for (; count - at >= 2; at += 2) {
        const std::uint32_t first = code(at);
        const std::uint32_t second = code(at + 1);
        if ((first | second) >= 0x80) break;
        out[at] = static_cast<char>(first);
        out[at + 1] = static_cast<char>(second);
    }
    for (; at < count && code(at) < 0x80; ++at)
        out[at] = static_cast<char>(code(at));
    return at;
}

// The same the other way round: widens the ASCII bytes that `bytes` begins with.
inline std::size_t WidenAscii(const char* bytes, std::size_t count, wchar_t* out) noexcept {
    constexpr std::uint32_t kHighBits = 0x80808080;
    std::size_t at = 0;
    for (; count - at >= 4; at += 4) {
        std::uint32_t word;
        std::memcpy(&word, bytes + at, sizeof word);
        if ((word & kHighBits) != 0) break;
        for (std::size_t i = at; i < at + 4; ++i)
            out[i] = static_cast<wchar_t>(bytes[i]);
    }
    for (; at < count && static_cast<unsigned char>(bytes[at]) < 0x80; ++at)
        out[at] = static_cast<wchar_t>(bytes[at]);
    return at;
}

}  // namespace qv
