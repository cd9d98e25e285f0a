/*
 * Byte streams over files and Data, through a buffer of 1024 bytes and a 64-bit marker.
 *
 * Typed operations move a value's bytes as they lie in memory: native byte order, which is little-endian on
 * x86. The exact flag turns a transfer that moved fewer bytes than asked into an error.
 *
 * File streams (QVStreamCreateWithFile) read and write the buffer in one place and move on together:
 *  - Put bytes are in the file after QVStreamFlush, not before. Releasing a stream does not flush it.
 *  - Flush between writing and reading, and move the marker: a read that begins where the buffer holds put
 * bytes and reaches beyond them reads the file as it stands, and leaves the marker just after the flushed
 * buffer.
 *  - A full disk is never silent: when put bytes could not be written, the next QVStreamFlush says so, once.
 *
 * Data streams (QVStreamCreateWithData) only ever carry bytes into the Data: put up to 1024 bytes and flush.
 * Their buffer is never filled from the Data, so nothing can be read through them, and after 1024 bytes they
 * begin again at their base. To read Data, or to write more, use QVStreamCreateWithMemory of QVAdditions.h.
 *
 *     void* stream = QVStreamCreateWithFile(file);   // a file open for writing
 *     QVStreamPutUInt32(stream, 0x11223344);         // 44 33 22 11
 *     int code = QVStreamFlush(stream);
 *     QVRelease(stream);
 */
#ifndef QVFOUNDATION_QVSTREAM_H
#define QVFOUNDATION_QVSTREAM_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** A new stream over Data, which is retained; owned by the caller. Null for null Data and when memory runs
 * out. */
QV_EXPORT void* QVStreamCreateWithData(void* data) QV_NOTHROW;

/**
 * A new stream over an open file, which is retained and whose marker goes to the start; owned by the caller.
 * Null when memory runs out. A stream over null answers QVErrFileNotFound to every transfer.
 */
QV_EXPORT void* QVStreamCreateWithFile(void* file) QV_NOTHROW;

/**
 * Reads size bytes. done, which may be null, receives the bytes read. File stream: QVErrFileNotFound without
 * an open file; with exact, QVErrEOF when the end was met; any other error of the file. Data stream: with
 * exact, QVErrReadShort when fewer bytes came.
 */
QV_EXPORT int QVStreamGetBytes(void* stream, void* buffer, unsigned long size, unsigned long* done,
                               QVBoolean exact) QV_NOTHROW;

/**
 * Writes size bytes. done, which may be null, receives the bytes taken, the buffer's included. File stream:
 * QVErrFileNotFound without a file; any error of the file for bytes that passed the buffer by. Data stream:
 * QVErrMemory when the Data took nothing. Both: with exact, QVErrWriteShort when fewer bytes were taken.
 */
QV_EXPORT int QVStreamPutBytes(void* stream, const void* buffer, unsigned long size, unsigned long* done,
                               QVBoolean exact) QV_NOTHROW;

/**
 * Moves the marker: origin 0 from the start, 1 from the end (a negative offset moves back), 2 from the
 * marker. Put bytes are flushed first. A data stream goes to the nearest end when the place lies outside, and
 * takes other origins as 0; a file stream that the file refuses to move goes on at the file's own marker,
 * behind its buffer.
 */
QV_EXPORT void QVStreamSetMarker(void* stream, int origin, long long offset) QV_NOTHROW;

/** The marker in bytes from the start; 0 without a file. */
QV_EXPORT long long QVStreamGetMarker(void* stream) QV_NOTHROW;

/**
 * Writes the buffer to the file or Data. File stream: 0, or the code of a write that lost put bytes, now or
 * since the last flush; on a file opened for reading nothing is written and the answer is 0. Data stream: 1
 * when the Data took the bytes, else 0.
 */
QV_EXPORT int QVStreamFlush(void* stream) QV_NOTHROW;

/** The size of the file or Data in bytes; 0 without one. Put bytes count once they are flushed. */
QV_EXPORT unsigned long long QVStreamGetSize(void* stream) QV_NOTHROW;

/** Typed writing: QVStreamPutBytes of the value's bytes with exact. */
QV_EXPORT int QVStreamPutUInt8(void* stream, unsigned char value) QV_NOTHROW;
QV_EXPORT int QVStreamPutSInt8(void* stream, signed char value) QV_NOTHROW;
QV_EXPORT int QVStreamPutUInt16(void* stream, unsigned short value) QV_NOTHROW;
QV_EXPORT int QVStreamPutSInt16(void* stream, short value) QV_NOTHROW;
QV_EXPORT int QVStreamPutUInt32(void* stream, unsigned int value) QV_NOTHROW;
QV_EXPORT int QVStreamPutSInt32(void* stream, int value) QV_NOTHROW;
QV_EXPORT int QVStreamPutUInt64(void* stream, unsigned long long value) QV_NOTHROW;
QV_EXPORT int QVStreamPutSInt64(void* stream, long long value) QV_NOTHROW;
QV_EXPORT int QVStreamPutFloat(void* stream, float value) QV_NOTHROW;
QV_EXPORT int QVStreamPutDouble(void* stream, double value) QV_NOTHROW;

/** Typed reading: QVStreamGetBytes of the type's size with exact. The value is stored only when the answer is
 * 0. */
QV_EXPORT int QVStreamGetUInt8(void* stream, unsigned char* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetSInt8(void* stream, signed char* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetUInt16(void* stream, unsigned short* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetSInt16(void* stream, short* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetUInt32(void* stream, unsigned int* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetSInt32(void* stream, int* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetUInt64(void* stream, unsigned long long* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetSInt64(void* stream, long long* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetFloat(void* stream, float* value) QV_NOTHROW;
QV_EXPORT int QVStreamGetDouble(void* stream, double* value) QV_NOTHROW;

QV_END_DECLS

#endif
