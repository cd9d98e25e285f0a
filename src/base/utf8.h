// UTF-8 to wide characters (one code point each) and back. Everything here is strict: no overlong forms, no
// surrogates, nothing above U+10FFFF. A conversion succeeds as a whole or says that it did not; what it wrote
// until then is unspecified, but lies inside the room that it was given. Nothing needs to be initialised by
// the caller.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qv {

static_assert(sizeof(wchar_t) == 4, "a wide character holds one code point");

// The most characters that `size` bytes can hold.
constexpr size_t Utf8ToWideMax(size_t size) noexcept {
    return size;
}

// The most bytes that EncodeUtf8 and EncodeUtf8Lossy write for `count` characters.
constexpr size_t Utf8SizeMax(size_t count) noexcept {
    return 4 * count;
}

// The bytes that begin a character (all but 80..BF): for valid text the exact number of its characters, for
// any other bytes enough room for DecodeUtf8 to fail in.
size_t CountUtf8Characters(const char* bytes, size_t size) noexcept;

// Decodes `size` bytes into `out`, which has room for `room` characters: CountUtf8Characters is the exact
// room, Utf8ToWideMax a safe one, and a few characters more than the exact room make the end faster. The
// characters written, or nothing when the bytes are not valid or hold more characters than there is room.
std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept;

// The same into the safe room.
inline std::optional<size_t> DecodeUtf8(const char* bytes, size_t size, wchar_t* out) noexcept {
    return DecodeUtf8(bytes, size, out, Utf8ToWideMax(size));
}

// The bytes of `count` characters, exactly; a value that is no code point counts as four.
size_t Utf8Size(const wchar_t* text, size_t count) noexcept;

// Encodes `count` characters into `out`, which has room for Utf8SizeMax(count) bytes. The bytes written, or
// nothing when a character is a surrogate or above U+10FFFF.
std::optional<size_t> EncodeUtf8(const wchar_t* text, size_t count, char* out) noexcept;

// The same, but each character that UTF-8 cannot hold becomes one "?".
size_t EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out) noexcept;

// How far a conversion has come: what it has taken and what it has made of it.
struct Utf8Progress {
    size_t read = 0;
    size_t written = 0;
};

// Lossy encoding into `room` bytes: goes on from `done` until all is read or the next character does not fit.
Utf8Progress EncodeUtf8Lossy(const wchar_t* text, size_t count, char* out, size_t room,
                             Utf8Progress done) noexcept;

// For short texts such as paths and names: the UTF-8 form of `text`, or nothing when it has none.
std::optional<std::string> ToUtf8(std::wstring_view text);

// The wide form of UTF-8 `bytes`, or nothing when they are not valid.
std::optional<std::wstring> FromUtf8(std::string_view bytes);

}  // namespace qv
