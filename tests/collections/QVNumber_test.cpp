#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include <QVFoundation/QVNumber.h>

#include "collections/number_bytes.h"
#include "models/number_model.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Number, RemembersItsTypeWhateverItIsAskedFor) {
    const Owned numbers[] = {
        Owned{QVNumberCreateWithBool(1)},   Owned{QVNumberCreateWithUInt8(1)},
        Owned{QVNumberCreateWithUInt16(1)}, Owned{QVNumberCreateWithUInt32(1)},
        Owned{QVNumberCreateWithUInt64(1)}, Owned{QVNumberCreateWithSInt8(1)},
        Owned{QVNumberCreateWithSInt16(1)}, Owned{QVNumberCreateWithSInt32(1)},
        Owned{QVNumberCreateWithSInt64(1)}, Owned{QVNumberCreateWithFloat(1)},
        Owned{QVNumberCreateWithDouble(1)},
    };
    int type = 0;
    for (const Owned& number : numbers) {
        EXPECT_EQ(QVGetTypeID(number.Get()), 1);
        EXPECT_EQ(QVGetRetainCount(number.Get()), 1UL);
        EXPECT_EQ(QVNumberGetDoubleValue(number.Get()), 1.0);
        EXPECT_EQ(QVNumberGetSInt8Value(number.Get()), 1);
        EXPECT_EQ(QVNumberGetNativeType(number.Get()), type++);
        EXPECT_EQ(QVGetNSObject(number.Get()), nullptr);
        EXPECT_EQ(QVCreateCFObject(number.Get()), nullptr);
    }
    EXPECT_EQ(type, 11);
}

TEST(Number, AnyNonZeroBooleanIsOne) {
    for (int value = 0; value < 256; ++value) {
        const Owned number{QVNumberCreateWithBool(static_cast<QVBoolean>(value))};
        EXPECT_EQ(QVNumberGetBoolValue(number.Get()), value != 0);
        EXPECT_EQ(QVNumberGetSInt32Value(number.Get()), value != 0);
        EXPECT_EQ(QVNumberGetDoubleValue(number.Get()), value != 0);
    }
}

TEST(Number, IntegersKeepTheirLowBitsAndExtendBySign) {
    const Owned threeHundred{QVNumberCreateWithSInt32(300)};
    EXPECT_EQ(QVNumberGetUInt8Value(threeHundred.Get()), 44);
    const Owned minusOne{QVNumberCreateWithSInt8(-1)};
    EXPECT_EQ(QVNumberGetUInt16Value(minusOne.Get()), 65535);
    EXPECT_EQ(QVNumberGetUInt32Value(minusOne.Get()), 4294967295U);
    EXPECT_EQ(QVNumberGetUInt64Value(minusOne.Get()), 18446744073709551615ULL);
    const Owned byte{QVNumberCreateWithUInt8(255)};
    EXPECT_EQ(QVNumberGetSInt32Value(byte.Get()), 255);
    EXPECT_EQ(QVNumberGetSInt8Value(byte.Get()), -1);
    const Owned huge{QVNumberCreateWithUInt64(0x8000000000000000ULL)};
    EXPECT_EQ(QVNumberGetDoubleValue(huge.Get()), 9223372036854775808.0);
    EXPECT_EQ(QVNumberGetFloatValue(huge.Get()), 9223372036854775808.0F);
}

TEST(Number, FloatingValuesAreCutTowardZero) {
    const Owned positive{QVNumberCreateWithFloat(3.99F)};
    EXPECT_EQ(QVNumberGetSInt8Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetSInt16Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetSInt32Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetSInt64Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetUInt8Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetUInt16Value(positive.Get()), 3);
    EXPECT_EQ(QVNumberGetUInt32Value(positive.Get()), 3U);
    EXPECT_EQ(QVNumberGetUInt64Value(positive.Get()), 3ULL);
    const Owned negative{QVNumberCreateWithFloat(-3.99F)};
    EXPECT_EQ(QVNumberGetSInt32Value(negative.Get()), -3);
    EXPECT_EQ(QVNumberGetUInt8Value(negative.Get()), 253);
    EXPECT_EQ(QVNumberGetUInt64Value(negative.Get()), 0ULL);
    const Owned fraction{QVNumberCreateWithDouble(300.7)};
    EXPECT_EQ(QVNumberGetUInt8Value(fraction.Get()), 44);
    const Owned half{QVNumberCreateWithDouble(-1.5)};
    EXPECT_EQ(QVNumberGetUInt8Value(half.Get()), 255);
    const Owned minusOne{QVNumberCreateWithDouble(-1.0)};
    EXPECT_EQ(QVNumberGetUInt32Value(minusOne.Get()), 4294967295U);
    EXPECT_EQ(QVNumberGetUInt64Value(minusOne.Get()), 0ULL);
}

