#include "base/utf8.h"

#include <cstdint>

#include "base/ascii.h"
#include "base/processor.h"
#include "base/utf8_kernels.h"

namespace qv {
namespace {

// Encodes from `from` on, up to the end, to a character that UTF-8 cannot hold or to one that does not fit.
Utf8Progress EncodeValid(const wchar_t* text, size_t count, char* out, size_t room,
                         Utf8Progress from) noexcept {
#if QV_X86
    if (HasAvx512Compress()) from = avx512::EncodeUtf8(text, count, out, room, from);
    if (HasAvx2()) from = avx2::EncodeUtf8(text, count, out, room, from);
#endif
    return plain::EncodeUtf8(text, count, out, room, from);
}

[[gnu::noinline]] std::optional<size_t> DecodeLongUtf8(const char* bytes, size_t size, wchar_t* out,
                                                       size_t room) noexcept {
    Utf8Progress done;
#if QV_X86
    if (HasAvx512Compress()) {
        done = avx512::DecodeUtf8(bytes, size, out, room);
    } else if (HasAvx2()) {
        done = avx2::DecodeUtf8(bytes, size, out, room);
    }
#endif
    done = plain::DecodeUtf8(bytes, size, out, room, done);
    if (done.read != size) return std::nullopt;
    return done.written;
}

// Up to here a plain loop is done before a vector one has begun.
constexpr size_t kShort = 32;

bool IsCodePoint(wchar_t character) noexcept {
    const auto value = static_cast<uint32_t>(character);
    return value <= 0x10FFFF && (value & 0xFFFFF800) != 0xD800;
}

}  // namespace

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
#if QV_X86
    if (HasAvx2()) return avx2::CountUtf8Characters(bytes, size);
#endif
    return plain::CountUtf8Characters(bytes, size);
}

std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    if (size <= kShort && size <= room && WidenAscii(bytes, size, out) == size) return size;
    return DecodeLongUtf8(bytes, size, out, room);
}

size_t Utf8Size(const wchar_t* text, size_t count) noexcept {
    constexpr size_t kPiece = 1 << 16;  // short enough for a 32-bit sum, which adds up in vectors
    size_t size = count;
    for (size_t at = 0; at < count; at += kPiece) {
        const size_t end = count - at > kPiece ? at + kPiece : count;
        uint32_t more = 0;
        for (size_t i = at; i < end; ++i) {
            const auto value = static_cast<uint32_t>(text[i]);
            more += uint32_t{value > 0x7F} + uint32_t{value > 0x7FF} + uint32_t{value > 0xFFFF};
        }
        size += more;
    }
    return size;
}

std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept {
    const Utf8Progress done = EncodeValid(text, count, out, Utf8SizeMax(count), {});
    if (done.read != count) return std::nullopt;
    return done.written;
}

size_t EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out) noexcept {
    return EncodeUtf8Lossy(text, count, out, Utf8SizeMax(count), {}).written;
}

Utf8Progress EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out, size_t room,
                             Utf8Progress done) noexcept {
    for (;;) {
        done = EncodeValid(text, count, out, room, done);
        if (done.read == count || IsCodePoint(text[done.read]) || done.written == room) return done;
        out[done.written++] = '?';
        ++done.read;
    }
}

std::optional<std::string> ToUtf8(std::wstring_view text) {
    std::string bytes(Utf8SizeMax(text.size()), '\0');
    const auto size = EncodeUtf8(text.data(), text.size(), bytes.data());
    if (!size) return std::nullopt;
    bytes.resize(*size);
    return bytes;
}

std::optional<std::wstring> FromUtf8(std::string_view bytes) {
    std::wstring text(CountUtf8Characters(bytes.data(), bytes.size()), L'\0');
    if (!DecodeUtf8(bytes.data(), bytes.size(), text.data(), text.size())) return std::nullopt;
    return text;
}

}  // namespace qv
