/* SPDX-License-Identifier: BSD-3-Clause */
/* What there is on the device of unsorted_port.c, in the order in which it came to be. */
#ifndef UNSORTED_ROWS_H
#define UNSORTED_ROWS_H

#include <stdint.h>

typedef struct Sixteen {
    uint8_t bytes[16];
} Sixteen;

/* Four words of an address as it is written. */
#define WORD(word)                                                                                                     \
    (uint8_t)((word) >> 24), (uint8_t)((word) >> 16 & 255), (uint8_t)((word) >> 8 & 255), (uint8_t)((word)&255)
#define SIXTEEN(a, b, c, d)                                                                                            \
    {                                                                                                                  \
        {                                                                                                              \
            WORD(a##U), WORD(b##U), WORD(c##U), WORD(d##U)                                                             \
        }                                                                                                              \
    }

enum { OTHER = 1, ETHERNET = 6, PPP = 23, TYPES = 256 };

typedef struct Interface {
    uint32_t if_index, type, has_ipv6, has_ipv4;
    Sixteen link_local; /* zeros: none */
    uint32_t state, mtu, flags;
} Interface;
static const Interface interfaces[] = {
    {70000, ETHERNET, 1, 1, SIXTEEN(0xFE800000, 0x00000000, 0x021B21FF, 0xFE0A0B0C), 0, 1500, 0x270},
    {3, ETHERNET, 1, 1, SIXTEEN(0xFE800000, 0x00000000, 0x021B21FF, 0xFE0A0B03), 0, 9000, 0x276},
    {2147483600, OTHER, 1, 1, SIXTEEN(0xFE800000, 0x00000000, 0x021B21FF, 0xFE0A0B0D), 0, 1280, 0x700},
    {12, ETHERNET, 1, 0, SIXTEEN(0xFE800000, 0x00000000, 0x021B21FF, 0xFE0A0B0E), 64, 1500, 0x500},
    {1, OTHER, 1, 1, SIXTEEN(0x00000000, 0x00000000, 0x00000000, 0x00000000), 0, 65536, 0x500},
    {66051, PPP, 1, 0, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000042), 0, 1492, 0x250},
    {511, ETHERNET, 0, 1, SIXTEEN(0x00000000, 0x00000000, 0x00000000, 0x00000000), 0, 1500, 0},
    {256, ETHERNET, 0, 0, SIXTEEN(0x00000000, 0x00000000, 0x00000000, 0x00000000), 0, 1500, 0},
};

typedef struct Neighbour {
    uint32_t if_index;
    Sixteen address;
    uint32_t type, state, updated_s;
} Neighbour;
static const Neighbour neighbours[] = {
    {3, SIXTEEN(0xFD000000, 0x00000000, 0x00000000, 0x000000AA), 1, 1, 50},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000053), 2, 1, 17},
    {70000, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 1, 2, 60},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x000000FE), 1, 2, 40},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000101), 1, 7, 41},
    {3, SIXTEEN(0xFE800000, 0x00000000, 0x02AABBFF, 0xFE00FF80), 1, 4, 42},
    {3, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 1, 3, 43},
    {70000, SIXTEEN(0x20010DB8, 0x00700000, 0x00000000, 0x00000009), 3, 1, 0},
    {66051, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 0, 5, 4},
    {2147483600, SIXTEEN(0x7F000000, 0x00000000, 0x00000000, 0x00000001), 4, 6, 40},
};

#define FOR_EVER 0xFFFFFFFFU
typedef struct Prefix {
    uint32_t if_index;
    Sixteen prefix;
    uint32_t length, origin, valid_s, preferred_s;
    uint8_t flags;
} Prefix;
static const Prefix prefixes[] = {
    {3, SIXTEEN(0xFD000000, 0x00000000, 0x00000000, 0x00000000), 64, 1, FOR_EVER, FOR_EVER, 0xC0},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000000), 64, 2, FOR_EVER, FOR_EVER, 0xC0},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000000), 48, 2, 604800, 86400, 0x80},
    {3, SIXTEEN(0x20010DB8, 0x00018000, 0x00000000, 0x00000000), 65, 16, 2592000, 604800, 0x40},
    {70000, SIXTEEN(0x20010DB8, 0x00700000, 0x00000000, 0x00000000), 64, 16, 7200, 0, 0xC0},
    {70000, SIXTEEN(0x20010DB8, 0x007000AB, 0x00000000, 0x000000C7), 128, 8, 3600, 3600, 0},
    {1, SIXTEEN(0x00000000, 0x00000000, 0x00000000, 0x00000001), 128, 4, FOR_EVER, FOR_EVER, 0x80},
    {2147483600, SIXTEEN(0x20010DB8, 0xFFFF0000, 0x00000000, 0x00000000), 127, 2, FOR_EVER, FOR_EVER, 0x80},
    {66051, SIXTEEN(0x20020000, 0x00000000, 0x00000000, 0x00000000), 16, 0, FOR_EVER, FOR_EVER, 0x80},
};

typedef struct Address {
    uint32_t if_index;
    Sixteen address;
    uint32_t length, origin, flags, state, created_s, changed_s;
} Address;
static const Address addresses[] = {
    {70000, SIXTEEN(0x20010DB8, 0x00700000, 0x021B21FF, 0xFE0A0B0C), 64, 64, 0, 0, 30, 31},
    {3, SIXTEEN(0xFD000000, 0x00000000, 0x00000000, 0x00000003), 64, 4, 0, 0, 0, 0},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000001), 64, 8, 0, 0, 20, 20},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000000), 64, 8, 1, 0, 20, 20},
    {70000, SIXTEEN(0x20010DB8, 0x007000AB, 0x00000000, 0x000000C7), 128, 16, 0, 4, 30, 39},
    {1, SIXTEEN(0x00000000, 0x00000000, 0x00000000, 0x00000001), 128, 1, 0, 0, 0, 0},
    {2147483600, SIXTEEN(0x20010DB8, 0xFFFF0000, 0x00000000, 0x00000001), 127, 8, 0, 64, 40, 40},
    {66051, SIXTEEN(0x2002C000, 0x02010000, 0x00000000, 0x000000FF), 16, 0, 0, 128, 7, 9},
    {3, SIXTEEN(0x20010DB8, 0x00018000, 0x00000000, 0x00008000), 65, 128, 0, 0, 20, 20},
    {3, SIXTEEN(0x20010DB8, 0x0001FFFF, 0x00000000, 0x00000001), 48, 8, 0, 0, 20, 20},
};

typedef struct Router {
    uint32_t if_index;
    Sixteen address;
    uint32_t flags, lifetime_s, learned_at_s;
} Router;
static const Router routers[] = {
    {70000, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 0x08000000, 1800, 20},
    {3, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 0x18000000, 65535, 0},
    {66051, SIXTEEN(0xFE800000, 0x00000000, 0x00000000, 0x00000001), 0, 30, 5},
    {3, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000053), 0, 65535, 0},
    {70000, SIXTEEN(0x20010DB8, 0x00010000, 0x00000000, 0x00000053), 0, 65535, 0},
    {12, SIXTEEN(0xFE800000, 0x00000000, 0x02AABBFF, 0xFE00FF80), 0x18000000, 0, 7},
};

#endif
