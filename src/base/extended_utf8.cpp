#include "base/extended_utf8.h"

#include <cstdint>

namespace qv {
namespace {

// The bytes of a character, 1 to 6.
int SizeOf(int32_t character) noexcept {
    if (character < 0x80) return 1;
    if (character < 0x800) return 2;
    if (character < 0x10000) return 3;
    if (character < 0x200000) return 4;
    if (character < 0x4000000) return 5;
    return 6;
}

// By size: what marks the first byte. The bits of the character behind the mark never reach into it.
constexpr uint32_t kMarks[] = {0, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

}  // namespace

size_t ExtendedUtf8Size(const wchar_t* characters, size_t count) noexcept {
    size_t size = 0;
    for (size_t i = 0; i < count; ++i) {
        size += static_cast<size_t>(SizeOf(static_cast<int32_t>(characters[i])));
    }
    return size;
}

void EncodeExtendedUtf8(const wchar_t* characters, size_t count, char* out) noexcept {
    for (size_t i = 0; i < count; ++i) {
        const auto character = static_cast<uint32_t>(characters[i]);
        const int size = SizeOf(static_cast<int32_t>(characters[i]));
        if (size == 1) {
            *out++ = static_cast<char>(character & 0x7F);
            continue;
        }
        *out++ = static_cast<char>(kMarks[size] | character >> 6 * (size - 1));
        for (int shift = 6 * (size - 2); shift >= 0; shift -= 6) {
            *out++ = static_cast<char>(0x80 | (character >> shift & 0x3F));
        }
    }
}

}  // namespace qv
