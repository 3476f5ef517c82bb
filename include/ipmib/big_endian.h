/* SPDX-License-Identifier: BSD-3-Clause */
/* A number that lies in memory most significant byte first on every machine, as a type of its own: reading or writing
 * it without the conversion does not compile. */
#ifndef IPMIB_BIG_ENDIAN_H
#define IPMIB_BIG_ENDIAN_H

#include <stdint.h>

typedef struct IpmibBe32 {
    uint32_t raw; /* bytes in network order; only the two functions below look at it */
} IpmibBe32;

/* The number that the field holds, in machine order. */
static inline uint32_t ipmib_be32_get(IpmibBe32 field)
{
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return field.raw;
#else
    return __builtin_bswap32(field.raw);
#endif
}

/* The field that holds a number given in machine order. */
static inline IpmibBe32 ipmib_be32(uint32_t value)
{
    IpmibBe32 field;
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    field.raw = value;
#else
    field.raw = __builtin_bswap32(value);
#endif
    return field;
}

/* The number held by four bytes in network order at any alignment. */
static inline uint32_t ipmib_be32_read(const uint8_t *bytes)
{
    return ((uint32_t)bytes[0] << 24) | ((uint32_t)bytes[1] << 16) | ((uint32_t)bytes[2] << 8) | (uint32_t)bytes[3];
}

#endif
