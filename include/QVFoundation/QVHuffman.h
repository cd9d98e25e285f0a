/*
 * Huffman coders: code lengths, canonical codes and the code tree from a table of symbol frequencies, and
 * writing symbols to an output bit stream.
 *
 *     unsigned int counts[] = {1, 1, 2};               // symbols 0, 1 and 2
 *     void* coder = QVHuffmanCreate();
 *     QVHuffmanSetFrequencyTable(coder, counts, 3);    // codes 10, 11 and 0
 *     QVHuffmanEncode(coder, bitStream, 2);            // one bit, 0
 *     QVRelease(coder);
 *
 * Fixed properties that other coders do not share:
 *  - A symbol that is the only one to occur has a code of no bits.
 *  - Lengths are limited to 16 bits. All codes of 15 and 16 bits are zeros, so they cannot be told apart.
 *
 * The tables are lent as library objects that are made when they are first asked for; they are the caller's
 * to read, and changing them does not change the coder.
 */
#ifndef QVFOUNDATION_QVHUFFMAN_H
#define QVFOUNDATION_QVHUFFMAN_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What a handle of this family stands for. */
typedef void* QVHuffmanRef;

/** A new coder without tables (type ID 19), owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVHuffmanCreate(void) QV_NOTHROW;

/**
 * Makes all tables for the symbols 0 .. count - 1 from their frequencies, which are copied. 0; QVErrParam,
 * with nothing changed, for a null or empty table; QVErrParam, with no tables left, when they cannot be made.
 */
QV_EXPORT int QVHuffmanSetFrequencyTable(void* coder, const unsigned int* freqs,
                                         unsigned long count) QV_NOTHROW;

/** Writes the symbol's code to an output bit stream (QVBitStream.h); nothing for a symbol without a code.
 * QVErrParam without tables, for a symbol outside of them and without a stream. */
QV_EXPORT int QVHuffmanEncode(void* coder, void* outputBitStream, unsigned int symbol) QV_NOTHROW;

/** The frequencies as Data: an unsigned 32-bit number for each symbol. Borrowed until the next table is set,
 * as with the three functions below; null without tables or memory. */
QV_EXPORT void* QVHuffmanGetFrequencyTableData(void* coder) QV_NOTHROW;

/** The code lengths as Data: an unsigned 32-bit number for each symbol, 0 for one without a code. */
QV_EXPORT void* QVHuffmanGetBitLengthTableData(void* coder) QV_NOTHROW;

/**
 * The code tree. Each node's context is a Dictionary of Numbers: "code" (signed 32-bit: the symbol, -1 for an
 * inner node), "freq" (unsigned 32-bit: the frequency, an inner node's is the sum of its children's) and
 * "bitLen" (unsigned 32-bit: the depth, for a leaf its code length). With at most one symbol in use it is one
 * node of frequency 1.
 */
QV_EXPORT void* QVHuffmanGetRootTree(void* coder) QV_NOTHROW;

/** The codes as an Array of Numbers: an unsigned 32-bit number for each symbol, with the code in its low
 * bits. */
QV_EXPORT void* QVHuffmanGetBitPatternTable(void* coder) QV_NOTHROW;

QV_END_DECLS

#endif
