/* SPDX-License-Identifier: BSD-3-Clause */
/* What a platform can say of routes: the rows of the IP-FORWARD-MIB, both versions of IP. The module never sees this; a
 * device whose agent has such rows leaves the pointer to these hooks null.
 *
 * There is one row for each next hop of a route. All numbers of enumerations are those of the columns of the same name
 * in inetCidrRouteTable. */
#ifndef IPMIB_PLATFORM_ROUTES_H
#define IPMIB_PLATFORM_ROUTES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* inetCidrRouteType. */
enum {
    IPMIB_ROUTE_OTHER = 1,
    IPMIB_ROUTE_REJECT = 2,   /* packets are thrown away, and the sender is told */
    IPMIB_ROUTE_LOCAL = 3,    /* the destination is on the link */
    IPMIB_ROUTE_REMOTE = 4,   /* by way of a gateway */
    IPMIB_ROUTE_BLACKHOLE = 5 /* packets are thrown away, and nobody is told */
};

/* InetAddressType of a next hop. */
enum {
    IPMIB_NEXT_HOP_NONE = 0,  /* unknown: on the link, or nowhere; 0 octets */
    IPMIB_NEXT_HOP_IPV4 = 1,  /* 4 octets */
    IPMIB_NEXT_HOP_IPV6 = 2,  /* 16 octets */
    IPMIB_NEXT_HOP_IPV4Z = 3, /* 4 octets and 4 of the zone, most significant first */
    IPMIB_NEXT_HOP_IPV6Z = 4  /* 16 octets and 4 of the zone: a link-local gateway */
};

/* What sets rows apart that share destination and next hop, so many numbers, the first one most significant. What they
 * mean is the platform's affair, such as the table (0 for the main one), the metric, the type of service and the
 * interface; all of them are 0 for a row that nothing sets apart. */
enum { IPMIB_ROUTE_POLICY_NUMBERS = 4 };

/* Of no two rows it is the same. It is compared member by member in this order: numbers as such, octets as the octets
 * of a string of which a shorter one is in front of a longer one. That is the order of inetCidrRouteTable. A key that
 * is asked from need not be any row's, and its members may have any values, but for sizes within their arrays. */
typedef struct IpmibRouteKey {
    uint32_t version;        /* of the destination, IPMIB_IPV4 or IPMIB_IPV6; a key with 0 is in front of all rows */
    uint8_t destination[16]; /* in network order; of IPv4 the first 4, and the others are 0 */
    uint32_t prefix_length;  /* 0 to 32, or to 128 bits; the destination's bits behind it are 0 */
    uint32_t policy[IPMIB_ROUTE_POLICY_NUMBERS];
    uint32_t next_hop_type; /* IPMIB_NEXT_HOP_x, of any version whatever the destination's is */
    uint32_t next_hop_size; /* octets */
    uint8_t next_hop[20];   /* those behind the size are 0 */
} IpmibRouteKey;

typedef struct IpmibRoute {
    IpmibRouteKey key;
    uint32_t if_index;    /* 0: none, as of a route to nowhere */
    uint32_t type;        /* IPMIB_ROUTE_x */
    uint32_t protocol;    /* IANAipRouteProtocol: 2 local, 3 netmgmt, 4 icmp, 14 bgp... */
    uint32_t age_s;       /* since it was last changed; since it was first seen, when that is all that is known */
    uint32_t next_hop_as; /* the autonomous system of the next hop; 0 when it is not known */
    uint32_t tos;         /* the type of service that it is for, 0 to 255; 0 for any */
    int32_t metric;       /* inetCidrRouteMetric1, -1 when it has none */
} IpmibRoute;

/* `find` and those like it answer 0 when they have filled the row, and something else when there is none. Key and row
 * may share storage. No function may be null. */
typedef struct IpmibRouteHooks {
    uint32_t size; /* of this record, as the platform knows it: what lies behind is absent */

    /* From now on routes are read and followed; before, there are none, and they cost nothing. May be called again.
     * Does not wait for the reading, which goes on with each `dispatch`. When it fails the error buffer holds one
     * line. */
    int (*follow)(char *error, size_t capacity);
    /* At most so many rows; those that come when there are as many are discards. Said before `follow`. */
    void (*limit)(uint64_t rows);
    /* Whether the first reading has ended, or been given up: 1, or 0 for not yet. A host keeps questions back until
     * then, at most for some seconds; whoever asks nevertheless finds what has been read. It never goes back to 0:
     * where routes have to be read again, rows are meanwhile what was last known. */
    uint32_t (*are_read)(void);

    /* Rows of a version of IP, exactly as many as `next` goes through; in constant time. */
    uint64_t (*count)(uint32_t version);
    /* Valid routes that are no rows because there is no room for them: inetCidrRouteDiscards. */
    uint64_t (*discards)(void);

    int (*find)(const IpmibRouteKey *key, IpmibRoute *row);
    /* The first row behind the key. */
    int (*next)(const IpmibRouteKey *key, IpmibRoute *row);
    /* The row by which a packet to this address (4 or 16 octets) leaves, by destination alone: of those with the
     * longest prefix that the address lies in the first one. */
    int (*match)(uint32_t version, const uint8_t *address, IpmibRoute *row);
} IpmibRouteHooks;

#ifdef __cplusplus
}
#endif

#endif
