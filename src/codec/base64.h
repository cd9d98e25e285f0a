// Base64 with the standard alphabet, without line breaks. Decoding is strict: any character outside the
// alphabet, white space too, spoils the whole text; the first "=" ends it, whatever follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/processor.h"

namespace qv {

// Where "A" to "Z", "a" to "z", "0" to "9", "+" and "/" stand for 0 to 63.
inline constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The exact size of the text for `size` bytes.
constexpr uint64_t Base64EncodedSize(uint64_t size) {
    return (size / 3 + (size % 3 != 0 ? 1 : 0)) * 4;
}

// The exact size of the bytes that `length` characters without "=" stand for: the room that decoding needs.
constexpr uint64_t Base64DecodedSize(uint64_t length) {
    return length / 4 * 3 + length % 4 * 6 / 8;
}

// Writes the text of in[0 .. size - 1] and its padding, Base64EncodedSize(size) characters.
void EncodeBase64(const uint8_t* in, size_t size, char* out);

// Decodes text[0 .. length - 1], or what stands before the first "=", into room for
// Base64DecodedSize(length) bytes, and answers how many they are. Bits that do not fill a byte are dropped.
// Nothing when a character is not of the alphabet; the room then holds unspecified bytes.
std::optional<size_t> DecodeBase64(const char* text, size_t length, uint8_t* out);

// The part of the work that goes in whole vectors. Both functions begin at the start, go as far as they can
// and return how much of their input is done: whole groups of 3 bytes or 4 characters. Decoding stops before
// a vector in which a character is not of the alphabet. They stay inside the room named above.
struct Base64Vectors {
    size_t (*encode)(const uint8_t* in, size_t size, char* out);
    size_t (*decode)(const char* text, size_t length, uint8_t* out);
};

// The functions above with given vectors, for tests of each processor's path.
void EncodeBase64(const uint8_t* in, size_t size, char* out, const Base64Vectors& vectors);
std::optional<size_t> DecodeBase64(const char* text, size_t length, uint8_t* out,
                                   const Base64Vectors& vectors);

// The best of the following for this processor.
const Base64Vectors& GetBase64Vectors() noexcept;

// No vectors at all.
extern const Base64Vectors kBase64Plain;
#if QV_X86
extern const Base64Vectors kBase64Avx2;    // needs AVX2
extern const Base64Vectors kBase64Avx512;  // needs AVX-512 BW and VBMI
#endif

}  // namespace qv
