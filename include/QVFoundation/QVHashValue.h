/*
 * A 128-bit hash as a value.
 */
#ifndef QVFOUNDATION_QVHASHVALUE_H
#define QVFOUNDATION_QVHASHVALUE_H

#include <stdint.h>

/**
 * Four words that lie in memory as the 16 bytes of the hash do on a little-endian machine: A's lowest byte
 * comes first. Passed by value.
 */
typedef struct QVHashValue128 {
    uint32_t A;
    uint32_t B;
    uint32_t C;
    uint32_t D;
} QVHashValue128;

#endif
