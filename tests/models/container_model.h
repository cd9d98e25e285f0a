// The encrypted container, written and read byte by byte. Writer and reader share nothing but the cipher and
// the hash.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "models/blowfish_model.h"
#include "models/md5_model.h"

namespace qvmodel {

using Bytes = std::vector<std::uint8_t>;

inline Bytes RepeatKey(const Bytes& key, std::size_t minimumLength) {
    Bytes repeated = key;
    while (repeated.size() < minimumLength)
        repeated.push_back(repeated[repeated.size() - key.size()]);
    return repeated;
}

// The writer: what a container of `plain` is, given its two feedback codes.
inline Bytes WriteContainer(const std::vector<std::uint32_t>& pi, const Bytes& plain, const Bytes& key,
                            std::uint64_t headerFeedback, std::uint64_t bodyFeedback) {
    const auto append = [](Bytes& to, const Bytes& from) { to.insert(to.end(), from.begin(), from.end()); };
    const auto number = [](std::uint64_t value, int size) {
        Bytes bytes;
        for (int i = 0; i < size; ++i)
            bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return bytes;
    };
    const auto encipher = [&](Bytes bytes, std::uint64_t feedback) {
        Blowfish cipher(pi, key);
        cipher.feedback = feedback;
        for (std::size_t i = 0; i < bytes.size(); i += 8)
            cipher.EncryptBlock(&bytes[i], &bytes[i]);
        return bytes;
    };

    Bytes body = plain;
    while (body.size() % 8 != 0)
        body.push_back(0);
    body = encipher(body, bodyFeedback);

    Bytes sizes = number(64, 8);
    append(sizes, number(plain.size(), 8));

    Bytes hashed = body;
    append(hashed, key);

    const std::string signature = "A079F01F8F7A42D2";
    Bytes container(signature.begin(), signature.end());
    append(container, number(headerFeedback, 8));
    append(container, encipher(sizes, headerFeedback));
    for (std::uint32_t word : HashMd5(hashed))
        append(container, number(word, 4));
    append(container, number(bodyFeedback, 8));
    append(container, body);
    return container;
}

struct ReadResult {
    int code;
    Bytes plain;
};

// The reader: the result code and, where it is 0, the plaintext. It follows every step of reading a header,
// also for headers that no writer writes.
inline ReadResult ReadContainer(const std::vector<std::uint32_t>& pi, const Bytes& container,
                                const Bytes& key) {
    const std::uint64_t size = container.size();
    const auto word = [&](std::size_t at, int count) {
        std::uint64_t value = 0;
        for (int i = count - 1; i >= 0; --i)
            value = value << 8 | container[at + static_cast<std::size_t>(i)];
        return value;
    };
    if (size < 64) return {-400, {}};
    for (std::size_t i = 0; i < 16; ++i) {
        if (container[i] != static_cast<std::uint8_t>("A079F01F8F7A42D2"[i])) return {-5, {}};
    }

    Blowfish headerCipher(pi, key);
    headerCipher.feedback = word(16, 8);
    const auto decipherWord = [&](std::size_t at) {
        std::uint8_t block[8];
        headerCipher.DecryptBlock(&container[at], block);
        std::uint64_t value = 0;
        for (int i = 7; i >= 0; --i)
            value = value << 8 | block[i];
        return value;
    };
    const std::uint64_t headerSize = decipherWord(24);
    if (headerSize > size) return {-400, {}};  // the one read that follows cannot save it: no body is left
    const std::uint64_t plainSize = headerSize > 32 ? decipherWord(32) : 0;
    std::uint32_t fingerprint[4] = {};
    std::uint64_t consumed = headerSize > 32 ? 40 : 32;
    std::size_t at = 40;
    for (std::uint32_t& part : fingerprint) {
        if (consumed >= headerSize) break;
        part = static_cast<std::uint32_t>(word(at, 4));
        at += 4, consumed += 4;
    }
    const std::uint64_t bodyFeedback = consumed < headerSize ? word(at, 8) : 0;

    const Bytes body(container.begin() + static_cast<std::ptrdiff_t>(headerSize), container.end());
    if (body.size() % 8 != 0) return {-400, {}};
    Bytes hashed = body;
    hashed.insert(hashed.end(), key.begin(), key.end());
    const Md5State digest = HashMd5(hashed);
    for (int i = 0; i < 4; ++i) {
        if (digest[i] != fingerprint[i]) return {-400, {}};
    }

    Blowfish bodyCipher(pi, key);
    bodyCipher.feedback = bodyFeedback;
    Bytes plain(body.size());
    for (std::size_t i = 0; i < body.size(); i += 8)
        bodyCipher.DecryptBlock(&body[i], &plain[i]);
    if (plainSize < plain.size()) plain.resize(static_cast<std::size_t>(plainSize));
    return {0, plain};
}

}  // namespace qvmodel
