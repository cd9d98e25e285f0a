/*
 * Library start and end, the registry of shared objects, the log and two small utilities.
 *
 *     QVFoundationInit();
 *     void* null = QVSingletonGetObject(L"org.qvfoundation.QVFoundation.Null");   // borrowed
 *     QVLog(L"%d items", 3);                                                      // "26/10/15 15:08:30[0] 3
 * items" QVFoundationExit();
 */
#ifndef QVFOUNDATION_QVLIBRARY_H
#define QVFOUNDATION_QVLIBRARY_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * Brings the library up; call it on the main thread before anything else. Calls are counted: only the first
 * does the work (it makes the singleton registry, the main thread's temporary pool, the shared null object
 * and the shared file manager). Always 0. A shared object that cannot be made for lack of memory stays
 * absent.
 */
QV_EXPORT int QVFoundationInit(void) QV_NOTHROW;

/**
 * Takes the library down when it balances the outermost QVFoundationInit: the main temporary pool is drained
 * and the shared objects are released. Always 0. A surplus call is not guarded against: the count goes below
 * zero, and a later QVFoundationInit then only counts back up without building anything.
 */
QV_EXPORT int QVFoundationExit(void) QV_NOTHROW;

/**
 * Registers an object, which is retained, under a key that is copied; an earlier object of that key is
 * released. Note the order: object first. While the library is down it logs "QVFoundation is not
 * initialized." and does nothing.
 */
QV_EXPORT void QVSingletonSetObject(void* object, const wchar_t* key) QV_NOTHROW;

/**
 * The object registered under the key, borrowed, or null. While the library is down it logs
 * "QVFoundation is not initialized." and answers null. The library's own keys begin with
 * "org.qvfoundation.QVFoundation.".
 */
QV_EXPORT void* QVSingletonGetObject(const wchar_t* key) QV_NOTHROW;

/**
 * Writes one line to standard output: "YY/MM/DD hh:mm:ss[n] " and the message, as UTF-8 in every locale. The
 * year is printed less 2000; the month counts from 0 (January is 00); n counts the lines of the process from
 * 0.
 *
 * The format and its arguments are those of swprintf. A message is cut after 511 characters. The finished
 * line passes through a second formatting, in which "%%" becomes "%" and any other percent sign stands as it
 * is: to see one percent sign where two adjoin, write four in the format for each. A null format is an empty
 * message.
 *
 * Standard output is flushed first, then the line goes to its descriptor in one write, so that lines keep
 * their order with what printf or wprintf wrote before. May be called from any thread.
 */
QV_EXPORT void QVLog(const wchar_t* format, ...) QV_NOTHROW;

/** A pseudo-random number, 0 to RAND_MAX, from the C library's rand, seeded with the time on the first call.
 */
QV_EXPORT int QVRandom(void) QV_NOTHROW;

/** The processor's byte order: 1 little-endian, 2 big-endian. */
QV_EXPORT int QVByteOrderGetNativeOrder(void) QV_NOTHROW;

QV_END_DECLS

#endif
