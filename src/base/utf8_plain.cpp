#include "base/utf8_plain.h"

#include <cstring>

namespace qv::plain {
namespace {

constexpr uint64_t kHighBits = 0x8080808080808080;

uint64_t LoadWord(const void* at) noexcept {
    uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

}  // namespace

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
    size_t count = 0;
    for (size_t i = 0; i < size; ++i) {
        count += static_cast<signed char>(bytes[i]) >= -64;
    }
    return count;
}

std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    size_t at = 0;
    size_t written = 0;
    while (at < size) {
        if (size - at >= 8 && room - written >= 8 && (LoadWord(in + at) & kHighBits) == 0) {
            for (size_t i = 0; i < 8; ++i) {
                out[written + i] = static_cast<wchar_t>(in[at + i]);
            }
            at += 8;
            written += 8;
            continue;
        }
        uint32_t character;
        const size_t taken = DecodeOne(in + at, size - at, character);
        if (taken == 0 || written == room) return std::nullopt;
        at += taken;
        out[written++] = static_cast<wchar_t>(character);
    }
    return written;
}

std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept {
    char* to = out;
    for (size_t i = 0; i < count; ++i) {
        const size_t size = EncodeOne(static_cast<uint32_t>(text[i]), to);
        if (size == 0) return std::nullopt;
        to += size;
    }
    return static_cast<size_t>(to - out);
}

}  // namespace qv::plain
