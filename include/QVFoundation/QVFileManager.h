/*
 * The file manager: questions about paths, and items made, deleted and copied as wholes.
 *
 * The functions use the shared file manager that QVFoundationInit makes. While the library is down they log
 * "QVFoundation is not initialized." and answer false or QVErrMemory. Paths and result codes are those of
 * QVFile.h; in addition QVErrDuplicate says that an item of the name exists.
 *
 *     QVFileManagerMakeDirectory(QVSTR(L"/tmp/out/images"), 1);
 *     QVFileManagerCopyItem(QVSTR(L"/tmp/in/logo.png"), QVSTR(L"/tmp/out/images"));
 */
#ifndef QVFOUNDATION_QVFILEMANAGER_H
#define QVFOUNDATION_QVFILEMANAGER_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** Whether something stands at the path; a link counts when what it leads to exists. */
QV_EXPORT QVBoolean QVFileManagerIsExistsAtPath(void* path) QV_NOTHROW;

/**
 * Makes a directory. With intermediate, the directories on the way are made as well; without, they must
 * exist. An existing directory is fine (0); another item in the way is QVErrDuplicate. Directories made
 * before a failure stay.
 */
QV_EXPORT int QVFileManagerMakeDirectory(void* path, QVBoolean intermediate) QV_NOTHROW;

/** Deletes a file, an empty directory, or a link (and not what it leads to). A directory with items is
 * QVErrIO. */
QV_EXPORT int QVFileManagerDeleteItem(void* path) QV_NOTHROW;

/**
 * Copies a file, or a directory with everything in it, into the destination directory under its own name.
 * Access bits and modification times go along; links inside a directory are copied as links. QVErrDuplicate
 * when the name is taken, QVErrParam for a directory into itself, QVErrIO when a FIFO or device is met. After
 * a failure nothing of the copy is left.
 */
QV_EXPORT int QVFileManagerCopyItem(void* source, void* destination) QV_NOTHROW;

QV_END_DECLS

#endif
