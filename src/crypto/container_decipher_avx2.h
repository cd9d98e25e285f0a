// Deciphering beside the hash, for 64-bit x86.
#pragma once

#include "crypto/blowfish_rounds.h"
#include "crypto/md5_steps.h"

namespace qv::avx2 {

#if defined(__x86_64__)
inline constexpr bool kHasDecipherBesideHash = true;
#else
inline constexpr bool kHasDecipherBesideHash = false;
#endif

// Whether this processor runs the function below.
inline bool CanDecipherBesideHash() noexcept {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
#else
    return false;
#endif
}

// Deciphers `count` groups of 64 bytes in place, and meanwhile runs the MD5 compression over as many groups
// that are one further on: the second up to the one behind the last, whose cipher text is still there.
// Another group must follow that one: its first bytes are read, but do not count. Answers the chain.
[[nodiscard]] BlowfishHalves DecipherBesideHash(const BlowfishTables& key, BlowfishHalves chain,
                                                Md5Words& words, std::uint8_t* groups,
                                                std::size_t count) noexcept;

}  // namespace qv::avx2
