/*
 * Ring lists: the last bytes added, in a circular buffer of fixed capacity, with a search for a run of bytes.
 *
 *     void* ring = QVRingListCreate();
 *     QVRingListSetBufferSize(ring, 3);
 *     for (unsigned char v = 1; v <= 4; ++v) QVRingListAddValue(ring, v);   // 1 is dropped
 *     QVRingListGetValueAtIndex(ring, 0);                                   // 3, see below
 *     QVRelease(ring);
 *
 * What the indexes of a full ring mean is fixed, and odd: the first value that is added at the front again
 * sets the origin to the second place of the buffer, not to the oldest value. From then on index 0 gives the
 * second oldest value and index capacity - 1 the oldest, so the ring above reads 3, 4, 2.
 */
#ifndef QVFOUNDATION_QVRINGLIST_H
#define QVFOUNDATION_QVRINGLIST_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What a handle of this family stands for. */
typedef void* QVRingListRef;

/** A new ring list (type ID 20), owned by the caller, without a buffer: until it gets one it drops what is
 * added and reads as 0. Null when memory runs out. */
QV_EXPORT void* QVRingListCreate(void) QV_NOTHROW;

/**
 * Gives the ring a buffer of `size` bytes. Bytes of the old buffer are kept as far as they fit, new ones are
 * 0; the number of values and the places for reading and adding are not reset, so shrinking or growing a ring
 * that has wrapped mixes old and new values. QVErrParam for size 0; QVErrMemory, with nothing changed, when
 * there is no memory or for 2^32 bytes and more.
 */
QV_EXPORT int QVRingListSetBufferSize(void* ringList, unsigned long size) QV_NOTHROW;

/** The capacity in bytes. */
QV_EXPORT unsigned long QVRingListGetBufferSize(void* ringList) QV_NOTHROW;

/** The number of values held; after the buffer has shrunk it may exceed the capacity. */
QV_EXPORT unsigned long QVRingListGetSize(void* ringList) QV_NOTHROW;

/** Adds a value. A full ring drops its oldest one for it. */
QV_EXPORT void QVRingListAddValue(void* ringList, unsigned char value) QV_NOTHROW;

/** The value at `index` places after the origin, counted round the buffer as often as it takes. */
QV_EXPORT unsigned char QVRingListGetValueAtIndex(void* ringList, unsigned long index) QV_NOTHROW;

/**
 * Searches for `length` bytes, the first place to try being `start` places after the origin. True, with the
 * place in *location, when it is found; false also for a null pattern, length 0, a null location or a ring
 * without a buffer.
 *
 * The place is one of the buffer (it goes on counting past the capacity where the search wraps), but the
 * bytes compared for it lie another origin further: a place p found means QVRingListGetValueAtIndex(ring, p)
 * is pattern[0], and so on. The search ends where fewer than `length` bytes are left up to the place where
 * the next value will be added. Takes time in proportion to capacity times length.
 */
QV_EXPORT QVBoolean QVRingListFindMatchedLocation(void* ringList, const void* pattern, unsigned long length,
                                                  unsigned long start, unsigned long* location) QV_NOTHROW;

QV_END_DECLS

#endif
