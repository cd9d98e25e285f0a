#include "base/utf16.h"

#include <algorithm>
#include <cstdint>

namespace qv {
namespace {

constexpr bool IsSurrogate(uint32_t unit) {
    return (unit & 0xFFFFF800) == 0xD800;
}
constexpr bool IsHighSurrogate(uint32_t unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(uint32_t unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}

// Where the low byte of a unit stands.
constexpr size_t LowByte(std::endian order) {
    return order == std::endian::little ? 0 : 1;
}

}  // namespace

std::optional<size_t> DecodeUtf16(const char* bytes, size_t size, std::endian order, wchar_t* out) noexcept {
    if (size % 2 != 0) return std::nullopt;
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    const size_t low = LowByte(order);
    const auto unitAt = [&](size_t at) -> uint32_t {
        return uint32_t{in[at + low]} | uint32_t{in[at + 1 - low]} << 8;
    };

    size_t written = 0;
    for (size_t at = 0; at < size; at += 2) {
        uint32_t character = unitAt(at);
        if (IsSurrogate(character)) {
            if (!IsHighSurrogate(character) || size - at < 4 || !IsLowSurrogate(unitAt(at + 2)))
                return std::nullopt;
            character = 0x10000 + ((character & 0x3FF) << 10) + (unitAt(at + 2) & 0x3FF);
            at += 2;
        }
        out[written++] = static_cast<wchar_t>(character);
    }
    return written;
}

size_t Utf16Size(const wchar_t* text, size_t count) noexcept {
    const auto pairs =
        std::count_if(text, text + count, [](wchar_t c) { return c > 0xFFFF && c <= 0x10FFFF; });
    return 2 * (count + static_cast<size_t>(pairs));
}

void EncodeUtf16(const wchar_t* text, size_t count, std::endian order, char* out) noexcept {
    const size_t low = LowByte(order);
    const auto put = [&](uint32_t unit) {
        out[low] = static_cast<char>(unit);
        out[1 - low] = static_cast<char>(unit >> 8);
        out += 2;
    };

    for (size_t i = 0; i < count; ++i) {
        const auto character = static_cast<uint32_t>(text[i]);
        if (IsSurrogate(character) || character > 0x10FFFF) {
            put('?');
        } else if (character < 0x10000) {
            put(character);
        } else {
            put(0xD800 | (character - 0x10000) >> 10);
            put(0xDC00 | (character & 0x3FF));
        }
    }
}

}  // namespace qv
