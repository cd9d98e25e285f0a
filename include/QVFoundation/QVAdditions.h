/*
 * Additions: what the library offers beyond its defined interface, each with its reason. Nothing here changes
 * how the rest behaves.
 */
#ifndef QVFOUNDATION_QVADDITIONS_H
#define QVFOUNDATION_QVADDITIONS_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * Drains the calling thread's top temporary pool. Reason: this build observes no event loop by itself, so an
 * application calls it once per turn of its own loop. On a thread without pools, and while the library is
 * down, it does nothing.
 */
QV_EXPORT void QVTemporaryObjectsPoolHandleEvents(void) QV_NOTHROW;

/**
 * A new stream over Data, which is retained, that reads, overwrites in place and grows the Data at its end;
 * owned by the caller. Null for null Data and when memory runs out. Its type ID is 65535. Reason: the stream
 * of QVStreamCreateWithData cannot read and begins again after 1024 bytes.
 *
 * Put bytes are in the Data when the call returns. Results as for a data stream (QVStream.h), except that
 * QVStreamFlush answers 0: an exact read that came short is QVErrReadShort; bytes that the Data cannot take,
 * because it is read-only or cannot grow, are QVErrMemory, and none of them counts as written.
 */
QV_EXPORT void* QVStreamCreateWithMemory(void* data) QV_NOTHROW;

QV_END_DECLS

#endif
