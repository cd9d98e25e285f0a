#include "io/QVCDataStream.h"

#include <algorithm>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVObject.h>

namespace {

void Store(unsigned long* done, unsigned long count) {
    if (done != nullptr) *done = count;
}

}  // namespace

QVCDataStream::QVCDataStream(void* data) : QVStreamImpl(data) {
    Buffering();
}

std::uint16_t QVCDataStream::GetTypeID() const {
    return QVTypeIDDataStream;
}

// With Data attached the buffer stays as it is, so that it only ever holds bytes put through it.
void QVCDataStream::Buffering() {
    if (store_) return;
    length_ = 0;
    position_ = 0;
    isDirty_ = false;
}

int QVCDataStream::GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) {
    if (!store_) {
        Store(done, 0);
        return QVErrParam;
    }
    if (buffer == nullptr && size > 0) return QVErrParam;
    const unsigned long buffered = GetFromBuffer(buffer, size);
    unsigned long count = buffered;
    if (count < size) {
        // Only as much again as the buffer gave is asked of the Data, and never more than the caller has room
        // for.
        unsigned long direct = 0;
        QVDataGetBytes(store_.Get(), static_cast<std::byte*>(buffer) + count, BaseOffset(),
                       std::min(buffered, size - count), &direct);
        base_ += static_cast<std::int64_t>(direct);
        count += direct;
    }
    if (position_ == length_) {
        if (isDirty_) Flush();
        Buffering();
    }
    Store(done, count);
    return exact && count < size ? int{QVErrReadShort} : int{QVNoErr};
}

int QVCDataStream::PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) {
    if (!store_) return QVErrParam;
    if (buffer == nullptr && size > 0) return QVErrParam;
    unsigned long count = PutIntoBuffer(buffer, size);
    int code = QVNoErr;
    if (position_ == kBufferSize && isDirty_) Flush();
    if (count < size) {
        // The rest goes in place only: unlike the flush, this never makes the Data longer.
        const unsigned long dataSize = QVDataGetSize(store_.Get());
        const unsigned long room = dataSize > BaseOffset() ? dataSize - BaseOffset() : 0;
        const unsigned long direct = std::min(size - count, room);
        if (QVDataSetBytes(store_.Get(), static_cast<const std::byte*>(buffer) + count, BaseOffset(),
                           direct) != 0) {
            base_ += static_cast<std::int64_t>(direct);
            count += direct;
        } else {
            code = QVErrMemory;
        }
    }
    if (position_ == kBufferSize) Buffering();
    Store(done, count);
    if (code != QVNoErr) return code;
    return exact && count != size ? int{QVErrWriteShort} : int{QVNoErr};
}

void QVCDataStream::SetMarker(int origin, long long offset) {
    if (!store_) return;
    const auto size = static_cast<std::int64_t>(QVDataGetSize(store_.Get()));
    if (isDirty_) Flush();
    std::int64_t start = 0;
    if (origin == 1) start = size;
    if (origin == 2) start = GetMarker();
    std::int64_t target = 0;
    // Only a positive offset can leave the type's range, since no start is negative.
    if (__builtin_add_overflow(start, offset, &target)) target = size;
    base_ = std::clamp<std::int64_t>(target, 0, size);
    Buffering();
}

long long QVCDataStream::GetMarker() const {
    return base_ + position_;
}

int QVCDataStream::Flush() {
    if (!store_ || length_ == 0) return 0;
    isDirty_ = false;
    return QVDataSetBytes(store_.Get(), buffer_.get(), BaseOffset(), length_);
}

unsigned long long QVCDataStream::GetSize() const {
    return QVDataGetSize(store_.Get());
}

void QVCDataStream::SetData(void* data) {
    if (data != store_.Get()) {
        Flush();
        store_.Reset(QVRetain(data));
    }
    Buffering();
}
