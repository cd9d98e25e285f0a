#include "io/QVOutputBitStreamImpl.h"

#include <QVFoundation/QVData.h>

#include "collections/raw_data.h"
#include "io/bit_runs.h"

QVOutputBitStreamImpl::QVOutputBitStreamImpl(void* data, std::uint64_t numberOfBits) noexcept
    : data_(qv::Owned::Retaining(data)), numberOfBits_(numberOfBits), ownedBytes_(qv::OwnedBytes(data)) {
    if (numberOfBits != 0) currentByte_ = ByteAt(0);
}

void QVOutputBitStreamImpl::SetOutputData(void* data, std::uint64_t numberOfBits) noexcept {
    if (data == data_.Get()) return;
    data_ = qv::Owned::Retaining(data);
    ownedBytes_ = qv::OwnedBytes(data);
    numberOfBits_ = numberOfBits;
    byteIndex_ = 0;
    bitIndex_ = 0;
    currentByte_ = numberOfBits != 0 ? ByteAt(0) : std::uint8_t{0};
}

// Overwrites at the byte index and appends what goes beyond the Data's end; behind the end, everything is
// appended.
bool QVOutputBitStreamImpl::WriteBytes(const std::uint8_t* bytes, unsigned long count) noexcept {
    if (!data_) return false;
    if (ownedBytes_ != nullptr && byteIndex_ <= ownedBytes_->Size() &&
        ownedBytes_->WriteInRoom(static_cast<std::size_t>(byteIndex_), bytes, count)) {
        return true;
    }
    if (byteIndex_ >= QVDataGetSize(data_.Get())) return QVDataAppendBuffer(data_.Get(), bytes, count) != 0;
    return QVDataSetBytes(data_.Get(), bytes, static_cast<unsigned long>(byteIndex_), count) != 0;
}

std::uint8_t QVOutputBitStreamImpl::ByteAt(std::uint64_t index) const noexcept {
    if (ownedBytes_ != nullptr)
        return index < ownedBytes_->Size() ? ownedBytes_->Bytes()[index] : std::uint8_t{0};
    if (index >= QVDataGetSize(data_.Get())) return 0;
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data_.Get()));
    return bytes == nullptr ? std::uint8_t{0} : bytes[index];
}

void QVOutputBitStreamImpl::FinishByteAnywhere() noexcept {
    Flush();
    ++byteIndex_;
    currentByte_ = ByteAt(byteIndex_);
}

// Writes the full byte and goes on to the next one. Bits of the Data that are not written over are kept.
void QVOutputBitStreamImpl::FinishCurrentByte() noexcept {
    qv::ByteStore* const bytes = ownedBytes_;
    if (bytes != nullptr && byteIndex_ == bytes->Size() && bytes->SpareSize() > 0) {
        // The usual case: there is nothing behind what is written.
        *bytes->Spare() = currentByte_;
        bytes->AddSpare(1);
        currentByte_ = 0;
        ++byteIndex_;
    } else {
        FinishByteAnywhere();
    }
    bitIndex_ = 0;
    RaiseNumberOfBits();
}

// The bits put into the current byte so far, at its top as they stand once the byte is full.
std::uint8_t QVOutputBitStreamImpl::PutBitsOfCurrentByte() const noexcept {
    if (bitStoreMode_ == 0) return static_cast<std::uint8_t>(currentByte_ << (8 - bitIndex_));
    return static_cast<std::uint8_t>(currentByte_ & ~(0xFF >> bitIndex_));
}

// Puts the top `count` bits of the word into the current byte, which they do not fill up.
void QVOutputBitStreamImpl::FillCurrentByte(std::uint64_t word, unsigned count) noexcept {
    if (count == 0) return;
    const auto bits = static_cast<unsigned>(word >> (64 - count));
    if (bitStoreMode_ == 0) {
        currentByte_ = static_cast<std::uint8_t>(currentByte_ << count | bits);
    } else {
        const unsigned below = 8 - bitIndex_ - count;
        const unsigned mask = ((1u << count) - 1) << below;
        currentByte_ = static_cast<std::uint8_t>((currentByte_ & ~mask) | bits << below);
    }
    bitIndex_ += count;
}

// The same as PutTopBits wherever the byte index is and in either mode.
void QVOutputBitStreamImpl::PutTopBitsAnywhere(std::uint64_t word, unsigned count) noexcept {
    const unsigned total = bitIndex_ + count;
    if (total < 8) {
        FillCurrentByte(word, count);
    } else {
        const std::uint64_t all = std::uint64_t{PutBitsOfCurrentByte()} << 56 | word >> bitIndex_;
        const unsigned fullBytes = total / 8;
        std::uint8_t bytes[8];
        qv::StoreBig64(all, bytes);
        WriteBytes(bytes, fullBytes);
        byteIndex_ += fullBytes;
        bitIndex_ = 0;
        // Bits of the Data that are not written over are kept.
        currentByte_ = ByteAt(byteIndex_);
        const unsigned rest = total % 8;
        FillCurrentByte(rest == 0 ? 0 : word << (count - rest), rest);
    }
    RaiseNumberOfBits();
}

// The same as PutValue for any number of bits and in any mode.
int QVOutputBitStreamImpl::PutValueAnywhere(std::uint32_t value, unsigned width, unsigned long bits,
                                            unsigned long* done) noexcept {
    if (bits > width) return QVErrParam;
    if (done != nullptr) *done = bits;
    const auto count = static_cast<unsigned>(bits);
    const unsigned unused = 64 - count;
    if (bits == 0) {
        RaiseNumberOfBits();
    } else if (bitStoreMode_ == 1) {
        PutTopBitsAnywhere(std::uint64_t{value} << unused, count);
    } else {
        // Only mode 1 itself aligns the value; in any other mode its top bits are written.
        PutTopBitsAnywhere(std::uint64_t{value} << (64 - width) >> unused << unused, count);
    }
    return QVNoErr;
}

void QVOutputBitStreamImpl::PutBits(const std::uint8_t* buffer, unsigned long bits) noexcept {
    constexpr unsigned kStep = 56;
    for (; bits > kStep; bits -= kStep) {
        PutTopBits(qv::LoadBits(buffer, 0, kStep), kStep);
        buffer += kStep / 8;
    }
    if (bits > 0)
        PutTopBits(qv::LoadBits(buffer, 0, static_cast<unsigned>(bits)), static_cast<unsigned>(bits));
    RaiseNumberOfBits();  // also for 0 bits, where the marker may have been set beyond
}

void QVOutputBitStreamImpl::MoveTo(std::uint64_t marker) noexcept {
    const qv::BitPosition position = qv::BitPosition::At(marker);
    byteIndex_ = position.byteIndex;
    bitIndex_ = position.bitIndex;
    currentByte_ = ByteAt(byteIndex_);
}

std::uint64_t QVOutputBitStreamImpl::SetMarker(int origin, long long offset) noexcept {
    Flush();
    const std::uint64_t target = qv::MarkerTarget(GetMarker(), numberOfBits_, origin, offset);
    MoveTo(std::min(target, numberOfBits_));
    return GetMarker();
}
