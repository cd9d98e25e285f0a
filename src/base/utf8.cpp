#include "base/utf8.h"

#include "base/utf8_plain.h"

namespace qv {

size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
    return plain::CountUtf8Characters(bytes, size);
}

std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    return plain::DecodeUtf8(bytes, size, out, room);
}

std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept {
    return plain::EncodeUtf8(text, count, out);
}

size_t EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out) noexcept {
    char* to = out;
    for (size_t i = 0; i < count; ++i) {
        const size_t size = plain::EncodeOne(static_cast<uint32_t>(text[i]), to);
        if (size == 0) *to = '?';
        to += size == 0 ? 1 : size;
    }
    return static_cast<size_t>(to - out);
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
