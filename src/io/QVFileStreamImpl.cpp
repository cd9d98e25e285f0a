#include "io/QVFileStreamImpl.h"

#include <utility>

#include <QVFoundation/QVObject.h>

#include "runtime/Handle.h"

namespace {

void Store(unsigned long* done, unsigned long count) {
    if (done != nullptr) *done = count;
}

}  // namespace

QVFileStreamImpl::QVFileStreamImpl(void* file) : QVStreamImpl(file) {
    if (File() != nullptr) File()->SetMarker(0, 0);
    Buffering();
}

std::uint16_t QVFileStreamImpl::GetTypeID() const {
    return QVTypeIDFileStream;
}

QVFileImpl* QVFileStreamImpl::File() const {
    return qv::FromHandle<QVFileImpl>(store_.Get());
}

// Refills the buffer from the file's marker on.
void QVFileStreamImpl::Buffering() {
    if (File() == nullptr) return;
    base_ = static_cast<std::int64_t>(File()->GetMarker());
    position_ = 0;
    isDirty_ = false;
    unsigned long done = 0;
    File()->ReadBytes(buffer_.get(), kBufferSize, &done, false);
    length_ = static_cast<std::uint32_t>(done);
}

// A writer that appends has nothing behind its marker, so the read of the refill is spared.
void QVFileStreamImpl::RefillAfterPut() {
    if (File() == nullptr || !File()->IsMarkerAtKnownEnd()) return Buffering();
    base_ = static_cast<std::int64_t>(File()->GetMarker());
    position_ = 0;
    isDirty_ = false;
    length_ = 0;
}

int QVFileStreamImpl::GetBytes(void* buffer, unsigned long size, unsigned long* done, bool exact) {
    if (File() == nullptr) {
        Store(done, 0);
        return QVErrFileNotFound;
    }
    if (buffer == nullptr && size > 0) return QVErrParam;
    unsigned long count = GetFromBuffer(buffer, size);
    int code = QVNoErr;
    if (count < size) {
        unsigned long direct = 0;
        code = File()->ReadBytes(static_cast<std::byte*>(buffer) + count, size - count, &direct, exact);
        if (code == QVNoErr || code == QVErrEOF) count += direct;
    }
    if (position_ == length_) {
        if (isDirty_) FlushBuffer();
        Buffering();
    }
    Store(done, count);
    return code == QVErrEOF && !exact ? int{QVNoErr} : code;
}

int QVFileStreamImpl::PutBytes(const void* buffer, unsigned long size, unsigned long* done, bool exact) {
    if (File() == nullptr) return QVErrFileNotFound;
    if (buffer == nullptr && size > 0) return QVErrParam;
    unsigned long count = PutIntoBuffer(buffer, size);
    int code = QVNoErr;
    if (position_ == kBufferSize && isDirty_) FlushBuffer();
    if (count < size) {
        unsigned long direct = 0;
        code =
            File()->WriteBytes(static_cast<const std::byte*>(buffer) + count, size - count, &direct, exact);
        if (code == QVNoErr) count += direct;
    }
    if (position_ == kBufferSize) RefillAfterPut();
    Store(done, count);
    if (code != QVNoErr) return code;
    return exact && count != size ? int{QVErrWriteShort} : int{QVNoErr};
}

void QVFileStreamImpl::SetMarker(int origin, long long offset) {
    if (File() == nullptr) return;
    if (isDirty_) FlushBuffer();
    if (origin == 2) {
        origin = 0;
        // A sum beyond the type wraps to a place before the start, which the file refuses.
        offset = static_cast<long long>(static_cast<unsigned long long>(offset) +
                                        static_cast<unsigned long long>(GetMarker()));
    }
    File()->SetMarker(origin, offset);
    Buffering();
}

long long QVFileStreamImpl::GetMarker() const {
    return File() == nullptr ? 0 : base_ + position_;
}

int QVFileStreamImpl::Flush() {
    if (File() == nullptr) return QVNoErr;
    const int code = FlushBuffer();
    const int lost = std::exchange(lostWrite_, 0);
    return lost != 0 ? lost : code;
}

// The flush inside other operations, whose result nobody looks at: a lost write is kept for Flush.
int QVFileStreamImpl::FlushBuffer() {
    if (length_ > 0) WriteBuffer();
    const int code = File()->Flush();
    isDirty_ = false;
    return code;
}

// Leaves the file's marker just behind the buffer. The whole buffer is written, also the part that was only
// read.
void QVFileStreamImpl::WriteBuffer() {
    if (File()->IsOpenForReading()) {
        File()->SetMarker(0, base_ + length_);
        return;
    }
    File()->SetMarker(0, base_);
    const int code = File()->WriteBytes(buffer_.get(), length_, nullptr, true);
    if (code != QVNoErr && isDirty_ && lostWrite_ == 0) lostWrite_ = code;
}

unsigned long long QVFileStreamImpl::GetSize() const {
    return File() == nullptr ? 0 : File()->GetSize();
}

int QVFileStreamImpl::SetFile(void* file) {
    if (file != store_.Get()) {
        Flush();
        store_.Reset(QVRetain(file));
    }
    return File() == nullptr ? int{QVNoErr} : File()->SetMarker(0, 0);
}
