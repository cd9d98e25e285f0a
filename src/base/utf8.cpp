#include "base/utf8.h"

#include "base/processor.h"
#include "base/utf8_kernels.h"

namespace qv {
namespace {

// Encodes from `from` on, up to the end or to a character that UTF-8 cannot hold.
Utf8Progress EncodeValid(const wchar_t* text, size_t count, char* out, Utf8Progress from) noexcept {
#if QV_X86
    if (HasAvx2()) from = avx2::EncodeUtf8(text, count, out, from);
#endif
    return plain::EncodeUtf8(text, count, out, from);
}

}  // namespace

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
#if QV_X86
    if (HasAvx2()) return avx2::CountUtf8Characters(bytes, size);
#endif
    return plain::CountUtf8Characters(bytes, size);
}

std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    Utf8Progress done;
#if QV_X86
    if (HasAvx2()) done = avx2::DecodeUtf8(bytes, size, out, room);
#endif
    done = plain::DecodeUtf8(bytes, size, out, room, done);
    if (done.read != size) return std::nullopt;
    return done.written;
}

std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept {
    const Utf8Progress done = EncodeValid(text, count, out, {});
    if (done.read != count) return std::nullopt;
    return done.written;
}

size_t EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out) noexcept {
    Utf8Progress done = EncodeValid(text, count, out, {});
    while (done.read != count) {
        out[done.written] = '?';
        done = EncodeValid(text, count, out, {done.read + 1, done.written + 1});
    }
    return done.written;
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
