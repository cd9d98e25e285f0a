// An encoder of the binary object format that shares nothing with the library's: each value becomes bytes by
// hand.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace qvtest {

inline void AppendLittleEndian(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i));
}

inline void EncodeUInt16(std::string& out, std::uint16_t value) {
    out += '\x06';
    AppendLittleEndian(out, value, 2);
}

inline void EncodeSInt64(std::string& out, std::int64_t value) {
    out += '\x0B';
    AppendLittleEndian(out, static_cast<std::uint64_t>(value), 8);
}

inline void EncodeDouble(std::string& out, double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    out += '\x0D';
    AppendLittleEndian(out, bits, 8);
}

inline void EncodeString(std::string& out, const std::wstring& text) {
    out += '\x03';
    for (const wchar_t character : text) {
        const auto c = static_cast<std::uint32_t>(character);
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    out += '\0';
}

inline void EncodeData(std::string& out, const std::string& bytes) {
    out += '\x20';
    AppendLittleEndian(out, bytes.size(), 4);
    out += bytes;
}

inline void BeginArray(std::string& out) {
    out += '\x22';
}
inline void BeginDictionary(std::string& out) {
    out += '\x23';
}
inline void End(std::string& out) {
    out += '\0';
}

}  // namespace qvtest
