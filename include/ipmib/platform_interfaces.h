/* SPDX-License-Identifier: BSD-3-Clause */
/* What a platform can say of its interfaces as such, whatever runs over them. Collectors join every row that carries an
 * ifIndex with the interface tables (IF-MIB), so an agent that has no such tables of its own serves them from here. The
 * module never sees this. */
#ifndef IPMIB_PLATFORM_INTERFACES_H
#define IPMIB_PLATFORM_INTERFACES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Numbers are those of the columns of the same name. */
enum { IPMIB_ADMIN_UP = 1, IPMIB_ADMIN_DOWN = 2 };
enum {
    IPMIB_OPER_UP = 1,
    IPMIB_OPER_DOWN = 2,
    IPMIB_OPER_TESTING = 3,
    IPMIB_OPER_UNKNOWN = 4,
    IPMIB_OPER_DORMANT = 5,
    IPMIB_OPER_NOT_PRESENT = 6,
    IPMIB_OPER_LOWER_LAYER_DOWN = 7
};

typedef struct IpmibInterface {
    uint32_t if_index; /* 1 to 2147483647 */
    uint32_t type;     /* IANAifType */
    uint32_t mtu;      /* octets */
    uint32_t admin_status;
    uint32_t oper_status;
    uint64_t speed;      /* bits a second; 0 when unknown */
    uint64_t changed_ms; /* CLOCK_MONOTONIC when it came into its operational state; 0 when that is not known */
    uint8_t promiscuous; /* 1: it takes frames that are for others */
    uint8_t connector;   /* 1: it is hardware, something can be plugged in */
    uint8_t address_size;
    uint8_t address[32]; /* of the link layer */
    const char *name;    /* these are good until the next call of any hook; never null */
    const char *alias;   /* what the administrator calls it */
} IpmibInterface;

/* All of them wrap around at 2^64. What a platform has no counter for is 0. */
typedef struct IpmibTraffic {
    uint64_t octets; /* with the link layer's headers */
    uint64_t unicast;
    uint64_t multicast;
    uint64_t broadcast;
    uint64_t discards;
    uint64_t errors;
} IpmibTraffic;

typedef struct IpmibInterfaceTraffic {
    IpmibTraffic in;
    IpmibTraffic out;
    uint64_t in_unknown_protocols;
} IpmibInterfaceTraffic;

/* All of these answer 0 when they have filled the record, and something else when there is no such interface. */
typedef struct IpmibInterfaceHooks {
    int (*find)(uint32_t if_index, IpmibInterface *interface);
    /* The one with the next higher ifIndex; behind 0 comes the first. */
    int (*next)(uint32_t if_index, IpmibInterface *interface);
    /* As they are now; one packet of requests sees one reading. */
    int (*traffic)(uint32_t if_index, IpmibInterfaceTraffic *traffic);
    /* How many there are. */
    uint32_t (*count)(void);
    /* CLOCK_MONOTONIC in milliseconds when the last one appeared or vanished; 0 when that was before the start. */
    uint64_t (*rows_changed_ms)(void);
} IpmibInterfaceHooks;

#ifdef __cplusplus
}
#endif

#endif
