/*
 * Temporary objects: pools that release what is handed to them.
 *
 * Every thread has its own stack of pools; the top one receives the temporaries. The main thread's bottom
 * pool lives from QVFoundationInit to QVFoundationExit and is drained once per event-loop turn
 * (QVTemporaryObjectsPoolHandleEvents in QVAdditions.h). Any other thread, and any function that makes many
 * temporaries, uses pools of its own:
 *
 *     void* pool = QVTemporaryObjectsPoolCreate();
 *     void* name = QVStringLastPathComponent(path);   // lives in the pool
 *     ...
 *     QVRelease(pool);                                // and goes with it
 *
 * Pools are released in the reverse order of their creation, by the thread that made them. A thread that ends
 * with open pools has them drained.
 */
#ifndef QVFOUNDATION_QVTEMPORARYOBJECTSPOOL_H
#define QVFOUNDATION_QVTEMPORARYOBJECTSPOOL_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new empty pool on top of the calling thread's stack. End it with QVRelease: its last reference drains it.
 * Released while it is not the calling thread's top pool, it logs "The temporary objects pool is not balanced
 * (QVTemporaryObjectsPoolCreate and QVRelease)." and leaks what it holds. Null when memory runs out.
 */
QV_EXPORT void* QVTemporaryObjectsPoolCreate(void) QV_NOTHROW;

/**
 * Gives the caller's reference to the calling thread's top pool, which releases it once when it is drained,
 * and answers the same handle. Without a pool it logs "The temporary objects pool is not created for this
 * thread. The object will leak" and answers the object unchanged. When the pool cannot grow, the object is
 * released and null comes back. Null is passed through.
 */
QV_EXPORT void* QVTEMPOBJ(void* object) QV_NOTHROW;

/**
 * A string with the given text, owned by the top pool and shared with later calls for the same text under
 * that pool: it must not be changed. Without a pool it logs the message of QVTEMPOBJ and answers a new string
 * that nobody releases. Null text is empty text. Null when memory runs out.
 */
QV_EXPORT void* QVSTR(const wchar_t* text) QV_NOTHROW;

/** The calling thread's top pool, borrowed, or null. */
QV_EXPORT void* QVTemporaryObjectsPoolGetFrontPool(void) QV_NOTHROW;

/** Creates the main pool on the calling thread; QVFoundationInit calls it. Does nothing while a main pool
 * exists. */
QV_EXPORT void QVTemporaryObjectsPoolInstallEventsCallBack(void) QV_NOTHROW;

/** Releases the main pool; QVFoundationExit calls it. */
QV_EXPORT void QVTemporaryObjectsPoolRemoveEventsCallBack(void) QV_NOTHROW;

QV_END_DECLS

#endif
