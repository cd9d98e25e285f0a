#include <cstring>

#include <QVFoundation/QVNumber.h>

#include "collections/QVNumberImpl.h"
#include "collections/number_bytes.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;

namespace {

template <class T>
T ValueOf(void* number) noexcept {
    return With<QVNumberImpl>(number, T{}, [](const QVNumberImpl& n) { return n.GetValue<T>(); });
}

}  // namespace

void* QVNumberCreateWithBool(QVBoolean value) noexcept {
    return CreateObject<QVNumberImpl>(value != 0);
}

void* QVNumberCreateWithSInt8(signed char value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithSInt16(short value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithSInt32(int value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithSInt64(long long value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithUInt8(unsigned char value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithUInt16(unsigned short value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithUInt32(unsigned int value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithUInt64(unsigned long long value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithFloat(float value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

void* QVNumberCreateWithDouble(double value) noexcept {
    return CreateObject<QVNumberImpl>(value);
}

int QVNumberGetNativeType(void* number) noexcept {
    return With<QVNumberImpl>(number, 0, [](const QVNumberImpl& n) { return n.GetNativeType(); });
}

QVBoolean QVNumberGetBoolValue(void* number) noexcept {
    return ValueOf<bool>(number);
}

signed char QVNumberGetSInt8Value(void* number) noexcept {
    return ValueOf<signed char>(number);
}

short QVNumberGetSInt16Value(void* number) noexcept {
    return ValueOf<short>(number);
}

int QVNumberGetSInt32Value(void* number) noexcept {
    return ValueOf<int>(number);
}

long long QVNumberGetSInt64Value(void* number) noexcept {
    return ValueOf<long long>(number);
}

unsigned char QVNumberGetUInt8Value(void* number) noexcept {
    return ValueOf<unsigned char>(number);
}

unsigned short QVNumberGetUInt16Value(void* number) noexcept {
    return ValueOf<unsigned short>(number);
}

unsigned int QVNumberGetUInt32Value(void* number) noexcept {
    return ValueOf<unsigned int>(number);
}

unsigned long long QVNumberGetUInt64Value(void* number) noexcept {
    return ValueOf<unsigned long long>(number);
}

float QVNumberGetFloatValue(void* number) noexcept {
    return ValueOf<float>(number);
}

double QVNumberGetDoubleValue(void* number) noexcept {
    return ValueOf<double>(number);
}

qv::NumberBytes qv::GetNumberBytes(void* number) noexcept {
    const auto& object = *FromHandle<QVNumberImpl>(number);
    return object.Visit([&](auto value) {
        NumberBytes bytes = {0, object.GetNativeType(), sizeof value};
        std::memcpy(&bytes.bits, &value, sizeof value);
        return bytes;
    });
}
