/*
 * Style sheets: a tolerant scanner that hands out one rule at a time as an element, and puts an element's
 * text back.
 *
 * The parser works on a string that it retains and does not copy: replacing an element edits that very
 * string. Positions and lengths count characters. The scanner knows one level: an "@media" rule yields an
 * element for its head alone, the rules inside follow as elements of their own, and so does the "}" that
 * closes the block.
 *
 *     void* parser = QVCSSParserCreateWithString(sheet);
 *     unsigned int start = 0, length = 0;
 *     void* element;
 *     while ((element = QVCSSParserFindNextCSSElement(parser, start + length, &start, &length, NULL)) !=
 * NULL) QVLog(L"%ls", QVStringGetBuffer(QVCSSElementGetString(element)));
 */
#ifndef QVFOUNDATION_QVCSSPARSER_H
#define QVFOUNDATION_QVCSSPARSER_H

#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** A new parser over the string, which is retained; owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVCSSParserCreateWithString(void* string) QV_NOTHROW;

/**
 * Finds and parses the next rule at or after `start`: a temporary element, or null when no rule is left
 * (white space and comments do not count) or memory runs out.
 *
 * outStart, outLength: where the rule stands, up to and including its closing "}" or ";"; 0 without an
 * element. The rule begins at the first character that is no control character and opens no comment, so white
 * space before a selector belongs to it. outError: 0, or QVErrSyntax when something other than white space or
 * a comment stood between a selector and its "{". Each of the three may be null.
 *
 * Comments are dropped from selectors, names and values. The selectors are the parts between white space and
 * commas. A property that the text ends in, or that has no ":" before the "}", is left out. A name that is
 * set twice keeps its last value and stands twice in the order.
 */
QV_EXPORT void* QVCSSParserFindNextCSSElement(void* parser, unsigned int start, unsigned int* outStart,
                                              unsigned int* outLength, int* outError) QV_NOTHROW;

/**
 * The first rule at or after `start` whose first selector equals the given string, ignoring case, as a
 * temporary element; null, with 0 in the outs, when there is none. Each out may be null.
 */
QV_EXPORT void* QVCSSParserFindCSSElementWithSelector(void* parser, void* selector, unsigned int start,
                                                      unsigned int* outStart,
                                                      unsigned int* outLength) QV_NOTHROW;

/**
 * Replaces `length` characters at `start` of the parser's string by the element's text. THAT TEXT HAS NO
 * CLOSING "}" (QVCSSElementGetString), although the range of a found rule includes it. An element without
 * text, and a start beyond the end, change nothing.
 */
QV_EXPORT void QVCSSParserReplaceCSSElement(void* parser, void* element, unsigned int start,
                                            unsigned int length) QV_NOTHROW;

/**
 * Makes the element a "@charset" rule: its selectors become "@charset" and the encoding's MIME name in double
 * quotes with a semicolon. An encoding without such a name leaves the element alone. The library must be up
 * (QVGetMIMECharSetName).
 */
QV_EXPORT void QVCSSParserSetCharSet(void* parser, void* element, QVEncodingInfo encoding) QV_NOTHROW;

/** A new "@charset" element for the encoding, owned by the caller; null when the encoding has no MIME name.
 */
QV_EXPORT void* QVCSSParserCreateCharSetElement(void* parser, QVEncodingInfo encoding) QV_NOTHROW;

/** A new element without selectors and properties, owned by the caller; null when memory runs out. */
QV_EXPORT void* QVCSSElementCreate(void) QV_NOTHROW;

/** Sets the selectors, an array of strings, which is retained; null is allowed. */
QV_EXPORT void QVCSSElementSetSelectors(void* element, void* selectors) QV_NOTHROW;
/** The selectors, borrowed; null is possible. */
QV_EXPORT void* QVCSSElementGetSelectors(void* element) QV_NOTHROW;

/** Sets the properties, a dictionary from name to value string, which is retained; null is allowed. */
QV_EXPORT void QVCSSElementSetProperties(void* element, void* properties) QV_NOTHROW;
/** The properties, borrowed; null is possible. */
QV_EXPORT void* QVCSSElementGetProperties(void* element) QV_NOTHROW;

/** Sets the order of the properties, an array of names, which is retained; null is allowed. */
QV_EXPORT void QVCSSElementSetPropertyOrder(void* element, void* order) QV_NOTHROW;
/** The order of the properties, borrowed; null is possible. */
QV_EXPORT void* QVCSSElementGetPropertyOrder(void* element) QV_NOTHROW;

/**
 * The element's text as a temporary string: the selectors joined by ", " (a single space first when the first
 * selector begins with "@"), then, when there are properties, " {" and a line "\tNAME: VALUE;" for each name
 * of the order that has a value. NO CLOSING "}" IS WRITTEN: the text is defined so, and callers that need it
 * append it. Null for an element without selectors, or when memory runs out. Selectors, names and values that
 * are no strings are left out.
 */
QV_EXPORT void* QVCSSElementGetString(void* element) QV_NOTHROW;

QV_END_DECLS

#endif
