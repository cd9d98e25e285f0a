// The way of a container's body back to plaintext.
#pragma once

#include "base/secure_wipe.h"
#include "crypto/blowfish_rounds.h"
#include "crypto/md5_digest.h"

namespace qv {

// Deciphers a container's body in place, piece after piece.
class ContainerDecipher {
public:
    // The tables are borrowed. The feedback code is the one the body was enciphered with.
    ContainerDecipher(const BlowfishTables& key, std::uint64_t feedbackCode) noexcept
        : key_(key), chain_(BlowfishFeedback(feedbackCode).Halves()) {}

    // Takes the next piece: a multiple of 8 bytes.
    void Decipher(std::uint8_t* piece, std::size_t size) noexcept;

private:
    BlowfishTables key_;
    BlowfishHalves chain_;
};

// The same with the fingerprint taken on the way, for plaintext that nobody sees before the fingerprint is
// known to be right.
class FingerprintingDecipher {
public:
    FingerprintingDecipher(const BlowfishTables& key, std::uint64_t feedbackCode) noexcept;

    // Takes the next piece: a multiple of 64 bytes, or of 8 bytes for the last one.
    void Decipher(std::uint8_t* piece, std::size_t size) noexcept;
    // The fingerprint: the hash of everything as it was enciphered, and then of the key.
    [[nodiscard]] Md5Words Finish(const void* key, std::size_t size) noexcept;

private:
    BlowfishTables key_;
    BlowfishHalves chain_;
    Wiped<Md5Block> block_;  // meets the key bytes
    Md5Digest digest_;
};

}  // namespace qv
