// The conversions between number types, written down as arithmetic on exact values: a long double holds every
// value of every type (its mantissa has 64 bits), and the remainder of a division by a power of two is exact.
#pragma once

#include <cfloat>
#include <cmath>
#include <limits>

namespace qvmodel {

static_assert(LDBL_MANT_DIG >= 64, "the model needs long doubles that hold 64-bit integers");

struct NumberType {
    bool isFloating;
    bool isSigned;
    int bits;
};

// By native type code.
inline constexpr NumberType kNumberTypes[] = {
    {false, false, 1},  {false, false, 8}, {false, false, 16}, {false, false, 32},
    {false, false, 64}, {false, true, 8},  {false, true, 16},  {false, true, 32},
    {false, true, 64},  {true, true, 32},  {true, true, 64},
};
inline constexpr int kNumberTypeCount = 11;
inline constexpr int kUInt32 = 3;
inline constexpr int kUInt64 = 4;
inline constexpr int kSInt64 = 8;
inline constexpr int kFloat = 9;

// The integer of this many bits that has the same low bits.
inline long double KeepLowBits(long double integer, int bits, bool isSigned) {
    const long double modulus = std::ldexp(1.0L, bits);
    long double low = std::fmod(integer, modulus);
    if (low < 0) low += modulus;
    return isSigned && low >= modulus / 2 ? low - modulus : low;
}

// Cut toward zero into a signed integer of this many bits; the smallest one where that is impossible.
inline long double TruncateSigned(long double value, int bits) {
    const long double limit = std::ldexp(1.0L, bits - 1);
    const long double whole = std::trunc(value);
    return whole >= -limit && whole < limit ? whole : -limit;
}

inline long double TruncateUnsigned64(long double value) {
    if (!(value >= 0)) return 0;
    return value >= std::ldexp(1.0L, 64) ? std::ldexp(1.0L, 64) - 1 : std::trunc(value);
}

inline long double ToInteger(long double value, bool fromFloating, int target) {
    const NumberType type = kNumberTypes[target];
    if (!fromFloating) return KeepLowBits(value, type.bits, type.isSigned);
    if (target == kUInt64) return TruncateUnsigned64(value);
    const bool isWide = target == kUInt32 || target == kSInt64;
    return KeepLowBits(TruncateSigned(value, isWide ? 64 : 32), type.bits, type.isSigned);
}

// The value of the source type `from` as the type `to`.
inline long double ConvertNumber(long double value, int from, int to) {
    if (to == 0) return value != 0 ? 1 : 0;
    if (to == kFloat) return static_cast<float>(value);
    if (kNumberTypes[to].isFloating) return static_cast<double>(value);
    return ToInteger(value, kNumberTypes[from].isFloating, to);
}

}  // namespace qvmodel