TEST(Number, FloatingValuesOutOfRangeHaveKnownResults) {
    const Owned large{QVNumberCreateWithDouble(1e10)};
    EXPECT_EQ(QVNumberGetUInt32Value(large.Get()), 1410065408U);
    EXPECT_EQ(QVNumberGetSInt32Value(large.Get()), std::numeric_limits<int>::min());
    EXPECT_EQ(QVNumberGetSInt16Value(large.Get()), 0);
    EXPECT_EQ(QVNumberGetSInt64Value(large.Get()), 10000000000LL);
    for (const double value : {kInfinity, 1e300, 0x1p64}) {
        const Owned number{QVNumberCreateWithDouble(value)};
        EXPECT_EQ(QVNumberGetUInt64Value(number.Get()), 18446744073709551615ULL);
        EXPECT_EQ(QVNumberGetSInt64Value(number.Get()), std::numeric_limits<long long>::min());
        EXPECT_EQ(QVNumberGetUInt32Value(number.Get()), 0U);
        EXPECT_EQ(QVNumberGetUInt8Value(number.Get()), 0);
    }
    const Owned belowUnsigned{QVNumberCreateWithDouble(0x1p64 - 2048)};
    EXPECT_EQ(QVNumberGetUInt64Value(belowUnsigned.Get()), 18446744073709549568ULL);
}

TEST(Number, NotANumberIsTrueAndTheSmallestInteger) {
    for (const Owned& number :
         {Owned{QVNumberCreateWithFloat(static_cast<float>(kNaN))}, Owned{QVNumberCreateWithDouble(kNaN)}}) {
        EXPECT_EQ(QVNumberGetBoolValue(number.Get()), 1);
        EXPECT_EQ(QVNumberGetSInt32Value(number.Get()), std::numeric_limits<int>::min());
        EXPECT_EQ(QVNumberGetSInt64Value(number.Get()), std::numeric_limits<long long>::min());
        EXPECT_EQ(QVNumberGetUInt32Value(number.Get()), 0U);
        EXPECT_EQ(QVNumberGetUInt64Value(number.Get()), 0ULL);
        EXPECT_EQ(QVNumberGetUInt8Value(number.Get()), 0);
        EXPECT_TRUE(std::isnan(QVNumberGetFloatValue(number.Get())));
        EXPECT_TRUE(std::isnan(QVNumberGetDoubleValue(number.Get())));
    }
}

TEST(Number, DoublesBecomeTheNearestFloat) {
    const Owned third{QVNumberCreateWithDouble(1.0 / 3.0)};
    EXPECT_EQ(QVNumberGetFloatValue(third.Get()), 1.0F / 3.0F);
    const Owned huge{QVNumberCreateWithDouble(-1e300)};
    EXPECT_EQ(QVNumberGetFloatValue(huge.Get()), -std::numeric_limits<float>::infinity());
    const Owned negativeZero{QVNumberCreateWithDouble(-0.0)};
    EXPECT_TRUE(std::signbit(QVNumberGetFloatValue(negativeZero.Get())));
    EXPECT_EQ(QVNumberGetBoolValue(negativeZero.Get()), 0);
}

// ---- Every pair of types, against exact arithmetic ----

// A number of the type nearest to the value, and the exact value that it holds.
struct Sample {
    Owned number;
    long double value;
};

template <class T>
T FromBits(std::uint64_t bits) {
    return static_cast<T>(bits);
}

