/*
 * Strings: mutable sequences of wide characters, one code point each.
 *
 *     void* path = QVStringCreateWithCString("/home/ann");            // UTF-8 in
 *     void* name = QVStringCreateWithWideString(L"notes.txt");
 *     void* file = QVStringByAppendingPathComponent(path, name);      // temporary: "/home/ann/notes.txt"
 *     QVStringFindString(file, name, 0);                              // 10
 *     QVRelease(name);
 *     QVRelease(path);
 *
 * A string may hold any code point, also 0. The characters are always followed by a terminating 0 in memory.
 * Comparing stops at the first 0 of either text; appending and finding use the other string up to its
 * first 0.
 *
 * Places and lengths count characters. A string holds fewer than 2^32 of them: what would make it longer
 * fails as running out of memory does. In-place operations that run out of memory leave the string as it was
 * and report nothing.
 *
 * Functions that create a string answer null when memory runs out and log "Couldn't allocate the instance of
 * QVString." (from a C string) or "Couldn't allocate the instance of the QVString." (all others); a copy or a
 * sub-string whose text finds no room logs "Couldn't allocate the buffer for the string.". Functions whose
 * names begin with QVStringBy, and QVStringUpperCaseString, QVStringLowerCaseString and
 * QVStringLastPathComponent, give temporary strings.
 *
 * Beside the general rules on null: a null string to be appended, joined or put in place of another changes
 * nothing, and a null string is not found.
 */
#ifndef QVFOUNDATION_QVSTRING_H
#define QVFOUNDATION_QVSTRING_H

#include <QVFoundation/QVHashValue.h>
#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** The answer of a search that found nothing. */
#define QVStringNotFound 0xFFFFFFFFUL

/** A stretch of a string; both fields count characters. */
typedef struct QVRange {
    int location;
    int length;
} QVRange;

/** How lines end. */
typedef int QVLineBreakType;
enum {
    QVLineBreakNone = 0,
    QVLineBreakLF = 1,           /**< U+000A */
    QVLineBreakCR = 2,           /**< U+000D */
    QVLineBreakCRLF = 3,         /**< U+000D U+000A */
    QVLineBreakLineSeparator = 4 /**< U+2028 */
};

/** An empty string. */
QV_EXPORT void* QVStringCreate(void) QV_NOTHROW;

/**
 * A string from the bytes up to the first 0, read as UTF-8. Bytes that are not valid UTF-8 give an empty
 * string.
 */
QV_EXPORT void* QVStringCreateWithCString(const char* text) QV_NOTHROW;

/**
 * A string from `length` bytes, read as UTF-8; 0 bytes become characters 0. Bytes that are not valid UTF-8
 * give an empty string, and so does a null pointer. 2^32 bytes and more count as too long.
 */
QV_EXPORT void* QVStringCreateWithCStringAndLength(const char* text, unsigned long length) QV_NOTHROW;

/** A string from the characters up to the first 0. */
QV_EXPORT void* QVStringCreateWithWideString(const wchar_t* text) QV_NOTHROW;

/**
 * A string from `length` characters, which may hold 0s. A null pointer gives an empty string, whatever the
 * length.
 */
QV_EXPORT void* QVStringCreateWithWideStringAndLength(const wchar_t* text, unsigned long length) QV_NOTHROW;

/**
 * A string from a format of swprintf and its arguments: "%ls" for `const wchar_t*`, "%C" for a character. The
 * result ends at its first 0. When an argument cannot be converted, the text in front of it is the result.
 * Results beyond 2^26 characters are cut. Null, without a log line, when the buffer cannot be allocated.
 */
QV_EXPORT void* QVStringCreateWithFormat(void* format, ...) QV_NOTHROW;

/** The 16 bytes of the hash as 32 upper-case hexadecimal digits, the lowest byte of A first. */
QV_EXPORT void* QVStringCreateWithHashValue128(QVHashValue128 value) QV_NOTHROW;

/** A new string with the same characters. */
QV_EXPORT void* QVStringCreateCopy(void* string) QV_NOTHROW;

/**
 * A new string with the characters of the range, which is never an error: it is clipped to the string, and a
 * negative location or a length that is not positive gives an empty string.
 */
QV_EXPORT void* QVStringCreateSubString(void* string, QVRange range) QV_NOTHROW;

/** The characters, followed by a 0; valid until the string is changed or destroyed. */
QV_EXPORT const wchar_t* QVStringGetBuffer(void* string) QV_NOTHROW;

