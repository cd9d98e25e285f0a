/*
 * QVFoundation: the rules of the whole interface, handles, result codes and the functions every object
 * answers.
 *
 * Handles. Every object is reached through a handle, an untyped pointer (`void*`). The aliases below
 * (QVStringRef and so on) only tell a reader what a handle stands for; all of them are `void*`.
 *
 * Ownership. A function whose name holds Create or Copy gives an object with one reference that the caller
 * owns and gives back with QVRelease. A function whose name begins with Get lends a handle that stays valid
 * while its owner lives. A function that says it returns a temporary object parks it in the calling thread's
 * topmost temporary pool (QVTemporaryObjectsPool.h); retain it to keep it longer. Containers retain what they
 * hold and release it when they drop it.
 *
 * Null. A null handle never crashes: the function answers null, 0, false or QVErrParam, or does nothing; a
 * search answers "not found". Null text is empty text. A null buffer with a size is refused; with size 0 it
 * is fine. Where a family treats null in another way, its header says so. No function checks that a handle
 * has the right class: passing a number to a string function is a programming error.
 *
 * Failures. No C++ exception leaves the library. Out of memory is null, false or QVErrMemory, as each
 * function says.
 *
 * Booleans are one unsigned byte (QVBoolean). Any non-zero argument counts as true; results are 0 or 1.
 *
 * Threads. The library starts none. Objects carry no locks and their counts are not atomic: an object is used
 * by one thread at a time. Temporary pools belong to the thread that made them.
 *
 * Diagnostics are lines on standard output; see QVLog in QVLibrary.h.
 *
 *     void* text = QVStringCreateWithCString("hello");   // one reference, ours
 *     QVArrayAddObject(array, text);                     // the array takes its own
 *     QVRelease(text);                                   // ours is given back; the array's stays
 */
#ifndef QVFOUNDATION_QVOBJECT_H
#define QVFOUNDATION_QVOBJECT_H

#include <stddef.h>
#include <wchar.h>

#ifdef __cplusplus
#define QV_BEGIN_DECLS extern "C" {
#define QV_END_DECLS }
#define QV_NOTHROW noexcept
#else
#define QV_BEGIN_DECLS
#define QV_END_DECLS
#define QV_NOTHROW
#endif

#if defined(__GNUC__)
#define QV_EXPORT __attribute__((visibility("default")))
#else
#define QV_EXPORT
#endif

QV_BEGIN_DECLS

/** A boolean of the interface: 0 is false; results are 0 or 1. */
typedef unsigned char QVBoolean;

/** What a handle stands for. All are `void*`; the names serve the reader only. */
typedef void* QVObjectRef;
typedef void* QVStringRef;
typedef void* QVNumberRef;
typedef void* QVDataRef;
typedef void* QVArrayRef;
typedef void* QVEnumeratorRef;
typedef void* QVLinkedListRef;
typedef void* QVDictionaryRef;
typedef void* QVTreeRef;
typedef void* QVFileRef;
typedef void* QVStreamRef;
typedef void* QVTemporaryObjectsPoolRef;

/** Result codes: 0 is success, every failure is negative. One table serves the whole library. */
enum {
    QVNoErr = 0,               /**< success */
    QVErrNotFound = -1,        /**< not found, or the operation could not proceed */
    QVErrParam = -2,           /**< a bad argument: null, or a value out of range */
    QVErrMemory = -4,          /**< a buffer or object could not be allocated or grown */
    QVErrFormat = -5,          /**< input data is malformed */
    QVErrSyntax = -9,          /**< text to be parsed breaks the grammar */
    QVErrFileNotFound = -100,  /**< no such file or directory, no path set, or nothing open */
    QVErrIO = -101,            /**< any other file-system error */
    QVErrDuplicate = -102,     /**< the item to be created already exists */
    QVErrPermission = -104,    /**< access refused */
    QVErrBusy = -105,          /**< the file is open, so its path cannot be changed; or closing failed */
    QVErrEOF = -106,           /**< the end of a file was reached */
    QVErrHashMismatch = -400,  /**< an encrypted container's fingerprint does not match its contents */
    QVErrBitsShort = -500,     /**< an exact bit read delivered fewer bits than asked */
    QVErrWriteShort = -501,    /**< an exact write moved fewer bytes or bits than asked */
    QVErrReadShort = -502,     /**< an exact read from Data delivered fewer bytes than asked */
    QVErrDirectoryFull = -600, /**< an archive directory or the archive's item IDs are exhausted */
    QVErrEndOfObjects = -700   /**< the end tag was read where an object was expected */
};