Sample SampleFromInteger(int type, std::uint64_t bits) {
    switch (type) {
        case 0:
            return {Owned{QVNumberCreateWithBool(bits & 1)}, static_cast<long double>(bits & 1)};
        case 1: {
            const auto v = FromBits<unsigned char>(bits);
            return {Owned{QVNumberCreateWithUInt8(v)}, static_cast<long double>(v)};
        }
        case 2: {
            const auto v = FromBits<unsigned short>(bits);
            return {Owned{QVNumberCreateWithUInt16(v)}, static_cast<long double>(v)};
        }
        case 3: {
            const auto v = FromBits<unsigned int>(bits);
            return {Owned{QVNumberCreateWithUInt32(v)}, static_cast<long double>(v)};
        }
        case 4:
            return {Owned{QVNumberCreateWithUInt64(bits)}, static_cast<long double>(bits)};
        case 5: {
            const auto v = FromBits<signed char>(bits);
            return {Owned{QVNumberCreateWithSInt8(v)}, static_cast<long double>(v)};
        }
        case 6: {
            const auto v = FromBits<short>(bits);
            return {Owned{QVNumberCreateWithSInt16(v)}, static_cast<long double>(v)};
        }
        case 7: {
            const auto v = FromBits<int>(bits);
            return {Owned{QVNumberCreateWithSInt32(v)}, static_cast<long double>(v)};
        }
        default: {
            const auto v = FromBits<long long>(bits);
            return {Owned{QVNumberCreateWithSInt64(v)}, static_cast<long double>(v)};
        }
    }
}

Sample SampleFromFloating(int type, double value) {
    if (type == qvmodel::kFloat) {
        const auto single = static_cast<float>(value);
        return {Owned{QVNumberCreateWithFloat(single)}, static_cast<long double>(single)};
    }
    return {Owned{QVNumberCreateWithDouble(value)}, static_cast<long double>(value)};
}

long double Get(void* number, int type) {
    switch (type) {
        case 0:
            return QVNumberGetBoolValue(number);
        case 1:
            return QVNumberGetUInt8Value(number);
        case 2:
            return QVNumberGetUInt16Value(number);
        case 3:
            return QVNumberGetUInt32Value(number);
        case 4:
            return static_cast<long double>(QVNumberGetUInt64Value(number));
        case 5:
            return QVNumberGetSInt8Value(number);
        case 6:
            return QVNumberGetSInt16Value(number);
        case 7:
            return QVNumberGetSInt32Value(number);
        case 8:
            return static_cast<long double>(QVNumberGetSInt64Value(number));
        case 9:
            return static_cast<long double>(QVNumberGetFloatValue(number));
        default:
            return static_cast<long double>(QVNumberGetDoubleValue(number));
    }
}

void ExpectEveryConversion(const Sample& sample, int from) {
    for (int to = 0; to < qvmodel::kNumberTypeCount; ++to) {
        const long double expected = qvmodel::ConvertNumber(sample.value, from, to);
        const long double got = Get(sample.number.Get(), to);
        const bool same = std::isnan(expected) ? std::isnan(got) : got == expected;
        ASSERT_TRUE(same) << "from type " << from << " to type " << to << ": " << sample.value << " gave "
                          << got << " instead of " << expected;
    }
}

std::vector<std::uint64_t> IntegerSamples() {
    std::vector<std::uint64_t> samples;
    for (std::uint64_t i = 0; i < 600; ++i) {
        samples.push_back(i);
        samples.push_back(0 - i);
    }
    for (int bit = 0; bit < 64; ++bit) {
        const std::uint64_t power = std::uint64_t{1} << bit;
        for (std::uint64_t i = 0; i < 3; ++i) {
            for (const std::uint64_t sample :
                 {power + i, power - i, 0 - power + i, 0 - power - i, power | power >> 25}) {
                samples.push_back(sample);
            }
        }
    }
    std::mt19937_64 random(3101);
    for (int i = 0; i < 3000; ++i)
        samples.push_back(random() >> (random() % 64));
    return samples;
}

TEST(NumberConversion, OfEveryIntegerTypeToEveryType) {
    for (const std::uint64_t bits : IntegerSamples()) {
        for (int from = 0; from < qvmodel::kFloat; ++from) {
            ASSERT_NO_FATAL_FAILURE(ExpectEveryConversion(SampleFromInteger(from, bits), from));
        }
    }
}

