/*
 * Bit streams: reading and writing the bytes of Data bit by bit. Positions and lengths count bits. In every
 * byte the first bit of the stream is the most significant one, for reading and writing alike.
 *
 *     void* data = QVDataCreate(NULL, 0);
 *     void* out = QVOutputBitStreamCreateWithData(data, 0);
 *     QVOutputBitStreamPutUInt8(out, 0x05, 3, NULL, 1);        // the bits 101
 *     QVOutputBitStreamPutUInt16(out, 0x1234, 13, NULL, 1);    // 1001000110100
 *     QVRelease(out);                                          // B2 34, and one byte more, see below
 *
 *     void* in = QVInputBitStreamCreateWithData(data, 16);
 *     unsigned char bits = 0;
 *     QVInputBitStreamGetBits(in, &bits, 3, NULL, 1);          // A0: the bits 101, left-aligned
 *     QVRelease(in);
 *     QVRelease(data);
 *
 * The bit store mode (1 by default) says how bits lie in the byte that is being filled on the other side, the
 * caller's buffer when reading and the Data's byte when writing: with any mode but 0 from the top down, in
 * mode 0 pushed in from below, so that a last byte of k bits holds them right-aligned.
 *
 * Both streams retain their Data and meet it anew at every call, so the Data may change in between.
 */
#ifndef QVFOUNDATION_QVBITSTREAM_H
#define QVFOUNDATION_QVBITSTREAM_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What the handles of this family stand for. */
typedef void* QVInputBitStreamRef;
typedef void* QVOutputBitStreamRef;

/** A new input bit stream (type ID 11) at position 0 that reads the first `numberOfBits` bits of the Data,
 * owned by the caller. Over null Data it is always at its end. Null when memory runs out. */
QV_EXPORT void* QVInputBitStreamCreateWithData(void* data, unsigned long long numberOfBits) QV_NOTHROW;

/**
 * Reads bits into the buffer, whose first (bits + 7) / 8 bytes are cleared first, the first bit at the top of
 * its first byte. Reading stops at the number of bits and at the Data's end; `done` (may be null) receives
 * the bits read. 0, or with `exact` QVErrBitsShort when there were fewer bits than asked (what there was has
 * been read).
 */
QV_EXPORT int QVInputBitStreamGetBits(void* stream, void* buffer, unsigned long bits, unsigned long* done,
                                      QVBoolean exact) QV_NOTHROW;

/** The same without moving the marker. */
QV_EXPORT int QVInputBitStreamFutureBits(void* stream, void* buffer, unsigned long bits, unsigned long* done,
                                         QVBoolean exact) QV_NOTHROW;

/** Reads one bit; false at the end. */
QV_EXPORT QVBoolean QVInputBitStreamGetOneBit(void* stream) QV_NOTHROW;

/** The number of bits that may be read, as given at creation; 0 without Data. */
QV_EXPORT unsigned long long QVInputBitStreamGetNumberOfBits(void* stream) QV_NOTHROW;

/** The position of the next bit. */
QV_EXPORT long long QVInputBitStreamGetMarker(void* stream) QV_NOTHROW;

/**
 * Moves the marker and answers where it is: origin 0 from the start (not below 0), 1 from the number of bits
 * (not below 0), 2 from the marker; other origins leave it. Beyond the number of bits it stops there, and so
 * does a step with origin 2 to before the start.
 */
QV_EXPORT long long QVInputBitStreamSetMarker(void* stream, int origin, long long offset) QV_NOTHROW;

/** Whether nothing is left: no Data, the Data's end or the number of bits reached. */
QV_EXPORT QVBoolean QVInputBitStreamIsEnd(void* stream) QV_NOTHROW;

/** Sets the bit store mode. */
QV_EXPORT void QVInputBitStreamSetBitStoreMode(void* stream, int mode) QV_NOTHROW;

/** The bit store mode. */
QV_EXPORT int QVInputBitStreamGetBitStoreMode(void* stream) QV_NOTHROW;

