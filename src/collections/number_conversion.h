// Converting a value of any native number type to any other. Nothing is clamped and nothing fails; every
// result is the same on every machine and compiler.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

namespace qv {

// Toward zero. What does not fit, and NaN, gives the smallest value.
[[nodiscard]] constexpr std::int32_t TruncateToInt32(double value) noexcept {
    const bool fits = value > -0x1p31 - 1 && value < 0x1p31;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

[[nodiscard]] constexpr std::int64_t TruncateToInt64(double value) noexcept {
    const bool fits = value >= -0x1p63 && value < 0x1p63;
    return fits ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::min();
}

// Toward zero. Negative values and NaN give 0, values from 2^64 the largest value.
[[nodiscard]] constexpr std::uint64_t TruncateToUInt64(double value) noexcept {
    if (!(value > 0)) return 0;
    return value < 0x1p64 ? static_cast<std::uint64_t>(value) : std::numeric_limits<std::uint64_t>::max();
}

// The narrow integers come out of a signed 32-bit one, the unsigned 32-bit integer out of a signed 64-bit
// one; the low bits are kept.
template <class To>
[[nodiscard]] constexpr To TruncateTo(double value) noexcept {
    if constexpr (sizeof(To) == 8) {
        if constexpr (std::is_signed_v<To>) return TruncateToInt64(value);
        return static_cast<To>(TruncateToUInt64(value));
    } else if constexpr (sizeof(To) == 4 && std::is_unsigned_v<To>) {
        return static_cast<To>(TruncateToInt64(value));
    } else {
        return static_cast<To>(TruncateToInt32(value));
    }
}

// 32-bit x86 converts large integers in registers that are wider than the result; only storing it rounds it.
template <class To, class From>
[[nodiscard]] inline To RoundTo(From value) noexcept {
    const volatile To stored = static_cast<To>(value);
    return stored;
}

template <class To, class From>
[[nodiscard]] To ConvertNumber(From value) noexcept {
    if constexpr (std::is_same_v<To, bool>) {
        return value != From{};  // NaN is not 0
    } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return TruncateTo<To>(value);
    } else if constexpr (std::is_integral_v<From> && sizeof(From) >= 4 && std::is_floating_point_v<To>) {
        return RoundTo<To>(value);
    } else {
        return static_cast<To>(value);
    }
}

}  // namespace qv
