#include "io/QVCMemoryStream.h"

#include <algorithm>
#include <cstring>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVObject.h>

std::uint16_t QVCMemoryStream::GetTypeID() const {
    return QVTypeIDUnregistered;
}

QVCMemoryStream::Contents QVCMemoryStream::GetContents() const {
    if (memory_ != nullptr) return {memory_->Bytes(), static_cast<unsigned long>(memory_->Size())};
    return {QVDataGetImutableBuffer(store_.Get()), QVDataGetSize(store_.Get())};
}

int QVCMemoryStream::GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) {
    if (buffer == nullptr && size > 0) return QVErrParam;
    const Contents contents = GetContents();
    // The Data may have become shorter since.
    const auto start = std::min(static_cast<unsigned long>(base_), contents.size);
    const unsigned long count = std::min(contents.size - start, size);
    if (count > 0) std::memmove(buffer, static_cast<const std::byte*>(contents.bytes) + start, count);
    base_ += static_cast<std::int64_t>(count);
    if (done != nullptr) *done = count;
    return exact && count < size ? int{QVErrReadShort} : int{QVNoErr};
}

int QVCMemoryStream::PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool) {
    if (buffer == nullptr && size > 0) return QVErrParam;
    if (done != nullptr) *done = 0;
    if (size == 0) return QVNoErr;
    const auto start = std::min(static_cast<unsigned long>(base_), GetContents().size);
    if (memory_ != nullptr) {
        memory_->Write(start, buffer, size);
    } else if (QVDataSetBytes(store_.Get(), buffer, start, size) == 0) {
        return QVErrMemory;
    }
    base_ = static_cast<std::int64_t>(start) + static_cast<std::int64_t>(size);
    if (done != nullptr) *done = size;
    return QVNoErr;
}

void QVCMemoryStream::SetMarker(int origin, long long offset) {
    const auto size = static_cast<std::int64_t>(GetSize());
    std::int64_t start = 0;
    if (origin == 1) start = size;
    if (origin == 2) start = base_;
    std::int64_t target = 0;
    if (__builtin_add_overflow(start, offset, &target)) target = size;
    base_ = std::clamp<std::int64_t>(target, 0, size);
}

int QVCMemoryStream::Flush() {
    return QVNoErr;
}

unsigned long long QVCMemoryStream::GetSize() const {
    return GetContents().size;
}
