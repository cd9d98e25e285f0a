// Bit streams: the C functions.
#include <QVFoundation/QVBitStream.h>

#include "io/QVInputBitStreamImpl.h"
#include "io/QVOutputBitStreamImpl.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::With;
using Input = QVInputBitStreamImpl;
using Output = QVOutputBitStreamImpl;

namespace {

int PutValue(void* stream, std::uint32_t value, unsigned width, unsigned long bits,
             unsigned long* done) noexcept {
    return With<Output>(stream, int{QVErrParam},
                        [=](Output& s) { return s.PutValue(value, width, bits, done); });
}

}  // namespace

void* QVInputBitStreamCreateWithData(void* data, unsigned long long numberOfBits) noexcept {
    return CreateObject<Input>(data, numberOfBits);
}

int QVInputBitStreamGetBits(void* stream, void* buffer, unsigned long bits, unsigned long* done,
                            QVBoolean exact) noexcept {
    if (buffer == nullptr && bits > 0) return QVErrParam;
    return With<Input>(stream, int{QVErrParam}, [=](Input& s) {
        return s.GetBits(static_cast<std::uint8_t*>(buffer), bits, done, exact != 0);
    });
}

int QVInputBitStreamFutureBits(void* stream, void* buffer, unsigned long bits, unsigned long* done,
                               QVBoolean exact) noexcept {
    if (buffer == nullptr && bits > 0) return QVErrParam;
    return With<Input>(stream, int{QVErrParam}, [=](Input& s) {
        return s.FutureBits(static_cast<std::uint8_t*>(buffer), bits, done, exact != 0);
    });
}

QVBoolean QVInputBitStreamGetOneBit(void* stream) noexcept {
    return With<Input>(stream, QVBoolean{0}, [](Input& s) { return s.GetOneBit(); });
}

unsigned long long QVInputBitStreamGetNumberOfBits(void* stream) noexcept {
    return With<Input>(stream, 0ULL, [](const Input& s) { return s.GetNumberOfBits(); });
}

long long QVInputBitStreamGetMarker(void* stream) noexcept {
    return With<Input>(stream, 0LL, [](const Input& s) { return s.GetMarker(); });
}

long long QVInputBitStreamSetMarker(void* stream, int origin, long long offset) noexcept {
    return With<Input>(stream, 0LL, [=](Input& s) { return s.SetMarker(origin, offset); });
}

QVBoolean QVInputBitStreamIsEnd(void* stream) noexcept {
    return With<Input>(stream, QVBoolean{0}, [](const Input& s) { return s.IsEnd(); });
}

void QVInputBitStreamSetBitStoreMode(void* stream, int mode) noexcept {
    With<Input>(stream, [=](Input& s) { s.SetBitStoreMode(mode); });
}

int QVInputBitStreamGetBitStoreMode(void* stream) noexcept {
    return With<Input>(stream, 0, [](const Input& s) { return s.GetBitStoreMode(); });
}

void* QVOutputBitStreamCreateWithData(void* data, unsigned long long numberOfBits) noexcept {
    return CreateObject<Output>(data, numberOfBits);
}

void QVOutputBitStreamSetOutputData(void* stream, void* data, unsigned long long numberOfBits) noexcept {
    With<Output>(stream, [=](Output& s) { s.SetOutputData(data, numberOfBits); });
}

void* QVOutputBitStreamGetOutputData(void* stream) noexcept {
    return With<Output>(stream, static_cast<void*>(nullptr),
                        [](const Output& s) { return s.GetOutputData(); });
}

int QVOutputBitStreamPutBits(void* stream, const void* buffer, unsigned long bits, unsigned long* done,
                             QVBoolean) noexcept {
    if (buffer == nullptr && bits > 0) return QVErrParam;
    return With<Output>(stream, int{QVErrParam}, [=](Output& s) {
        s.PutBits(static_cast<const std::uint8_t*>(buffer), bits);
        if (done != nullptr) *done = bits;
        return QVNoErr;
    });
}

void QVOutputBitStreamPutOneBit(void* stream, QVBoolean bit) noexcept {
    With<Output>(stream, [=](Output& s) { s.PutOneBit(bit != 0); });
}

int QVOutputBitStreamPutUInt8(void* stream, unsigned char value, unsigned long bits, unsigned long* done,
                              QVBoolean) noexcept {
    return PutValue(stream, value, 8, bits, done);
}

int QVOutputBitStreamPutUInt16(void* stream, unsigned short value, unsigned long bits, unsigned long* done,
                               QVBoolean) noexcept {
    return PutValue(stream, value, 16, bits, done);
}

int QVOutputBitStreamPutUInt32(void* stream, unsigned long value, unsigned long bits, unsigned long* done,
                               QVBoolean) noexcept {
    return PutValue(stream, static_cast<std::uint32_t>(value), 32, bits, done);
}

unsigned long long QVOutputBitStreamGetNumberOfBits(void* stream) noexcept {
    return With<Output>(stream, 0ULL, [](const Output& s) { return s.GetNumberOfBits(); });
}

void QVOutputBitStreamSetNumberOfBits(void* stream, unsigned long long numberOfBits) noexcept {
    With<Output>(stream, [=](Output& s) { s.SetNumberOfBits(numberOfBits); });
}

QVBoolean QVOutputBitStreamFlush(void* stream) noexcept {
    return With<Output>(stream, QVBoolean{0}, [](Output& s) { return s.Flush(); });
}

long long QVOutputBitStreamGetMarker(void* stream) noexcept {
    return With<Output>(stream, 0LL, [](const Output& s) { return s.GetMarker(); });
}

long long QVOutputBitStreamSetMarker(void* stream, int origin, long long offset) noexcept {
    return With<Output>(stream, 0LL, [=](Output& s) { return s.SetMarker(origin, offset); });
}

void QVOutputBitSteamSetBitStoreMode(void* stream, int mode) noexcept {
    With<Output>(stream, [=](Output& s) { s.SetBitStoreMode(mode); });
}

int QVOutputBitStreamGetBitStoreMode(void* stream) noexcept {
    return With<Output>(stream, 0, [](const Output& s) { return s.GetBitStoreMode(); });
}
