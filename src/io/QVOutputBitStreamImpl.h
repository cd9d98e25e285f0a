// Writing Data bit by bit.
#pragma once

#include <cstdint>

#include <QVFoundation/QVObject.h>

#include "io/bit_position.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVOutputBitStreamImpl final : public QVCBase {
public:
    QVOutputBitStreamImpl(void* data, std::uint64_t numberOfBits) noexcept;
    // Flushes, which writes the byte at the marker even when it holds no bit yet.
    ~QVOutputBitStreamImpl() override { Flush(); }

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDOutputBitStream; }

    void SetOutputData(void* data, std::uint64_t numberOfBits) noexcept;
    [[nodiscard]] void* GetOutputData() const noexcept { return data_.Get(); }
    void PutBits(const std::uint8_t* buffer, unsigned long bits) noexcept;
    void PutOneBit(bool bit) noexcept { PutTopBits(std::uint64_t{bit} << 63, 1); }
    // Writes `bits` bits, at most `width`, of a value of `width` (8, 16 or 32) bits.
    void PutValue(std::uint32_t value, unsigned width, unsigned long bits) noexcept;
    [[nodiscard]] std::uint64_t GetNumberOfBits() const noexcept { return numberOfBits_; }
    void SetNumberOfBits(std::uint64_t numberOfBits) noexcept { numberOfBits_ = numberOfBits; }
    bool Flush() noexcept { return WriteBytes(&currentByte_, 1); }
    [[nodiscard]] std::uint64_t GetMarker() const noexcept {
        return qv::BitPosition{byteIndex_, bitIndex_}.Marker();
    }
    std::uint64_t SetMarker(int origin, long long offset) noexcept;
    void SetBitStoreMode(int mode) noexcept { bitStoreMode_ = mode; }
    [[nodiscard]] int GetBitStoreMode() const noexcept { return bitStoreMode_; }

private:
    void PutTopBits(std::uint64_t word, unsigned count) noexcept;
    void FillCurrentByte(std::uint64_t word, unsigned count) noexcept;
    [[nodiscard]] std::uint8_t PutBitsOfCurrentByte() const noexcept;
    bool WriteBytes(const std::uint8_t* bytes, unsigned long count) noexcept;
    [[nodiscard]] std::uint8_t ByteAt(std::uint64_t index) const noexcept;
    void MoveTo(std::uint64_t marker) noexcept;
    void RaiseNumberOfBits() noexcept;

    qv::Owned data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    std::uint32_t bitIndex_ = 0;
    std::uint8_t currentByte_ = 0;
    std::int32_t bitStoreMode_ = 1;
};
