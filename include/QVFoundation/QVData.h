/*
 * Data: reference-counted byte buffers (type ID 4). One kind owns its bytes and can grow; the other stands
 * over memory that its caller keeps owning, and never changes size.
 *
 *     void* data = QVDataCreate("abc", 3);               // a copy
 *     QVDataAppendBuffer(data, "def", 3);
 *     const char* bytes = QVDataGetImutableBuffer(data); // valid until the size or the capacity changes
 *     QVRelease(data);
 *
 * Data holds fewer than 2^32 bytes; asking for more fails as running out of memory does. Source bytes may lie
 * inside the Data they are written to: the result is as if they had been copied first.
 * QVDataGetImutableBuffer is spelt as it is.
 */
#ifndef QVFOUNDATION_QVDATA_H
#define QVFOUNDATION_QVDATA_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * New Data of `size` bytes, owned by the caller: a copy of `bytes`, or zeros when it is null. With size 0 it
 * is empty and `bytes` is not read. Null when memory runs out, after logging "Can't allocate the object for
 * the QVDataRef. (size=%d)".
 */
QV_EXPORT void* QVDataCreate(const void* bytes, unsigned long size) QV_NOTHROW;

/**
 * New Data, owned by the caller, over `size` bytes that stay the caller's: they must outlive it. Unless it is
 * writable its bytes cannot be changed through it. Null for null bytes with a size (nothing is logged), and
 * when memory runs out, after logging "Can't allocate the object for the QVDataRef. (size=%d)".
 */
QV_EXPORT void* QVDataCreateNoCopy(void* bytes, unsigned long size, QVBoolean writable) QV_NOTHROW;

/** The first byte, borrowed; null when owned Data is empty. */
QV_EXPORT const void* QVDataGetImutableBuffer(void* data) QV_NOTHROW;

/** The first byte for writing; null when owned Data is empty, and for Data over memory that is not writable.
 */
QV_EXPORT void* QVDataGetMutableBuffer(void* data) QV_NOTHROW;

/** The number of bytes. */
QV_EXPORT unsigned long QVDataGetSize(void* data) QV_NOTHROW;

/** Changes the number of bytes; new ones are 0. False, and nothing changes, without memory or over borrowed
 * memory. */
QV_EXPORT QVBoolean QVDataSetSize(void* data, unsigned long size) QV_NOTHROW;

/** Makes room for `capacity` bytes in all; the size stays. False without memory or over borrowed memory. */
QV_EXPORT QVBoolean QVDataReserve(void* data, unsigned long capacity) QV_NOTHROW;

/** Appends the bytes of the other Data, which may be the same. False for null, without memory or over
 * borrowed memory. */
QV_EXPORT QVBoolean QVDataAppendData(void* data, void* other) QV_NOTHROW;

/**
 * Appends `length` bytes. True for length 0. False, and nothing changes, for null bytes with a length,
 * without memory or over borrowed memory.
 */
QV_EXPORT QVBoolean QVDataAppendBuffer(void* data, const void* bytes, unsigned long length) QV_NOTHROW;

/**
 * Overwrites from `offset` and appends what does not fit. AN OFFSET BEYOND THE SIZE IS IGNORED: all bytes are
 * then appended at the end, and no gap is filled. False and nothing changes for null bytes, length 0, or
 * bytes that are not writable. False as well when the rest cannot be appended (without memory, or over
 * borrowed memory); what fits has then been overwritten.
 */
QV_EXPORT QVBoolean QVDataSetBytes(void* data, const void* bytes, unsigned long offset,
                                   unsigned long length) QV_NOTHROW;

/**
 * Copies up to `length` bytes from `offset` to the buffer and stores their number in `copied` (which may be
 * null); fewer than asked is still true. False, with `copied` untouched, for a null buffer, length 0 or an
 * offset at the end or beyond.
 */
QV_EXPORT QVBoolean QVDataGetBytes(void* data, void* buffer, unsigned long offset, unsigned long length,
                                   unsigned long* copied) QV_NOTHROW;

/**
 * Writes all bytes to the file at the path, which is made when it is not there, and cuts off what an older
 * file had beyond them. Empty and null Data leave an older file's bytes and length as they are. The answer is
 * the result code of the file function that failed (see QVFile.h), or 0; a file whose writing failed is cut
 * after what was written.
 */
QV_EXPORT int QVDataWriteToFile(void* data, void* path) QV_NOTHROW;

/**
 * The contents of the file at the path, as a temporary object; empty Data for an empty file. Null when the
 * file cannot be read, when it holds 2^32 - 1 bytes or more, and when memory runs out (which is logged as by
 * QVDataCreate).
 */
QV_EXPORT void* QVDataCreateFromFile(void* path) QV_NOTHROW;

QV_END_DECLS

#endif
