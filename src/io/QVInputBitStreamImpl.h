// Reading Data bit by bit.
#pragma once

#include <algorithm>
#include <cstdint>

#include <QVFoundation/QVObject.h>

#include "collections/byte_store.h"
#include "io/bit_position.h"
#include "io/bit_runs.h"
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
    [[nodiscard]] Source GetOwnedSource() const noexcept {
        return {ownedBytes_->Bytes(), ownedBytes_->Size()};
    }
    // The bits that can be read from the marker on.
    [[nodiscard]] std::uint64_t CountReadable(const Source& source) const noexcept {
        const std::uint64_t end = std::min<std::uint64_t>(numberOfBits_, source.size * 8);
        const std::uint64_t marker = GetMarker();
        return end > marker ? end - marker : 0;
    }
    void MoveTo(std::uint64_t marker, const Source& source) noexcept;
    [[nodiscard]] bool GetCode(std::uint8_t* buffer, unsigned long bits) noexcept;
    [[gnu::noinline]] int GetRun(std::uint8_t* buffer, unsigned long bits, unsigned long* done,
                                 bool exact) noexcept;
    [[nodiscard]] bool GetOneBitFrom(const Source& source) noexcept;
    [[nodiscard, gnu::noinline]] bool GetOneLentBit() noexcept { return GetOneBitFrom(GetSource()); }

    qv::Owned data_;
    std::uint64_t numberOfBits_;
    std::uint64_t byteIndex_ = 0;
    // The byte at the byte index, or null past the end. Never read through: the Data may have moved its
    // bytes.
    const std::uint8_t* currentByte_ = nullptr;
    std::uint32_t bitIndex_ = 0;
    std::int32_t bitStoreMode_ = 1;
    // Where the Data has its bytes, so that they are found without a call; null when they are not its own.
    const qv::ByteStore* ownedBytes_;
};

// What runs once a code or once a bit is inline and has nothing to save across a call. No branch in it
// depends on the bits read.

inline void QVInputBitStreamImpl::MoveTo(std::uint64_t marker, const Source& source) noexcept {
    const qv::BitPosition position = qv::BitPosition::At(marker);
    byteIndex_ = position.byteIndex;
    bitIndex_ = position.bitIndex;
    currentByte_ = byteIndex_ < source.size ? source.bytes + byteIndex_ : nullptr;
}

// Reads up to 16 bits that are all there. False, and nothing done, in every other case.
inline bool QVInputBitStreamImpl::GetCode(std::uint8_t* buffer, unsigned long bits) noexcept {
    constexpr unsigned kMost = 16;
    // 0 wraps around to the largest number.
    if (bits - 1 >= kMost || bitStoreMode_ == 0 || ownedBytes_ == nullptr) return false;
    // Four whole bytes are loaded: at least one more than the bits end in, so there is a byte to go on with.
    constexpr unsigned kLoaded = 4;
    const std::uint64_t end = GetMarker() + bits;
    if (byteIndex_ + kLoaded > ownedBytes_->Size() || end > numberOfBits_) return false;
    const std::uint8_t* const bytes = ownedBytes_->FirstByte();
    const auto count = static_cast<unsigned>(bits);
    const std::uint32_t code = qv::LoadCode(bytes + byteIndex_, bitIndex_, count);
    const qv::BitPosition position = qv::BitPosition::At(end);
    byteIndex_ = position.byteIndex;
    bitIndex_ = position.bitIndex;
    currentByte_ = bytes + byteIndex_;
    qv::StoreCode(code, buffer, count);
    return true;
}

inline int QVInputBitStreamImpl::GetBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done,
                                         bool exact) noexcept {
    if (!GetCode(buffer, bits)) return GetRun(buffer, bits, done, exact);
    if (done != nullptr) *done = bits;
    return QVNoErr;
}

inline bool QVInputBitStreamImpl::GetOneBitFrom(const Source& source) noexcept {
    const std::uint64_t marker = GetMarker();
    if (byteIndex_ >= source.size || marker >= numberOfBits_) return false;
    const bool bit = (source.bytes[byteIndex_] << bitIndex_ & 0x80) != 0;
    MoveTo(marker + 1, source);
    return bit;
}

inline bool QVInputBitStreamImpl::GetOneBit() noexcept {
    return ownedBytes_ != nullptr ? GetOneBitFrom(GetOwnedSource()) : GetOneLentBit();
}
