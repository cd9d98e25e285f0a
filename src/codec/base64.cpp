#include "codec/base64.h"

#include <array>
#include <cstring>

namespace qv {

namespace {

// Marks in the decoding table for characters that have no value. Both have the top bit set.
constexpr uint8_t kEnd = 0xFE;
constexpr uint8_t kInvalid = 0xFF;

constexpr std::array<uint8_t, 256> kValues = [] {
    std::array<uint8_t, 256> values{};
    values.fill(kInvalid);
    for (uint8_t i = 0; i < 64; ++i)
        values[static_cast<uint8_t>(kBase64Alphabet[i])] = i;
    values['='] = kEnd;
    return values;
}();

void EncodeGroup(const uint8_t* in, char* out) {
    out[0] = kBase64Alphabet[in[0] >> 2];
    out[1] = kBase64Alphabet[(in[0] << 4 | in[1] >> 4) & 63];
    out[2] = kBase64Alphabet[(in[1] << 2 | in[2] >> 6) & 63];
    out[3] = kBase64Alphabet[in[2] & 63];
}

// The last one or two bytes: missing bits are 0, missing characters "=".
void EncodeRest(const uint8_t* in, size_t size, char* out) {
    const uint8_t group[3] = {in[0], size == 2 ? in[1] : uint8_t{0}, 0};
    EncodeGroup(group, out);
    out[3] = '=';
    if (size == 1) out[2] = '=';
}

// False when one of the four characters has no value.
bool DecodeGroup(const char* text, uint8_t* out) {
    const uint8_t a = kValues[static_cast<uint8_t>(text[0])];
    const uint8_t b = kValues[static_cast<uint8_t>(text[1])];
    const uint8_t c = kValues[static_cast<uint8_t>(text[2])];
    const uint8_t d = kValues[static_cast<uint8_t>(text[3])];
    if (((a | b | c | d) & 0x80) != 0) return false;
    out[0] = static_cast<uint8_t>(a << 2 | b >> 4);
    out[1] = static_cast<uint8_t>(b << 4 | c >> 2);
    out[2] = static_cast<uint8_t>(c << 6 | d);
    return true;
}

size_t NoEncoding(const uint8_t*, size_t, char*) {
    return 0;
}

size_t NoDecoding(const char*, size_t, uint8_t*) {
    return 0;
}

// The vector functions' fixed cost is not worth paying below this size.
constexpr size_t kVectorsFrom = 32;

}  // namespace

const Base64Vectors kBase64Plain = {NoEncoding, NoDecoding};

const Base64Vectors& GetBase64Vectors() noexcept {
#if QV_X86
    if (HasAvx512Bytes()) return kBase64Avx512;
    if (HasAvx2()) return kBase64Avx2;
#endif
    return kBase64Plain;
}

void EncodeBase64(const uint8_t* in, size_t size, char* out) {
    EncodeBase64(in, size, out, size < kVectorsFrom ? kBase64Plain : GetBase64Vectors());
}

void EncodeBase64(const uint8_t* in, size_t size, char* out, const Base64Vectors& vectors) {
    size_t done = vectors.encode(in, size, out);
    out += done / 3 * 4;
    for (; size - done >= 3; done += 3, out += 4)
        EncodeGroup(in + done, out);
    if (size != done) EncodeRest(in + done, size - done, out);
}

std::optional<size_t> DecodeBase64(const char* text, size_t length, uint8_t* out) {
    return DecodeBase64(text, length, out, length < kVectorsFrom ? kBase64Plain : GetBase64Vectors());
}

std::optional<size_t> DecodeBase64(const char* text, size_t length, uint8_t* out,
                                   const Base64Vectors& vectors) {
    size_t done = vectors.decode(text, length, out);
    uint8_t* to = out + done / 4 * 3;
    while (length - done >= 4 && DecodeGroup(text + done, to)) {
        done += 4;
        to += 3;
    }
    // What is left is the last group, or one with an "=" or a wrong character in it.
    uint32_t bits = 0;
    size_t count = 0;
    for (; done < length; ++done, ++count) {
        const uint8_t value = kValues[static_cast<uint8_t>(text[done])];
        if (value == kEnd) break;
        if (value == kInvalid) return std::nullopt;
        bits |= uint32_t{value} << (18 - 6 * count);
    }
    if (count >= 2) *to++ = static_cast<uint8_t>(bits >> 16);
    if (count >= 3) *to++ = static_cast<uint8_t>(bits >> 8);
    return static_cast<size_t>(to - out);
}

}  // namespace qv
