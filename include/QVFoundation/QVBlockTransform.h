/*
 * Block transforms of byte buffers: a block sort with its inverse, and a move-to-front coder. They keep no
 * state and know no handles. Both differ on purpose from the usual methods of these names, and their output
 * is fixed.
 *
 *     unsigned char sorted[3], back[3];
 *     unsigned long primary;
 *     QVBWTEncode(sorted, &primary, (const unsigned char*)"cab", 3);   // "cab", primary index 0
 *     QVBWTDecode(back, sorted, 3, (long)primary);                     // "cab" again
 */
#ifndef QVFOUNDATION_QVBLOCKTRANSFORM_H
#define QVFOUNDATION_QVBLOCKTRANSFORM_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * Sorts the `size` rotations of the input and writes, for each in turn, the byte before its start to `out`
 * (`size` bytes; it may be the input's own buffer). *primaryIndex gets the place of the rotation that starts
 * at byte 1, not 0.
 *
 * The rotations are sorted by their first byte only; those that begin with the same byte stand in the order
 * in which one fixed sorting method leaves them. QVBWTDecode therefore gives the input back only where this
 * happens to be the order of whole rotations, for example when all bytes differ.
 *
 * QVErrNotFound for sizes 0 and 1, where no rotation starts at byte 1 (a single byte is still written);
 * QVErrParam for null arguments; QVErrMemory when there is no memory for 4 bytes of work space for each byte.
 */
QV_EXPORT int QVBWTEncode(unsigned char* out, unsigned long* primaryIndex, const unsigned char* in,
                          unsigned long size) QV_NOTHROW;

/**
 * The inverse: writes `size` bytes to `out`, which may be the input's own buffer. QVErrParam, with nothing
 * written, for a negative size, a primary index that is not below the size (0 is accepted for size 0) and
 * null arguments; QVErrMemory when there is no memory for 4 bytes of work space (8 beyond 2^24) for each
 * byte.
 */
QV_EXPORT int QVBWTDecode(unsigned char* out, const unsigned char* in, long size,
                          long primaryIndex) QV_NOTHROW;

/**
 * Writes the place of each input byte in a list of byte values to `out` (`size` bytes; it may be the input's
 * own buffer). The list begins with the values that occur in the input, ascending; it is not written. A value
 * found behind the front changes places with the value at the front; it is not moved there past the others.
 * QVErrParam for a negative size and null arguments.
 */
QV_EXPORT int QVMTFEncode(unsigned char* out, const unsigned char* in, long size) QV_NOTHROW;

QV_END_DECLS

#endif
