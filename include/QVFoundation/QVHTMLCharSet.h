/*
 * Text for HTML: characters replaced by their named entities.
 *
 * The full table has 65 characters: the four of markup (& " < >) and the Latin-1 letters; the limited table
 * has the four alone. The apostrophe, the non-breaking space and the other Latin-1 symbols are in neither.
 * Each character is replaced on its own, so text that already holds entities is escaped once more: "&amp;"
 * becomes "&amp;amp;".
 *
 * The first replacement registers four dictionaries as singletons (QVLibrary.h), with strings as values,
 * under keys that begin with "org.qvfoundation.QVFoundation.QVString.": HTMLCharSetTo and
 * HTMLCharSetLimitedTo lead from a character to its entity, HTMLCharSetFrom and HTMLCharSetLimitedFrom back,
 * for applications that decode. The library must be up; while it is down each function logs "QVFoundation is
 * not initialized." and answers the object it was given.
 *
 *     // "R&amp;D caf&eacute;", temporary
 *     void* text = QVStringByReplacingToHTMLCharSet(QVSTR(L"R&D caf\u00E9"), 0);
 */
#ifndef QVFOUNDATION_QVHTMLCHARSET_H
#define QVFOUNDATION_QVHTMLCHARSET_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A temporary string: the text with each character that has an entity replaced; with `limited` only the four
 * markup characters. Null for a null string, or when memory runs out.
 */
QV_EXPORT void* QVStringByReplacingToHTMLCharSet(void* string, QVBoolean limited) QV_NOTHROW;

/**
 * A temporary array of the same objects in the same order, each string among them replaced as above. Nested
 * containers are taken over unchanged, as are null elements. Null for a null array, or when memory runs out.
 */
QV_EXPORT void* QVArrayByReplacingToHTMLCharSet(void* array, QVBoolean limited) QV_NOTHROW;

/**
 * A temporary dictionary in which every key and every string value is replaced as above; other values, nested
 * containers among them, are the same objects. Null for a null dictionary, or when memory runs out.
 */
QV_EXPORT void* QVDictionaryByReplacingToHTMLCharSet(void* dictionary, QVBoolean limited) QV_NOTHROW;

QV_END_DECLS

#endif
