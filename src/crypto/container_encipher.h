// The way of a container's body from plaintext to cipher and fingerprint.
#pragma once

#include "base/secure_wipe.h"
#include "crypto/blowfish_rounds.h"
#include "crypto/md5_digest.h"

namespace qv {

// Enciphers a container's body in place, piece after piece, and takes its fingerprint on the way.
class ContainerEncipher {
public:
    // The tables are borrowed. The feedback code starts the chain.
    ContainerEncipher(const BlowfishTables& key, std::uint64_t feedbackCode) noexcept;

    // Takes the next piece: a multiple of 64 bytes, or of 8 bytes for the last one.
    void Encipher(std::uint8_t* piece, std::size_t size) noexcept;
    // The fingerprint: the hash of everything enciphered and then of the key.
    [[nodiscard]] Md5Words Finish(const void* key, std::size_t size) noexcept;

private:
    BlowfishTables key_;
    BlowfishHalves chain_;
    Wiped<Md5Block> block_;  // meets the key bytes
    Md5Digest digest_;
};

}  // namespace qv