std::vector<double> FloatingSamples() {
    std::vector<double> samples = {0.0,   -0.0,         kInfinity,    -kInfinity, kNaN, 5e-324,
                                   1e-40, 3.4028235e38, 3.4028236e38, 1e39,       1e300};
    for (int exponent = -3; exponent < 70; ++exponent) {
        const double power = std::ldexp(1.0, exponent);
        for (const double sample : {power, power - 1, power + 1, power - 0.5, power + 0.5, power * 1.3,
                                    std::nextafter(power, 0.0), std::nextafter(power, kInfinity),
                                    static_cast<double>(std::nextafter(static_cast<float>(power), 0.0F))}) {
            samples.push_back(sample);
            samples.push_back(-sample);
        }
    }
    std::mt19937_64 random(3102);
    for (int i = 0; i < 5000; ++i) {
        const std::uint64_t bits = random();
        double sample;
        std::memcpy(&sample, &bits, sizeof sample);
        samples.push_back(sample);
        samples.push_back(static_cast<double>(static_cast<std::int64_t>(random())) / 1024.0);
    }
    return samples;
}

TEST(NumberConversion, OfEveryFloatingTypeToEveryType) {
    for (const double value : FloatingSamples()) {
        for (const int from : {9, 10}) {
            ASSERT_NO_FATAL_FAILURE(ExpectEveryConversion(SampleFromFloating(from, value), from));
        }
    }
}

// ---- Null and memory ----

TEST(Number, NullIsZero) {
    EXPECT_EQ(QVNumberGetNativeType(nullptr), 0);
    for (int type = 0; type < qvmodel::kNumberTypeCount; ++type)
        EXPECT_EQ(Get(nullptr, type), 0);
}

TEST(Number, WithoutMemoryIsNullAndSilent) {
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        for (int type = 0; type < qvmodel::kNumberTypeCount; ++type) {
            const Sample sample =
                type < qvmodel::kFloat ? SampleFromInteger(type, 1) : SampleFromFloating(type, 1);
            EXPECT_FALSE(sample.number);
        }
    }
    EXPECT_TRUE(log.Messages().empty());
}

template <class T>
void ExpectBytes(void* created, int nativeType, T value) {
    const Owned number{created};
    const qv::NumberBytes bytes = qv::GetNumberBytes(number.Get());
    EXPECT_EQ(bytes.nativeType, nativeType);
    EXPECT_EQ(bytes.size, sizeof value);
    std::uint64_t expected = 0;
    std::memcpy(&expected, &value, sizeof value);
    EXPECT_EQ(bytes.bits, expected);
}

TEST(Number, ItsBytesAreThoseOfItsNativeType) {
    ExpectBytes<bool>(QVNumberCreateWithBool(1), QVNumberTypeBool, true);
    ExpectBytes<unsigned char>(QVNumberCreateWithUInt8(0xFE), QVNumberTypeUInt8, 0xFE);
    ExpectBytes<unsigned short>(QVNumberCreateWithUInt16(0xFEDC), QVNumberTypeUInt16, 0xFEDC);
    ExpectBytes<unsigned int>(QVNumberCreateWithUInt32(0xFEDCBA98), QVNumberTypeUInt32, 0xFEDCBA98);
    ExpectBytes<unsigned long long>(QVNumberCreateWithUInt64(1ULL << 63), QVNumberTypeUInt64, 1ULL << 63);
    ExpectBytes<signed char>(QVNumberCreateWithSInt8(-2), QVNumberTypeSInt8, -2);
    ExpectBytes<short>(QVNumberCreateWithSInt16(-2), QVNumberTypeSInt16, -2);
    ExpectBytes<int>(QVNumberCreateWithSInt32(-2), QVNumberTypeSInt32, -2);
    ExpectBytes<long long>(QVNumberCreateWithSInt64(-2), QVNumberTypeSInt64, -2);
    ExpectBytes<float>(QVNumberCreateWithFloat(-1.5F), QVNumberTypeFloat, -1.5F);
    ExpectBytes<double>(QVNumberCreateWithDouble(-1.5), QVNumberTypeDouble, -1.5);
}

}  // namespace
