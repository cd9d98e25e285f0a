// Blowfish as published, step by step, with the library's order of bytes and its feedback code. The starting
// tables come from whoever uses the model.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace qvmodel {

class Blowfish {
public:
    // `pi` holds the fraction of pi as 32-bit words, at least 18 + 4 * 256 of them.
    Blowfish(const std::vector<std::uint32_t>& pi, const std::vector<std::uint8_t>& key) {
        for (int i = 0; i < 18; ++i)
            P[i] = pi[i];
        for (int box = 0; box < 4; ++box) {
            for (int i = 0; i < 256; ++i)
                S[box][i] = pi[18 + 256 * box + i];
        }
        std::size_t next = 0;
        for (std::uint32_t& word : P) {
            std::uint32_t keyWord = 0;
            for (int i = 0; i < 4; ++i)
                keyWord = keyWord << 8 | key[next++ % key.size()];
            word ^= keyWord;
        }
        std::uint32_t l = 0, r = 0;
        for (int i = 0; i < 18; i += 2) {
            Encipher(l, r);
            P[i] = l, P[i + 1] = r;
        }
        for (auto& box : S) {
            for (int i = 0; i < 256; i += 2) {
                Encipher(l, r);
                box[i] = l, box[i + 1] = r;
            }
        }
    }

    std::uint32_t F(std::uint32_t x) const {
        return ((S[0][x >> 24] + S[1][(x >> 16) & 0xFF]) ^ S[2][(x >> 8) & 0xFF]) + S[3][x & 0xFF];
    }

    void Encipher(std::uint32_t& l, std::uint32_t& r) const {
        for (int i = 0; i < 16; ++i) {
            l ^= P[i];
            r ^= F(l);
            std::swap(l, r);
        }
        std::swap(l, r);
        r ^= P[16];
        l ^= P[17];
    }

    void Decipher(std::uint32_t& l, std::uint32_t& r) const {
        for (int i = 17; i > 1; --i) {
            l ^= P[i];
            r ^= F(l);
            std::swap(l, r);
        }
        std::swap(l, r);
        r ^= P[1];
        l ^= P[0];
    }

    void EncryptBlock(const std::uint8_t* in, std::uint8_t* out) {
        std::uint32_t l = Read(in), r = Read(in + 4);
        if (chained) {
            l ^= static_cast<std::uint32_t>(feedback >> 32);
            r ^= static_cast<std::uint32_t>(feedback);
        }
        Encipher(l, r);
        if (chained) feedback = std::uint64_t{l} << 32 | r;
        Write(out, l), Write(out + 4, r);
    }

    void DecryptBlock(const std::uint8_t* in, std::uint8_t* out) {
        std::uint32_t l = Read(in), r = Read(in + 4);
        const std::uint64_t before = feedback;
        feedback = std::uint64_t{l} << 32 | r;
        Decipher(l, r);
        if (chained) {
            l ^= static_cast<std::uint32_t>(before >> 32);
            r ^= static_cast<std::uint32_t>(before);
        }
        Write(out, l), Write(out + 4, r);
    }

    bool chained = true;
    std::uint64_t feedback = 0;
    std::uint32_t P[18];
    std::uint32_t S[4][256];

private:
    static std::uint32_t Read(const std::uint8_t* bytes) {
        return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | std::uint32_t{bytes[3]} << 24;
    }
    static void Write(std::uint8_t* bytes, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
};

}  // namespace qvmodel
