// The way of a container's body back to plaintext.
#pragma once

#include "crypto/blowfish_rounds.h"

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

}  // namespace qv