/**
 * A new output bit stream (type ID 12) at position 0, owned by the caller. It overwrites the Data's bytes in
 * place and appends at its end. With a `numberOfBits` other than 0 the byte at the start is loaded first, so
 * that its bits that are not written stay. Null when memory runs out.
 *
 * A byte is in the Data as soon as its eighth bit is written. Releasing the stream flushes it, which writes
 * the byte at the marker even when no bit of it has been put: a stream that ends at a byte's border at the
 * Data's end leaves one byte 0 more.
 */
QV_EXPORT void* QVOutputBitStreamCreateWithData(void* data, unsigned long long numberOfBits) QV_NOTHROW;

/** Goes on with other Data, from its start, as at creation; a byte that is not full is not written into the
 * old Data. With the Data that the stream has, nothing happens. */
QV_EXPORT void QVOutputBitStreamSetOutputData(void* stream, void* data,
                                              unsigned long long numberOfBits) QV_NOTHROW;

/** The Data; borrowed. */
QV_EXPORT void* QVOutputBitStreamGetOutputData(void* stream) QV_NOTHROW;

/**
 * Writes the first `bits` bits of the buffer, from the top of its first byte, whatever the mode. `done` (may
 * be null) receives `bits`: every bit is written, so `exact` changes nothing. 0; QVErrParam for a null stream
 * or buffer. A Data that refuses a byte is noticed by QVOutputBitStreamFlush only. The buffer must not lie
 * inside the Data.
 */
QV_EXPORT int QVOutputBitStreamPutBits(void* stream, const void* buffer, unsigned long bits,
                                       unsigned long* done, QVBoolean exact) QV_NOTHROW;

/** Writes one bit. */
QV_EXPORT void QVOutputBitStreamPutOneBit(void* stream, QVBoolean bit) QV_NOTHROW;

/**
 * Write the low `bits` bits of a value, the most significant first. QVErrParam, with nothing written, for
 * more bits than the value has. This takes mode 1; with any other mode, also those that store bits as mode 1
 * does, the value's top bits are written.
 */
QV_EXPORT int QVOutputBitStreamPutUInt8(void* stream, unsigned char value, unsigned long bits,
                                        unsigned long* done, QVBoolean exact) QV_NOTHROW;
QV_EXPORT int QVOutputBitStreamPutUInt16(void* stream, unsigned short value, unsigned long bits,
                                         unsigned long* done, QVBoolean exact) QV_NOTHROW;
/** `value` counts with its low 32 bits. */
QV_EXPORT int QVOutputBitStreamPutUInt32(void* stream, unsigned long value, unsigned long bits,
                                         unsigned long* done, QVBoolean exact) QV_NOTHROW;

/** The highest position reached by writing, or what was set last. */
QV_EXPORT unsigned long long QVOutputBitStreamGetNumberOfBits(void* stream) QV_NOTHROW;

/** Sets the number of bits, and nothing else. */
QV_EXPORT void QVOutputBitStreamSetNumberOfBits(void* stream, unsigned long long numberOfBits) QV_NOTHROW;

/** Writes the byte at the marker into the Data, full or not; the marker stays, so that more bits can follow.
 * False without Data or when the Data cannot be written or grown. */
QV_EXPORT QVBoolean QVOutputBitStreamFlush(void* stream) QV_NOTHROW;

/** The position of the next bit. */
QV_EXPORT long long QVOutputBitStreamGetMarker(void* stream) QV_NOTHROW;

/** Flushes, then moves the marker as QVInputBitStreamSetMarker does, and loads the byte there. */
QV_EXPORT long long QVOutputBitStreamSetMarker(void* stream, int origin, long long offset) QV_NOTHROW;

/** Sets the bit store mode. The name is spelled like this. */
QV_EXPORT void QVOutputBitSteamSetBitStoreMode(void* stream, int mode) QV_NOTHROW;

/** The bit store mode. */
QV_EXPORT int QVOutputBitStreamGetBitStoreMode(void* stream) QV_NOTHROW;

QV_END_DECLS

#endif
