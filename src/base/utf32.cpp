#include "base/utf32.h"

#include <cstdint>

namespace qv {
namespace {

constexpr bool IsCodePoint(uint32_t value) {
    return value <= 0x10FFFF && (value & 0xFFFFF800) != 0xD800;
}

// Added to the index of a little-endian byte by exclusive or, it gives the index in the other order.
constexpr size_t Flip(std::endian order) {
    return order == std::endian::little ? 0 : 3;
}

}  // namespace

std::optional<size_t> DecodeUtf32(const char* bytes, size_t size, std::endian order, wchar_t* out) noexcept {
    if (size % 4 != 0) return std::nullopt;
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    const size_t flip = Flip(order);

    for (size_t at = 0; at < size; at += 4) {
        const auto byte = [&](size_t i) { return static_cast<uint32_t>(in[at + (i ^ flip)]); };
        const uint32_t character = byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
        if (!IsCodePoint(character)) return std::nullopt;
        out[at / 4] = static_cast<wchar_t>(character);
    }
    return size / 4;
}

void EncodeUtf32(const wchar_t* text, size_t count, std::endian order, char* out) noexcept {
    const size_t flip = Flip(order);
    for (size_t i = 0; i < count; ++i) {
        const auto value = static_cast<uint32_t>(text[i]);
        const uint32_t character = IsCodePoint(value) ? value : '?';
        for (size_t byte = 0; byte < 4; ++byte) {
            out[4 * i + (byte ^ flip)] = static_cast<char>(character >> 8 * byte);
        }
    }
}

}  // namespace qv
