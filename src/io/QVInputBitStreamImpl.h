// Reading Data bit by bit.
#pragma once

#include <cstdint>

#include <QVFoundation/QVObject.h>

#include "io/bit_position.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVInputBitStreamImpl final : public QVCBase {
public:
    QVInputBitStreamImpl(void* data, std::uint64_t numberOfBits) noexcept;

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDInputBitStream; }

    // Goes on with other Data, from its start; nothing happens when it is the Data held.
    void SetInputData(void* data, std::uint64_t numberOfBits) noexcept;
    // The results are codes.
    int GetBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done, bool exact) noexcept;
    int FutureBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done, bool exact) noexcept;
    [[nodiscard]] bool GetOneBit() noexcept;
    [[nodiscard]] std::uint64_t GetNumberOfBits() const noexcept { return data_ ? numberOfBits_ : 0; }
    [[nodiscard]] std::uint64_t GetMarker() const noexcept {
        return qv::BitPosition{byteIndex_, bitIndex_}.Marker();
    }
    std::uint64_t SetMarker(int origin, long long offset) noexcept;
    [[nodiscard]] bool IsEnd() const noexcept;
    void SetBitStoreMode(int mode) noexcept { bitStoreMode_ = mode; }
    [[nodiscard]] int GetBitStoreMode() const noexcept { return bitStoreMode_; }

private:
    // The Data's bytes as they are now.
    struct Source {
        const std::uint8_t* bytes;
        std::uint64_t size;
    };
    [[nodiscard]] Source GetSource() const noexcept;
    // The bits that can be read from the marker on.
    [[nodiscard]] std::uint64_t CountReadable(const Source& source) const noexcept;
    void MoveTo(std::uint64_t marker, const Source& source) noexcept;

    qv::Owned data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    // The byte at the byte index, or null past the end. Never read through: the Data may have moved its
    // bytes.
    const std::uint8_t* currentByte_ = nullptr;
    std::uint32_t bitIndex_ = 0;
    std::int32_t bitStoreMode_ = 1;
};
