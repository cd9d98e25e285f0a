#include "io/QVInputBitStreamImpl.h"

#include <cstring>

#include <QVFoundation/QVData.h>

#include "collections/raw_data.h"

QVInputBitStreamImpl::QVInputBitStreamImpl(void* data, std::uint64_t numberOfBits) noexcept
    : data_(qv::Owned::Retaining(data)), numberOfBits_(numberOfBits), ownedBytes_(qv::OwnedBytes(data)) {
    MoveTo(0, GetSource());
}

void QVInputBitStreamImpl::SetInputData(void* data, std::uint64_t numberOfBits) noexcept {
    if (data == data_.Get()) return;
    data_ = qv::Owned::Retaining(data);
    ownedBytes_ = qv::OwnedBytes(data);
    numberOfBits_ = numberOfBits;
    MoveTo(0, GetSource());
}

QVInputBitStreamImpl::Source QVInputBitStreamImpl::GetSource() const noexcept {
    if (ownedBytes_ != nullptr) return GetOwnedSource();
    if (!data_) return {nullptr, 0};
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data_.Get()));
    return {bytes, bytes == nullptr ? 0 : QVDataGetSize(data_.Get())};
}

// Any number of bits, in either mode.
int QVInputBitStreamImpl::GetRun(std::uint8_t* buffer, unsigned long bits, unsigned long* done,
                                 bool exact) noexcept {
    const Source source = GetSource();
    const auto count = static_cast<unsigned long>(std::min<std::uint64_t>(bits, CountReadable(source)));
    const std::size_t wholeBytes = count / 8;
    const std::size_t bufferSize = bits / 8 + (bits % 8 != 0 ? 1 : 0);
    if (count > 0) qv::CopyBits(source.bytes + byteIndex_, bitIndex_, buffer, count);
    if (count % 8 != 0 && bitStoreMode_ == 0) {
        buffer[wholeBytes] = static_cast<std::uint8_t>(buffer[wholeBytes] >> (8 - count % 8));
    }
    const std::size_t filled = wholeBytes + (count % 8 != 0 ? 1 : 0);
    if (filled < bufferSize) std::memset(buffer + filled, 0, bufferSize - filled);
    if (count > 0) MoveTo(GetMarker() + count, source);
    if (done != nullptr) *done = count;
    return exact && count < bits ? QVErrBitsShort : QVNoErr;
}

int QVInputBitStreamImpl::FutureBits(std::uint8_t* buffer, unsigned long bits, unsigned long* done,
                                     bool exact) noexcept {
    const std::uint64_t marker = GetMarker();
    const int result = GetBits(buffer, bits, done, exact);
    SetMarker(0, static_cast<long long>(marker));
    return result;
}

std::uint64_t QVInputBitStreamImpl::SetMarker(int origin, long long offset) noexcept {
    std::uint64_t target = qv::MarkerTarget(GetMarker(), GetNumberOfBits(), origin, offset);
    if (data_) target = std::min(target, numberOfBits_);
    MoveTo(target, GetSource());
    return target;
}

bool QVInputBitStreamImpl::IsEnd() const noexcept {
    return CountReadable(GetSource()) == 0;
}
