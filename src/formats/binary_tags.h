// The tags of the binary object format. Every multi-byte number behind them lies in the host's order, which
// is little-endian on the machines the library serves.
#pragma once

#include <cstdint>

#include <QVFoundation/QVNumber.h>

namespace qv {

enum class BinaryTag : std::uint8_t {
    kEnd = 0,
    kTrue = 1,
    kFalse = 2,
    kString = 3,
    kUInt8 = 4,
    kSInt8 = 5,
    kUInt16 = 6,
    kSInt16 = 7,
    kUInt32 = 8,
    kSInt32 = 9,
    kUInt64 = 10,
    kSInt64 = 11,
    kFloat = 12,
    kDouble = 13,
    kData = 32,
    kArray = 34,
    kDictionary = 35,
    kDate = 36,
};

// The tag of a number that is no boolean, by its native type (QVNumberTypeUInt8 and so on).
[[nodiscard]] constexpr BinaryTag TagOfNumber(int nativeType) {
    constexpr BinaryTag kTags[] = {
        BinaryTag::kUInt8,  BinaryTag::kUInt16, BinaryTag::kUInt32, BinaryTag::kUInt64, BinaryTag::kSInt8,
        BinaryTag::kSInt16, BinaryTag::kSInt32, BinaryTag::kSInt64, BinaryTag::kFloat,  BinaryTag::kDouble};
    return kTags[nativeType - QVNumberTypeUInt8];
}

inline constexpr int kSecondsPerHour = 3600;
inline constexpr int kSecondsPerMinute = 60;

}  // namespace qv
