// The tags of the binary object format. Every multi-byte number behind them lies in the host's order, which
// is little-endian on the machines the library serves.
#pragma once

#include <cstdint>

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

inline constexpr int kSecondsPerHour = 3600;
inline constexpr int kSecondsPerMinute = 60;

}  // namespace qv
