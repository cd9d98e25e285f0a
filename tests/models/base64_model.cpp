#include "models/base64_model.h"

namespace qv::model {

namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of up to `count` bits from `at`; missing bits are 0.
unsigned TakeBits(const std::vector<bool>& bits, size_t at, size_t count) {
    unsigned value = 0;
    for (size_t i = at; i < at + count; ++i)
        value = value * 2 + (i < bits.size() && bits[i] ? 1 : 0);
    return value;
}

void AppendBits(std::vector<bool>& bits, unsigned value, int count) {
    for (int i = count - 1; i >= 0; --i)
        bits.push_back((value >> i) % 2 == 1);
}

}  // namespace

std::string EncodeBase64(const std::vector<uint8_t>& bytes) {
    std::vector<bool> bits;
    for (const uint8_t byte : bytes)
        AppendBits(bits, byte, 8);
    std::string text;
    for (size_t at = 0; at < bits.size(); at += 6)
        text += kAlphabet[TakeBits(bits, at, 6)];
    while (text.size() % 4 != 0)
        text += '=';
    return text;
}

std::optional<std::vector<uint8_t>> DecodeBase64(const std::string& text) {
    std::vector<bool> bits;
    for (const char c : text) {
        if (c == '=') break;
        const size_t value = kAlphabet.find(c);
        if (value == std::string::npos) return std::nullopt;
        AppendBits(bits, static_cast<unsigned>(value), 6);
    }
    std::vector<uint8_t> bytes;
    for (size_t at = 0; at + 8 <= bits.size(); at += 8)
        bytes.push_back(static_cast<uint8_t>(TakeBits(bits, at, 8)));
    return bytes;
}

}  // namespace qv::model
