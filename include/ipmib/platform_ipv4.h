/* SPDX-License-Identifier: BSD-3-Clause */
/* What a platform can say of IPv4: addresses and neighbours. The tables of IPv6 leave IPv4 out, and collectors read it
 * from the older tables (ipAddrTable, ipNetToMediaTable), so an agent that has none of its own serves them from here.
 * The module never sees this. */
#ifndef IPMIB_PLATFORM_IPV4_H
#define IPMIB_PLATFORM_IPV4_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* An address is a number here: 192.0.2.1 is 0xC0000201. */

typedef struct IpmibIpv4Address {
    uint32_t address;        /* not 0 */
    uint32_t if_index;       /* 1 to 2147483647 */
    uint8_t prefix_length;   /* 0 to 32 bits */
    uint8_t broadcast_bit;   /* the lowest bit of its broadcast address, also of 255.255.255.255 */
    uint16_t reassembly_max; /* octets of the largest datagram that is put together from fragments */
} IpmibIpv4Address;

/* Numbers are those of ipNetToMediaType. */
enum { IPMIB_MEDIA_OTHER = 1, IPMIB_MEDIA_INVALID = 2, IPMIB_MEDIA_DYNAMIC = 3, IPMIB_MEDIA_STATIC = 4 };

typedef struct IpmibIpv4Neighbour {
    uint32_t if_index; /* 1 to 2147483647 */
    uint32_t address;
    uint32_t type;
    uint8_t link_layer_size; /* 0 when it has none, or none that is known */
    uint8_t link_layer[32];
} IpmibIpv4Neighbour;

/* All of these answer 0 when they have done what they were asked for; those that fill a record answer something else
 * when there is no such row. */
typedef struct IpmibIpv4Hooks {
    /* From now on the rows are there, and are followed; before, the other functions find none. For an agent that does
     * not serve them they cost nothing. When it fails the error buffer holds one line. */
    int (*follow)(char *error, size_t capacity);
    /* Of an address that several interfaces have: the one on the lowest ifIndex, for the table has one row for it. */
    int (*find_address)(uint32_t address, IpmibIpv4Address *row);
    /* The next higher one; behind 0 comes the first. */
    int (*next_address)(uint32_t address, IpmibIpv4Address *row);
    int (*find_neighbour)(uint32_t if_index, uint32_t address, IpmibIpv4Neighbour *row);
    /* The next one by ifIndex, and on an interface by address; there need not be one with this index. */
    int (*next_neighbour)(uint32_t if_index, uint32_t address, IpmibIpv4Neighbour *row);
} IpmibIpv4Hooks;

#ifdef __cplusplus
}
#endif

#endif