/** The number of characters. */
QV_EXPORT unsigned long QVStringGetLength(void* string) QV_NOTHROW;

/** The character at the index; 0 at the length and beyond. */
QV_EXPORT wchar_t QVStringGetCharacterAtIndex(void* string, unsigned long index) QV_NOTHROW;

/** Orders two strings as wcscmp does: only the sign counts. Null stands below every string. */
QV_EXPORT int QVStringCompare(void* string1, void* string2) QV_NOTHROW;

/** The same for the upper-case forms of both. */
QV_EXPORT int QVStringCaseInsensitiveCompare(void* string1, void* string2) QV_NOTHROW;

/** A temporary string with each character mapped to upper case by itself, as the current locale has it. */
QV_EXPORT void* QVStringUpperCaseString(void* string) QV_NOTHROW;

/** A temporary string with each character mapped to lower case by itself, as the current locale has it. */
QV_EXPORT void* QVStringLowerCaseString(void* string) QV_NOTHROW;

/**
 * The name after the last "/", as a temporary string; one "/" at the very end does not count. "a/b/" gives
 * "b", "/" and "" give "", "abc" gives "abc".
 */
QV_EXPORT void* QVStringLastPathComponent(void* string) QV_NOTHROW;

/**
 * Everything up to and including the last "/", as a temporary string: "/a/b" gives "/a/", "a/b/" stays,
 * "name" gives "".
 */
QV_EXPORT void* QVStringByDeletingLastPathComponent(void* string) QV_NOTHROW;

/**
 * Both joined as a temporary string, with a "/" in between unless one of them is empty, the string ends with
 * one or the component begins with one. "a/" and "/b" give "a//b".
 */
QV_EXPORT void* QVStringByAppendingPathComponent(void* string, void* component) QV_NOTHROW;

/** The same with ".": "file" and "txt", "file." and "txt", "file" and ".txt" all give "file.txt". */
QV_EXPORT void* QVStringByAppendingPathExtension(void* string, void* extension) QV_NOTHROW;

/**
 * A temporary string in which the first "~", wherever it stands, is the user's home directory: HOME where
 * that is an absolute path, else the password database's. What stands before and behind it goes up to its
 * first 0. A string without "~", or a user without a home, gives a copy.
 */
QV_EXPORT void* QVStringByExpandingTildeInPath(void* string) QV_NOTHROW;

/** The hexadecimal number that the string begins with, modulo 2^32; 0 without one. "0x1F" is 0. */
QV_EXPORT unsigned long QVStringHexUIntValue(void* string) QV_NOTHROW;

/** Appends the other string, up to its first 0. A string may be appended to itself. */
QV_EXPORT void QVStringAppendString(void* string, void* other) QV_NOTHROW;

/** Removes the leading white space, as the current locale has it. */
QV_EXPORT void QVStringTrimLeft(void* string) QV_NOTHROW;

/** Removes the trailing white space, but never looks at the first character: "   " becomes " ". */
QV_EXPORT void QVStringTrimRight(void* string) QV_NOTHROW;

/** QVStringTrimLeft, then QVStringTrimRight: this does empty a string of white space. */
QV_EXPORT void QVStringTrim(void* string) QV_NOTHROW;

/** Removes up to `length` characters from `location` on. A location beyond the end changes nothing. */
QV_EXPORT void QVStringErase(void* string, unsigned long location, unsigned long length) QV_NOTHROW;

/**
 * Puts the whole replacement in place of up to `length` characters from `location` on. A location beyond the
 * end changes nothing. A string may replace a part of itself.
 */
QV_EXPORT void QVStringReplaceString(void* string, void* replacement, unsigned long location,
                                     unsigned long length) QV_NOTHROW;

/**
 * The index of the first occurrence at or after `start`, or QVStringNotFound. Nothing is found from a start
 * beyond the end; an empty string is found at the start.
 */
QV_EXPORT unsigned long QVStringFindString(void* string, void* searched, unsigned long start) QV_NOTHROW;

/** The kind of the first line break; a CR right before a LF is a CR LF. */
QV_EXPORT QVLineBreakType QVStringGetLineBreakType(void* string) QV_NOTHROW;

/**
 * Replaces every `from` break, literally and from left to right, by a `to` break: CR to LF turns each CR LF
 * into LF LF. Types other than the four breaks change nothing.
 */
QV_EXPORT void QVStringConvertLineBreak(void* string, QVLineBreakType from, QVLineBreakType to) QV_NOTHROW;

QV_END_DECLS

#endif
