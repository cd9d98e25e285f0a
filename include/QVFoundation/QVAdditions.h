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

QV_END_DECLS

#endif
