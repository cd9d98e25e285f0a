/*
 * Archives: many files in one, written item by item.
 *
 * An archive file is a header followed by items. A file item holds the bytes of one file; a directory item
 * lists the IDs of other items. Items are appended and numbered in the order of their coming, from 2 on; ID 1
 * is the root directory. The library writes archives and has no reader; docs/archive-format.md describes
 * every byte.
 *
 * Result codes: QVErrFileNotFound when no archive has been started, and whatever the files and streams below
 * answer, unchanged. A full disk is always told. An item that could not be written whole is cut off again, so
 * that the archive stays as it was; its ID stays used.
 *
 *     void* archive = QVArchiveCreate();
 *     unsigned int id = 0;
 *     if (QVArchiveNew(archive, archivePath, NULL) == QVNoErr) {
 *         QVArchiveMakeRootDirectory(archive, 100);          // room for 100 IDs; it grows when more come
 *         QVArchiveAddFile(archive, filePath, &id);          // the ID is 2
 *         QVArchiveAddItemIntoDirectory(archive, 1, ids);    // an array that holds the number 2
 *     }
 *     QVRelease(archive);                                    // closes the file
 */
#ifndef QVFOUNDATION_QVARCHIVE_H
#define QVFOUNDATION_QVARCHIVE_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What a handle stands for; `void*` like every handle. */
typedef void* QVArchiveRef;

/** A new archive object without a file, owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVArchiveCreate(void) QV_NOTHROW;

/**
 * Starts a new archive file at the path (a string, retained) and writes its header. An archive that the
 * object had open is closed first. A file that stands at the path is deleted; a directory, FIFO or device
 * there is left alone (QVErrIO).
 *
 * options is a dictionary (retained, so that later changes count) or null. Its keys hold numbers that are
 * read as booleans whenever a file is added; a missing key, and a value that is no number, is false:
 *  - "Compress": file bodies are stored in the compressed block format.
 *  - "Encrypt": reserved; it changes nothing in this version.
 *
 * QVErrParam for a null path and for options that are no dictionary; nothing is closed or deleted then. When
 * the file cannot be opened or its header not be written, the object has no archive open afterwards and no
 * incomplete file is left.
 */
QV_EXPORT int QVArchiveNew(void* archive, void* path, void* options) QV_NOTHROW;

/**
 * Appends the root directory, ID 1, with room for capacity item IDs; it begins empty. QVErrMemory when its
 * 4 + 4 * capacity bytes cannot be had in one piece. Whether the archive has a root already is not checked.
 */
QV_EXPORT int QVArchiveMakeRootDirectory(void* archive, unsigned long capacity) QV_NOTHROW;

/**
 * Appends the file at the path (a string) as a file item and stores the item's ID through itemID, which may
 * be null and is written on success only. The source is read once, in pieces of 1 MiB, and never changed.
 *
 * QVErrFileNotFound when there is no such file; QVErrDirectoryFull when all IDs are used; QVErrIO when the
 * number of bytes read is not the file's size, so also when the file grows meanwhile or is the archive
 * itself. With the "Compress" option, QVErrPermission when the temporary file cannot be made next to the
 * source; it is deleted in every case.
 */
QV_EXPORT int QVArchiveAddFile(void* archive, void* path, unsigned int* itemID) QV_NOTHROW;

/**
 * Appends item IDs, the unsigned 32-bit values of an array's numbers, to a directory's list. When the room
 * does not suffice the directory's body grows to the next multiple of 160 bytes, and what lies behind it
 * moves: that copies the rest of the archive twice, so give all IDs in one call, or the root enough room. The
 * IDs are not checked for being those of items.
 *
 * 0 also when there is no such item, or it is no directory: nothing changes then. QVErrParam for null, for
 * something that is no array and for an element that is no number; QVErrDirectoryFull when the count of
 * entries would pass 32 bits; QVErrFormat when the directory's body on disk is damaged; QVErrPermission when
 * the temporary file for growing cannot be made next to the archive. A growth that fails (a full disk, for
 * example) leaves the new count in the directory, without the entries.
 */
QV_EXPORT int QVArchiveAddItemIntoDirectory(void* archive, unsigned int directoryID,
                                            void* itemIDs) QV_NOTHROW;

QV_END_DECLS

#endif
