/*
 * The sliding dictionary: the last 8192 bytes appended to it, and the longest earlier occurrence of what
 * comes next. The block compressor (QVDeflate.h) is made with it.
 *
 *     void* dictionary = QVLZSSCreate();
 *     for (const char* c = "abcabc"; *c != 0; ++c) QVLZSSAppendValue(dictionary, (unsigned char)*c);
 *     unsigned short offset;
 *     unsigned char length;
 *     QVLZSSSearchSlideDic(dictionary, "abcabcabcX", 10, &offset, &length);   // true: offset 0, length 6
 *     QVRelease(dictionary);
 */
#ifndef QVFOUNDATION_QVLZSS_H
#define QVFOUNDATION_QVLZSS_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What a handle of this family stands for. */
typedef void* QVLZSSRef;

/** A new, empty dictionary (type ID 21), owned by the caller. It takes all its memory, about 800 KiB, here;
 * null when that is not to be had. */
QV_EXPORT void* QVLZSSCreate(void) QV_NOTHROW;

/**
 * Appends one byte; from the 8193rd on the oldest one is dropped. When 8192 bytes have been dropped, and then
 * after every 8192 more, the dictionary starts over in its memory without moving the bytes: from then on its
 * lower half compares as the first 8192 bytes it was ever given. This is fixed, as compressed data depends on
 * it.
 */
QV_EXPORT void QVLZSSAppendValue(void* dictionary, unsigned char value) QV_NOTHROW;

/**
 * Finds the longest match with the first bytes of the lookahead, the oldest of equal ones. True when there is
 * one of at least 3 bytes; only then are `offset` (its place, counted from the oldest byte held) and `length`
 * (at most 255, and never more than the bytes held) set. Either may be null. A match may run beyond the
 * newest byte: what the dictionary's memory holds there, zeros at first and dropped bytes later, counts. The
 * search itself changes nothing that can be seen.
 */
QV_EXPORT QVBoolean QVLZSSSearchSlideDic(void* dictionary, const void* lookahead, unsigned long size,
                                         unsigned short* offset, unsigned char* length) QV_NOTHROW;

QV_END_DECLS

#endif
