/*
 * The binary object format: numbers, strings, Data, arrays, dictionaries and dates as tagged bytes, in Data,
 * streams and files. docs/binary-format.md has the layout.
 *
 * Numbers keep their native type. What cannot be written is a null element and any other class, linked lists
 * among them. Not everything that is written comes back, and applications know it so:
 *
 * - A BOOLEAN READ ON ITS OWN GIVES ITS VALUE TOGETHER WITH QVErrFormat; an array or dictionary that holds a
 * boolean is written but fails with QVErrFormat when it is read.
 * - A string with the character U+0000 ends there when it is read.
 * - A date whose offset from UTC is no whole number of hours comes back with another offset.
 *
 *     void* data = QVBinaryFormatCreateData(dictionary);       // release it
 *     void* copy = NULL;
 *     if (QVBinaryFormatReadFromData(data, &copy) == QVNoErr)  // copy is temporary
 *         QVRetain(copy);
 */
#ifndef QVFOUNDATION_QVBINARYFORMAT_H
#define QVFOUNDATION_QVBINARYFORMAT_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * The object's bytes as a new Data, owned by the caller. Null when an object in it cannot be written, when a
 * container contains itself or containers are nested more than 10,000 deep, or when memory runs out.
 */
QV_EXPORT void* QVBinaryFormatCreateData(void* object) QV_NOTHROW;

/**
 * Writes the object at the stream's marker and flushes the stream, also after a failure. 0; QVErrParam for
 * null, for an object that cannot be written, for a container that contains itself and for nesting beyond
 * 10,000; QVErrMemory when a string cannot be converted; otherwise the stream's code. What was written before
 * a failure stays.
 */
QV_EXPORT int QVBinaryFormatWriteToStream(void* stream, void* object) QV_NOTHROW;

/**
 * Writes the object to the file at the path (a string), which is created when it is missing and cut behind
 * the object on success. 0, a code of QVBinaryFormatWriteToStream, or the file's code. After a failure an
 * older file may be partly overwritten. The path is not released.
 */
QV_EXPORT int QVBinaryFormatWriteToFile(void* path, void* object) QV_NOTHROW;

/**
 * Reads one object at the stream's marker. On success 0 and a temporary object in `object`; otherwise null
 * there, except for a boolean (above), and
 *
 * - QVErrParam for a null argument,
 * - QVErrFormat for an unknown tag, a boolean, a key that is no string, and nesting beyond 10,000,
 * - QVErrEndOfObjects for an end tag where the object should begin,
 * - QVErrMemory for text that is not UTF-8, and when memory runs out,
 * - otherwise the stream's code, when it ends early or fails.
 *
 * An announced length is believed only as far as the stream delivers bytes.
 */
QV_EXPORT int QVBinaryFormatReadFromStream(void* stream, void** object) QV_NOTHROW;

/** Reads one object from the beginning of a Data, as from a stream; QVErrReadShort when the bytes end early.
 */
QV_EXPORT int QVBinaryFormatReadFromData(void* data, void** object) QV_NOTHROW;

/**
 * Reads one object from the beginning of the file at the path (a string), as from a stream; or the file's
 * code.
 *
 * NOTE: THIS FUNCTION RELEASES THE PATH. The caller hands one reference over in every case but that of a null
 * argument.
 */
QV_EXPORT int QVBinaryFormatReadFromFile(void* path, void** object) QV_NOTHROW;

QV_END_DECLS

#endif
