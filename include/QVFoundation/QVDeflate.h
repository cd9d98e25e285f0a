/*
 * The block compressor. Its format is its own (docs/compressed-blocks.md): it is no RFC 1951 stream, and the
 * library has no decoder for it.
 *
 *     void* encoder = QVDeflateCreate();
 *     int code = QVDeflateEncode(encoder, destinationStream, sourceStream);
 *     QVRelease(encoder);
 */
#ifndef QVFOUNDATION_QVDEFLATE_H
#define QVFOUNDATION_QVDEFLATE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What a handle of this family stands for. */
typedef void* QVDeflateRef;

/** A new encoder (type ID 22), owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVDeflateCreate(void) QV_NOTHROW;

/**
 * Compresses the source from its marker to its end into the destination, and flushes that; both are streams
 * (QVStream.h). Every 32768 bytes of the source make a block; an empty source makes no output. What has been
 * written when a call fails stays written. It takes about 1 MiB of memory while it runs.
 *
 * 0; QVErrParam for a null stream and when both are the same; QVErrMemory without memory; otherwise what
 * reading the source, writing the destination or flushing it failed with. A source that ends before its
 * announced size gives what an exact read gives there.
 */
QV_EXPORT int QVDeflateEncode(void* encoder, void* destination, void* source) QV_NOTHROW;

QV_END_DECLS

#endif
