// How the vector versions tell what is wrong with UTF-8.
//
// Three nibbles decide about two neighbouring bytes: both of the first and the upper one of the second. Each
// nibble's table lists the faults that it is compatible with; a fault that all three list has happened. Two
// continuations in a row are no fault where a lead byte two or three places ahead asks for the second.
#pragma once

#include <array>
#include <cstdint>

namespace qv::utf8 {

enum Fault {
    kTooShort = 0x01,          // a lead byte without its continuation
    kTooLong = 0x02,           // ASCII with a continuation
    kOverlong3 = 0x04,         // E0 80..9F
    kTooLarge = 0x08,          // F4.. with 90..BF
    kSurrogate = 0x10,         // ED A0..BF
    kOverlong2 = 0x20,         // C0, C1
    kOverlong4 = 0x40,         // F0 80..8F
    kTooLarge5 = 0x40,         // F5.. with 80..8F
    kTwoContinuations = 0x80,  // a continuation after a continuation
};

using NibbleTable = std::array<uint8_t, 16>;

template <class Faults>
constexpr NibbleTable ByNibble(Faults faults) {
    NibbleTable table{};
    for (int nibble = 0; nibble < 16; ++nibble) {
        table[static_cast<size_t>(nibble)] = static_cast<uint8_t>(faults(nibble));
    }
    return table;
}

inline constexpr NibbleTable kFirstHigh = ByNibble([](int nibble) -> int {
    if (nibble < 0x8) return kTooLong;
    if (nibble < 0xC) return kTwoContinuations;
    if (nibble == 0xC) return kTooShort | kOverlong2;
    if (nibble == 0xD) return kTooShort;
    if (nibble == 0xE) return kTooShort | kOverlong3 | kSurrogate;
    return kTooShort | kTooLarge | kTooLarge5 | kOverlong4;
});

inline constexpr NibbleTable kFirstLow = ByNibble([](int nibble) -> int {
    const int any = kTooShort | kTooLong | kTwoContinuations;
    if (nibble == 0x0) return any | kOverlong2 | kOverlong3 | kOverlong4;
    if (nibble == 0x1) return any | kOverlong2;
    if (nibble < 0x4) return any;
    if (nibble == 0x4) return any | kTooLarge;
    if (nibble == 0xD) return any | kTooLarge | kTooLarge5 | kSurrogate;
    return any | kTooLarge | kTooLarge5;
});

inline constexpr NibbleTable kSecondHigh = ByNibble([](int nibble) -> int {
    const int anyContinuation = kTooLong | kTwoContinuations | kOverlong2;
    if (nibble == 0x8) return anyContinuation | kOverlong3 | kOverlong4 | kTooLarge5;
    if (nibble == 0x9) return anyContinuation | kOverlong3 | kTooLarge;
    if (nibble == 0xA || nibble == 0xB) return anyContinuation | kSurrogate | kTooLarge;
    return kTooShort;
});

}  // namespace qv::utf8
