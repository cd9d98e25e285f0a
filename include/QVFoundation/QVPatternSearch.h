/*
 * A search for a run of bytes, from the pattern's end, with its own way of skipping.
 *
 *     unsigned long position;
 *     if (QVBMSearchPattern(text, textLength, (const unsigned char*)"abc", 3, &position)) ...
 */
#ifndef QVFOUNDATION_QVPATTERNSEARCH_H
#define QVFOUNDATION_QVPATTERNSEARCH_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * True, with the place in *position (which may be null), when the pattern is found; else false, with
 * *position unchanged. An empty pattern is never found, nor is anything in a null text.
 *
 * What is found is a place where the pattern stands, but not always the first one, and a pattern that occurs
 * may be missed: after a comparison from the pattern's end the search moves on by the distance from the
 * pattern's end to the leftmost place, in the pattern, of the text byte that differed (at least by 1), and
 * may step over a place. Use the C library for a search that finds every occurrence.
 */
QV_EXPORT QVBoolean QVBMSearchPattern(const unsigned char* text, unsigned long textLength,
                                      const unsigned char* pattern, unsigned long patternLength,
                                      unsigned long* position) QV_NOTHROW;

QV_END_DECLS

#endif
