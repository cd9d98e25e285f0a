/*
 * Numbers: immutable boxes around one value (type ID 1). A number remembers the native type it was made from
 * and gives its value in any type.
 *
 *     void* number = QVNumberCreateWithSInt8(-1);
 *     QVNumberGetNativeType(number);    // QVNumberTypeSInt8
 *     QVNumberGetUInt32Value(number);   // 4294967295
 *     QVRelease(number);
 *
 * Conversions never fail and never clamp:
 * - integers keep their low bits; signed ones are extended by their sign, unsigned ones by zeros;
 * - integers become the nearest floating-point value, doubles the nearest float;
 * - floating-point values are cut toward zero, by way of a wider integer whose low bits are kept: SInt8,
 * SInt16, SInt32, UInt8 and UInt16 by way of a signed 32-bit integer (-2147483648 for what does not fit it,
 * and for NaN); UInt32 and SInt64 by way of a signed 64-bit integer (-9223372036854775808 likewise); only
 * UInt64 has a range of its own: negative values and NaN give 0, values from 2^64 give 18446744073709551615;
 * - everything but 0 is true, NaN too.
 *
 * The creating functions answer null when memory runs out and log nothing. The result is owned by the caller.
 */
#ifndef QVFOUNDATION_QVNUMBER_H
#define QVFOUNDATION_QVNUMBER_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** Native types, as QVNumberGetNativeType gives them. */
typedef enum QVNumberType {
    QVNumberTypeBool = 0,
    QVNumberTypeUInt8 = 1,
    QVNumberTypeUInt16 = 2,
    QVNumberTypeUInt32 = 3,
    QVNumberTypeUInt64 = 4,
    QVNumberTypeSInt8 = 5,
    QVNumberTypeSInt16 = 6,
    QVNumberTypeSInt32 = 7,
    QVNumberTypeSInt64 = 8,
    QVNumberTypeFloat = 9,
    QVNumberTypeDouble = 10
} QVNumberType;

/** A number of type Bool; any non-zero value is true. */
QV_EXPORT void* QVNumberCreateWithBool(QVBoolean value) QV_NOTHROW;

/** A number of type SInt8. */
QV_EXPORT void* QVNumberCreateWithSInt8(signed char value) QV_NOTHROW;

/** A number of type SInt16. */
QV_EXPORT void* QVNumberCreateWithSInt16(short value) QV_NOTHROW;

/** A number of type SInt32. */
QV_EXPORT void* QVNumberCreateWithSInt32(int value) QV_NOTHROW;

/** A number of type SInt64. */
QV_EXPORT void* QVNumberCreateWithSInt64(long long value) QV_NOTHROW;

/** A number of type UInt8. */
QV_EXPORT void* QVNumberCreateWithUInt8(unsigned char value) QV_NOTHROW;

/** A number of type UInt16. */
QV_EXPORT void* QVNumberCreateWithUInt16(unsigned short value) QV_NOTHROW;

/** A number of type UInt32. */
QV_EXPORT void* QVNumberCreateWithUInt32(unsigned int value) QV_NOTHROW;

/** A number of type UInt64. */
QV_EXPORT void* QVNumberCreateWithUInt64(unsigned long long value) QV_NOTHROW;

/** A number of type Float. */
QV_EXPORT void* QVNumberCreateWithFloat(float value) QV_NOTHROW;

/** A number of type Double. */
QV_EXPORT void* QVNumberCreateWithDouble(double value) QV_NOTHROW;

/** The type that the number was made from (QVNumberType...), whatever it has been asked for. */
QV_EXPORT int QVNumberGetNativeType(void* number) QV_NOTHROW;

/** Whether the value is other than 0. */
QV_EXPORT QVBoolean QVNumberGetBoolValue(void* number) QV_NOTHROW;

/** The value as a signed 8-bit integer. */
QV_EXPORT signed char QVNumberGetSInt8Value(void* number) QV_NOTHROW;

/** The value as a signed 16-bit integer. */
QV_EXPORT short QVNumberGetSInt16Value(void* number) QV_NOTHROW;

/** The value as a signed 32-bit integer. */
QV_EXPORT int QVNumberGetSInt32Value(void* number) QV_NOTHROW;

/** The value as a signed 64-bit integer. */
QV_EXPORT long long QVNumberGetSInt64Value(void* number) QV_NOTHROW;

/** The value as an unsigned 8-bit integer. */
QV_EXPORT unsigned char QVNumberGetUInt8Value(void* number) QV_NOTHROW;

/** The value as an unsigned 16-bit integer. */
QV_EXPORT unsigned short QVNumberGetUInt16Value(void* number) QV_NOTHROW;

/** The value as an unsigned 32-bit integer. */
QV_EXPORT unsigned int QVNumberGetUInt32Value(void* number) QV_NOTHROW;

/** The value as an unsigned 64-bit integer. */
QV_EXPORT unsigned long long QVNumberGetUInt64Value(void* number) QV_NOTHROW;

/** The value as an IEEE 754 single. */
QV_EXPORT float QVNumberGetFloatValue(void* number) QV_NOTHROW;

/** The value as an IEEE 754 double. */
QV_EXPORT double QVNumberGetDoubleValue(void* number) QV_NOTHROW;

QV_END_DECLS

#endif
