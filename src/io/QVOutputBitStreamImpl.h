// Writing Data bit by bit.
#pragma once

#include <cstdint>

#include <QVFoundation/QVObject.h>

#include "base/big_endian.h"
#include "collections/byte_store.h"
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
    void PutOneBit(bool bit) noexcept;
    // Writes `bits` bits of a value of `width` (8, 16 or 32) bits. Answers a result code: there are at most
    // `width`.
    int PutValue(std::uint32_t value, unsigned width, unsigned long bits, unsigned long* done) noexcept;
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
    [[nodiscard]] bool AppendTopBits(std::uint64_t word, unsigned count) noexcept;
    void PutTopBitsAnywhere(std::uint64_t word, unsigned count) noexcept;
    [[gnu::noinline]] int PutValueAnywhere(std::uint32_t value, unsigned width, unsigned long bits,
                                           unsigned long* done) noexcept;
    void FillCurrentByte(std::uint64_t word, unsigned count) noexcept;
    [[nodiscard]] std::uint8_t PutBitsOfCurrentByte() const noexcept;
    [[gnu::noinline]] void FinishCurrentByte() noexcept;
    [[gnu::noinline]] void FinishByteAnywhere() noexcept;
    bool WriteBytes(const std::uint8_t* bytes, unsigned long count) noexcept;
    [[nodiscard]] std::uint8_t ByteAt(std::uint64_t index) const noexcept;
    void MoveTo(std::uint64_t marker) noexcept;
    void RaiseNumberOfBits() noexcept {
        if (GetMarker() > numberOfBits_) numberOfBits_ = GetMarker();
    }

    qv::Owned data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    std::uint32_t bitIndex_ = 0;
    std::uint8_t currentByte_ = 0;
    std::int32_t bitStoreMode_ = 1;
    // Where the Data has its bytes, so that they are found without a call; null when they are not its own.
    qv::ByteStore* ownedBytes_;
};

// What runs once a code or once a bit is inline and has nothing to save across a call.

// The usual case: the byte being assembled comes behind the Data's end and nothing stands in it but the bits
// put so far. Full bytes are the Data's at once. No branch depends on how many there are, which would be hard
// to predict. False, and nothing done, in every other case.
inline bool QVOutputBitStreamImpl::AppendTopBits(std::uint64_t word, unsigned count) noexcept {
    qv::ByteStore* const bytes = ownedBytes_;
    if (bytes == nullptr || bitStoreMode_ == 0) return false;
    if (byteIndex_ != bytes->Size() || bytes->SpareSize() < sizeof word) return false;
    if ((currentByte_ & 0xFF >> bitIndex_) != 0) return false;
    const std::uint64_t all = std::uint64_t{currentByte_} << 56 | word >> bitIndex_;
    const unsigned total = bitIndex_ + count;
    const unsigned fullBytes = total / 8;
    qv::StoreBig64(all, bytes->Spare());
    bytes->AddSpare(fullBytes);
    byteIndex_ += fullBytes;
    bitIndex_ = total % 8;
    currentByte_ = static_cast<std::uint8_t>(all << 8 * fullBytes >> 56);
    RaiseNumberOfBits();
    return true;
}

// Writes the top `count` (1 .. 56) bits of the word; the bits below are zero.
inline void QVOutputBitStreamImpl::PutTopBits(std::uint64_t word, unsigned count) noexcept {
    if (!AppendTopBits(word, count)) PutTopBitsAnywhere(word, count);
}

inline int QVOutputBitStreamImpl::PutValue(std::uint32_t value, unsigned width, unsigned long bits,
                                           unsigned long* done) noexcept {
    const auto count = static_cast<unsigned>(bits);
    // 0 wraps around to the largest number.
    if (bits - 1 >= width || bitStoreMode_ != 1 ||
        !AppendTopBits(std::uint64_t{value} << (64 - count), count))
        return PutValueAnywhere(value, width, bits, done);
    if (done != nullptr) *done = bits;
    return QVNoErr;
}

inline void QVOutputBitStreamImpl::PutOneBit(bool bit) noexcept {
    if (bitStoreMode_ == 0) {
        currentByte_ = static_cast<std::uint8_t>(currentByte_ << 1 | unsigned{bit});
    } else {
        const unsigned mask = 0x80u >> bitIndex_;
        currentByte_ = static_cast<std::uint8_t>((currentByte_ & ~mask) | (bit ? mask : 0));
    }
    if (++bitIndex_ == 8) return FinishCurrentByte();
    RaiseNumberOfBits();
}
