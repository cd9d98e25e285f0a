/*
 * The Blowfish cipher, one block of 8 bytes a call (type ID 9).
 *
 *     void* cipher = QVBlowfishCreate();                       // chained, random feedback code
 *     QVBlowfishSetKey(cipher, "secret", 6);
 *     unsigned long long start = QVBlowfishGetFeedbackCode(cipher);
 *     QVBlowfishEncryptBlock(cipher, plain, enciphered);       // 8 bytes each
 *     QVBlowfishSetFeedbackCode(cipher, start);                // back to the start of the chain
 *     QVBlowfishDecryptBlock(cipher, enciphered, plain);
 *     QVRelease(cipher);
 *
 * Two things differ from what other libraries do, and files of this library depend on both: a block's two
 * halves are read as little-endian numbers, and the feedback code's high 32 bits meet the first half, its low
 * 32 bits the second.
 *
 * Blowfish is here to read and write the library's own files. Its blocks are small and its feedback codes
 * come from rand(): do not choose it for new secrets.
 *
 * Keys and the tables made of them are wiped when they are replaced and when the cipher dies.
 */
#ifndef QVFOUNDATION_QVBLOWFISH_H
#define QVFOUNDATION_QVBLOWFISH_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** Crypto modes: QVBlowfishSetCryptoMode takes every other value as QVBlowfishModeECB as well. */
enum {
    QVBlowfishModeCBC = 0, /**< each block is chained to the one before; the mode of a new cipher */
    QVBlowfishModeECB = 1  /**< each block alone */
};

/**
 * A new cipher without a key, owned by the caller: chained, with a random feedback code (four calls of
 * QVRandom). Null when memory runs out; nothing is logged.
 */
QV_EXPORT void* QVBlowfishCreate(void) QV_NOTHROW;

/**
 * Prepares the tables for a key of 1 to 56 bytes, which is not kept. False, with the old key still in place,
 * for a null key, for any other length and when memory runs out. Costs as much as enciphering 4 KiB.
 */
QV_EXPORT QVBoolean QVBlowfishSetKey(void* blowfish, const void* key, unsigned long length) QV_NOTHROW;

/**
 * Enciphers the 8 bytes at `in` to the 8 bytes at `out`, which may be the same. Chained, the feedback code
 * becomes the enciphered block; alone, it stays. Without a key the result is zeros and the feedback code
 * stays. A null buffer: nothing happens.
 */
QV_EXPORT void QVBlowfishEncryptBlock(void* blowfish, const void* in, void* out) QV_NOTHROW;

/**
 * Deciphers the 8 bytes at `in` to the 8 bytes at `out`, which may be the same. The feedback code becomes the
 * enciphered block IN BOTH MODES. Without a key the result is zeros and the feedback code stays. A null
 * buffer: nothing happens.
 */
QV_EXPORT void QVBlowfishDecryptBlock(void* blowfish, const void* in, void* out) QV_NOTHROW;

/** Chooses between chained blocks (0) and blocks alone (any other value). Only the low 32 bits are kept. */
QV_EXPORT void QVBlowfishSetCryptoMode(void* blowfish, unsigned long mode) QV_NOTHROW;

/** The mode as it was set. */
QV_EXPORT unsigned long QVBlowfishGetCryptoMode(void* blowfish) QV_NOTHROW;

/** Sets the feedback code that the next chained block meets: the initialisation vector. */
QV_EXPORT void QVBlowfishSetFeedbackCode(void* blowfish, unsigned long long code) QV_NOTHROW;

/** The feedback code: the last enciphered block, unless it was set since. */
QV_EXPORT unsigned long long QVBlowfishGetFeedbackCode(void* blowfish) QV_NOTHROW;

QV_END_DECLS

#endif