/** Type identifiers, as QVGetTypeID gives them. 5, 24 and 30 belong to no class and are not reused. */
enum {
    QVTypeIDNumber = 1,
    QVTypeIDArrayEnumerator = 2,
    QVTypeIDString = 3,
    QVTypeIDData = 4,
    QVTypeIDArray = 6,
    QVTypeIDLinkedList = 7,
    QVTypeIDMD5 = 8,
    QVTypeIDBlowfish = 9,
    QVTypeIDCrypto = 10,
    QVTypeIDInputBitStream = 11,
    QVTypeIDOutputBitStream = 12,
    QVTypeIDFile = 13,
    QVTypeIDDictionary = 14,
    QVTypeIDFileStream = 15,
    QVTypeIDTree = 16, /**< trees and XML trees: every consumer treats an XML tree as a tree */
    QVTypeIDArchive = 17,
    QVTypeIDNull = 18,
    QVTypeIDHuffman = 19,
    QVTypeIDRingList = 20,
    QVTypeIDLZSS = 21,
    QVTypeIDDeflate = 22,
    QVTypeIDLinkedListEnumerator = 23,
    QVTypeIDDataStream = 25,
    QVTypeIDScanner = 26,
    QVTypeIDFileManager = 27,
    QVTypeIDTemporaryObjectsPool = 28,
    QVTypeIDDate = 29,
    QVTypeIDUnregistered = 65535 /**< classes without an identifier of their own */
};

/** Adds a reference. Answers the same handle, so that it can stand in an assignment; null gives null. */
QV_EXPORT void* QVRetain(void* object) QV_NOTHROW;

/**
 * Gives a reference back; the last one destroys the object. Null is ignored. However deeply containers are
 * nested, releasing them needs little stack: beyond a small depth the destruction is put off until the
 * outermost release.
 */
QV_EXPORT void QVRelease(void* object) QV_NOTHROW;

/** The number of references; 0 for null. */
QV_EXPORT unsigned long QVGetRetainCount(void* object) QV_NOTHROW;

/** The object's type identifier (QVTypeID...); 0 for null. */
QV_EXPORT unsigned short QVGetTypeID(void* object) QV_NOTHROW;

/**
 * Reserved: no class of the library has a generic copy, so this always answers null and logs
 * "The object is not support CreateCopy method." (null logs nothing). The copy functions of the families,
 * such as QVStringCreateCopy, are the working ones.
 */
QV_EXPORT void* QVCreateCopy(void* object) QV_NOTHROW;

/**
 * Orders two objects by identity: 0 for the same object, -1 when object1 lies at the lower address, else 1.
 * Null stands below every object; null and null are equal. Objects with equal contents are not equal here.
 */
QV_EXPORT int QVCompareObject(void* object1, void* object2) QV_NOTHROW;

/** The object's native counterpart, borrowed. This build has no native objects: always null. */
QV_EXPORT void* QVGetNSObject(void* object) QV_NOTHROW;

/** A new native counterpart, owned by the caller. This build has no native objects: always null. */
QV_EXPORT void* QVCreateCFObject(void* object) QV_NOTHROW;

/** Reserved: always null, whatever it is given. */
QV_EXPORT void* QVCreateData(void* object) QV_NOTHROW;

/**
 * A new null object (type ID 18), owned by the caller: it stands for the absence of a value where a
 * collection needs an object. Null when memory runs out. Each call makes a new object.
 */
QV_EXPORT void* QVNullCreate(void) QV_NOTHROW;

/**
 * A new callback object (type ID 65535), owned by the caller: it carries a function's address and a context
 * through interfaces that take only handles. Neither is looked at or owned; both may be null. Who receives
 * the callback calls the address with arguments of its own followed by the context. Null when memory runs
 * out.
 *
 *     void* callback = QVCallBackCreate((void*)&OnItem, &state);
 */
QV_EXPORT void* QVCallBackCreate(void* address, void* context) QV_NOTHROW;

/** The function address given at creation. */
QV_EXPORT void* QVCallBackGetAddress(void* callback) QV_NOTHROW;

/** The context given at creation. */
QV_EXPORT void* QVCallBackGetContext(void* callback) QV_NOTHROW;

QV_END_DECLS

#endif
