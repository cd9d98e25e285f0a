// Streams: the C functions.
#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVStream.h>

#include "io/QVCDataStream.h"
#include "io/QVCMemoryStream.h"
#include "io/QVFileStreamImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::FromHandle;
using qv::Guard;
using qv::With;

namespace {

// Kept out of line, so that the common case needs no room on the stack.
[[gnu::noinline]] int PutThroughStream(void* handle, const void* bytes, unsigned long size) noexcept {
    return QVStreamPutBytes(handle, bytes, size, nullptr, 1);
}

template <class Value>
[[gnu::noinline]] int GetThroughStream(void* handle, Value* value) noexcept {
    if (value == nullptr) return QVErrParam;
    Value read = 0;
    const int code = QVStreamGetBytes(handle, &read, sizeof read, nullptr, 1);
    if (code == QVNoErr) *value = read;
    return code;
}

// Most transfers end where the bytes are at hand: those are done here, without a call.
template <class Value>
int PutValue(void* handle, Value value) noexcept {
    if (handle != nullptr && FromHandle<QVStreamImpl>(handle)->PutAtHand(&value, sizeof value))
        return QVNoErr;
    return PutThroughStream(handle, &value, sizeof value);
}

template <class Value>
int GetValue(void* handle, Value* value) noexcept {
    const bool isGiven = handle != nullptr && value != nullptr;
    if (isGiven && FromHandle<QVStreamImpl>(handle)->GetAtHand(value, sizeof *value)) return QVNoErr;
    return GetThroughStream(handle, value);
}

}  // namespace

void* QVStreamCreateWithData(void* data) noexcept {
    return data == nullptr ? nullptr : CreateObject<QVCDataStream>(data);
}

void* QVStreamCreateWithFile(void* file) noexcept {
    return CreateObject<QVFileStreamImpl>(file);
}

void* QVStreamCreateWithMemory(void* data) noexcept {
    return data == nullptr ? nullptr : CreateObject<QVCMemoryStream>(data);
}

int QVStreamGetBytes(void* stream, void* buffer, unsigned long size, unsigned long* done,
                     QVBoolean exact) noexcept {
    if (stream == nullptr) return QVErrParam;
    return Guard(int{QVErrMemory},
                 [&] { return FromHandle<QVStreamImpl>(stream)->GetBytes(buffer, size, done, exact != 0); });
}

int QVStreamPutBytes(void* stream, const void* buffer, unsigned long size, unsigned long* done,
                     QVBoolean exact) noexcept {
    if (stream == nullptr) return QVErrParam;
    return Guard(int{QVErrMemory},
                 [&] { return FromHandle<QVStreamImpl>(stream)->PutBytes(buffer, size, done, exact != 0); });
}

void QVStreamSetMarker(void* stream, int origin, long long offset) noexcept {
    With<QVStreamImpl>(stream, [&](QVStreamImpl& s) { s.SetMarker(origin, offset); });
}

long long QVStreamGetMarker(void* stream) noexcept {
    return With<QVStreamImpl>(stream, 0LL, [](const QVStreamImpl& s) { return s.GetMarker(); });
}

int QVStreamFlush(void* stream) noexcept {
    if (stream == nullptr) return QVErrParam;
    return Guard(int{QVErrMemory}, [&] { return FromHandle<QVStreamImpl>(stream)->Flush(); });
}

unsigned long long QVStreamGetSize(void* stream) noexcept {
    return With<QVStreamImpl>(stream, 0ULL, [](const QVStreamImpl& s) { return s.GetSize(); });
}

int QVStreamPutUInt8(void* stream, unsigned char value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutSInt8(void* stream, signed char value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutUInt16(void* stream, unsigned short value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutSInt16(void* stream, short value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutUInt32(void* stream, unsigned int value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutSInt32(void* stream, int value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutUInt64(void* stream, unsigned long long value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutSInt64(void* stream, long long value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutFloat(void* stream, float value) noexcept {
    return PutValue(stream, value);
}
int QVStreamPutDouble(void* stream, double value) noexcept {
    return PutValue(stream, value);
}

int QVStreamGetUInt8(void* stream, unsigned char* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetSInt8(void* stream, signed char* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetUInt16(void* stream, unsigned short* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetSInt16(void* stream, short* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetUInt32(void* stream, unsigned int* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetSInt32(void* stream, int* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetUInt64(void* stream, unsigned long long* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetSInt64(void* stream, long long* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetFloat(void* stream, float* value) noexcept {
    return GetValue(stream, value);
}
int QVStreamGetDouble(void* stream, double* value) noexcept {
    return GetValue(stream, value);
}
