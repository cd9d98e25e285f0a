/*
 * Files: one path, and positioned access to the bytes behind it with a 64-bit marker.
 *
 * A path is a string with "/" between its components; a relative one starts in the current directory at the
 * time it is resolved. Text that cannot name a file (an embedded 0, a lone surrogate, a value above U+10FFFF)
 * names none, and an empty path is not found. Setting the path resolves it; from then on the object holds on
 * to that file: a file that has gone does not open, and is not made again, until the path is set once more.
 *
 * Result codes: QVErrFileNotFound (no such file; no path set; file not open), QVErrParam (a bad argument),
 * QVErrPermission (no permission, a read-only place, or not open for writing), QVErrEOF (the end was
 * reached), QVErrMemory, and QVErrIO for everything else. Only regular files open: directories, FIFOs and
 * devices answer QVErrIO, and nothing here ever waits for one.
 *
 *     void* file = QVFileCreate();
 *     QVFileSetPath(file, path);                 // QVErrFileNotFound is normal for a file that is still to
 * be made if (QVFileOpenForWriting(file) == QVNoErr) { QVFileWriteBytes(file, bytes, size, NULL, 1);
 *         QVFileSetSize(file, QVFileGetMarker(file));   // opening does not cut an older file
 *         QVFileClose(file);
 *     }
 *     QVRelease(file);
 */
#ifndef QVFOUNDATION_QVFILE_H
#define QVFOUNDATION_QVFILE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new file object without a path, owned by the caller. When memory runs out it logs
 * "Couldn't allocate the buffer for the QVFile." and answers null. Releasing the last reference closes the
 * file.
 */
QV_EXPORT void* QVFileCreate(void) QV_NOTHROW;

/**
 * Sets the path (a string, retained) and resolves it. 0 when something stands there; QVErrFileNotFound when
 * nothing does, QVErrIO for text that names no file: the path is kept in every case, except that an open file
 * answers QVErrBusy and keeps its old one. Null takes the path away (QVErrFileNotFound). Setting the same
 * string again resolves it again.
 */
QV_EXPORT int QVFileSetPath(void* file, void* path) QV_NOTHROW;

/** The path, borrowed, or null. Moving the file to the trash does not change it. */
QV_EXPORT void* QVFileGetPath(void* file) QV_NOTHROW;

/** Closes the file if it is open, then opens it for reading, the marker at 0. A failure leaves it closed. */
QV_EXPORT int QVFileOpenForReading(void* file) QV_NOTHROW;

/**
 * Closes the file if it is open, then opens it for reading and writing, the marker at 0. A file that is not
 * there is made, in a directory that must be; QVErrFileNotFound also when its name has no text form. An
 * existing file keeps its bytes and its length: cut it with QVFileSetSize. For a file from
 * QVFileCreateTemporary or QVFileCreateUnique the first opening makes the file, and fails with QVErrIO when
 * someone else has made one of that name meanwhile.
 */
QV_EXPORT int QVFileOpenForWriting(void* file) QV_NOTHROW;

/**
 * Moves the marker. Origin 0 and 2: offset bytes from the start; 1: offset bytes from the end (a negative
 * offset moves back). It may stand beyond the end; writing there leaves zeros between. A place before the
 * start, and any other origin, answers QVErrParam and does not move it.
 */
QV_EXPORT int QVFileSetMarker(void* file, int origin, long long offset) QV_NOTHROW;

/** The marker in bytes from the start; 0 when the file is not open. */
QV_EXPORT unsigned long long QVFileGetMarker(void* file) QV_NOTHROW;

/**
 * Reads size bytes at the marker and moves it behind them. Meeting the end answers QVErrEOF. done, which may
 * be null, receives the bytes read on success and with QVErrEOF. Reading 0 bytes succeeds, at the end as
 * well. The last argument has no effect.
 */
QV_EXPORT int QVFileReadBytes(void* file, void* buffer, unsigned long size, unsigned long* done,
                              QVBoolean exact) QV_NOTHROW;

/**
 * Writes size bytes at the marker and moves it behind them. done, which may be null, receives the bytes
 * written on success; after a failure the marker tells how many were. The last argument has no effect.
 */
QV_EXPORT int QVFileWriteBytes(void* file, const void* buffer, unsigned long size, unsigned long* done,
                               QVBoolean exact) QV_NOTHROW;

/** Hands what was written to the system. It does not wait for the disk. */
QV_EXPORT int QVFileFlush(void* file) QV_NOTHROW;

/** The file's size in bytes; 0 when the file is not open. */
QV_EXPORT unsigned long long QVFileGetSize(void* file) QV_NOTHROW;

/** Cuts the file, or extends it with zeros. The marker stays where it is. */
QV_EXPORT int QVFileSetSize(void* file, unsigned long long size) QV_NOTHROW;

/** Closes the file; 0 when it was not open. QVErrBusy when closing failed; the file counts as closed all the
 * same. */
QV_EXPORT int QVFileClose(void* file) QV_NOTHROW;

/**
 * Deletes the file or empty directory that the path named when it was resolved; QVErrFileNotFound when there
 * was none. With toTrash it goes to the user's trash instead, under its name with a running number as
 * extension ("a" becomes "a.1", or the first number that is free). It never replaces anything and is never
 * deleted when the trash cannot take it: QVErrPermission when permission was the reason, else QVErrIO. The
 * object follows the file into the trash. An open file stays open.
 */
QV_EXPORT int QVFileDelete(void* file, QVBoolean toTrash) QV_NOTHROW;

/**
 * A new file object, owned by the caller, whose path names nothing yet: the given path or, when that is
 * taken, the first free one of path.2, path.3, and so on. The file itself is made by QVFileOpenForWriting,
 * readable by its owner only, and goes with the object when the object made it. Null for a null path, when no
 * name can be found, and when memory runs out.
 */
QV_EXPORT void* QVFileCreateTemporary(void* path) QV_NOTHROW;

/** As QVFileCreateTemporary, but the file has ordinary access bits and stays. */
QV_EXPORT void* QVFileCreateUnique(void* path) QV_NOTHROW;

QV_END_DECLS

#endif
