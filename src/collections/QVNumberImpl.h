// One value of one native type, which never changes and converts to every other type on request.
#pragma once

#include <QVFoundation/QVNumber.h>

#include "collections/number_conversion.h"
#include "runtime/QVCBase.h"

class QVNumberImpl final : public QVCBase {
public:
    explicit QVNumberImpl(bool value) noexcept : nativeType_(QVNumberTypeBool), bool_(value) {}
    explicit QVNumberImpl(signed char value) noexcept : nativeType_(QVNumberTypeSInt8), sint8_(value) {}
    explicit QVNumberImpl(short value) noexcept : nativeType_(QVNumberTypeSInt16), sint16_(value) {}
    explicit QVNumberImpl(int value) noexcept : nativeType_(QVNumberTypeSInt32), sint32_(value) {}
    explicit QVNumberImpl(long long value) noexcept : nativeType_(QVNumberTypeSInt64), sint64_(value) {}
    explicit QVNumberImpl(unsigned char value) noexcept : nativeType_(QVNumberTypeUInt8), uint8_(value) {}
    explicit QVNumberImpl(unsigned short value) noexcept : nativeType_(QVNumberTypeUInt16), uint16_(value) {}
    explicit QVNumberImpl(unsigned int value) noexcept : nativeType_(QVNumberTypeUInt32), uint32_(value) {}
    explicit QVNumberImpl(unsigned long long value) noexcept
        : nativeType_(QVNumberTypeUInt64), uint64_(value) {}
    explicit QVNumberImpl(float value) noexcept : nativeType_(QVNumberTypeFloat), float_(value) {}
    explicit QVNumberImpl(double value) noexcept : nativeType_(QVNumberTypeDouble), double_(value) {}

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDNumber; }

    [[nodiscard]] int GetNativeType() const { return nativeType_; }

    // Gives the value, as it is, to the visitor.
    template <class Visitor>
    auto Visit(Visitor visit) const {
        switch (nativeType_) {
            case QVNumberTypeBool:
                return visit(bool_);
            case QVNumberTypeUInt8:
                return visit(uint8_);
            case QVNumberTypeUInt16:
                return visit(uint16_);
            case QVNumberTypeUInt32:
                return visit(uint32_);
            case QVNumberTypeUInt64:
                return visit(uint64_);
            case QVNumberTypeSInt8:
                return visit(sint8_);
            case QVNumberTypeSInt16:
                return visit(sint16_);
            case QVNumberTypeSInt32:
                return visit(sint32_);
            case QVNumberTypeSInt64:
                return visit(sint64_);
            case QVNumberTypeFloat:
                return visit(float_);
            default:
                return visit(double_);
        }
    }

    template <class T>
    [[nodiscard]] T GetValue() const {
        return Visit([](auto value) { return qv::ConvertNumber<T>(value); });
    }

private:
    // One field a type, side by side: only that of the native type is other than 0.
    std::int32_t nativeType_;
    bool bool_ = false;
    signed char sint8_ = 0;
    short sint16_ = 0;
    int sint32_ = 0;
    long long sint64_ = 0;
    unsigned char uint8_ = 0;
    unsigned short uint16_ = 0;
    unsigned int uint32_ = 0;
    unsigned long long uint64_ = 0;
    float float_ = 0;
    double double_ = 0;
};
