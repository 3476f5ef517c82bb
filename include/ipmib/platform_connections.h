/* SPDX-License-Identifier: BSD-3-Clause */
/* What a platform can say of TCP connections and UDP endpoints: the rows of the tables of the TCP-MIB and the UDP-MIB,
 * both versions of IP. The module never sees this; a device whose agent has such rows leaves the pointer to these hooks
 * null. */
#ifndef IPMIB_PLATFORM_CONNECTIONS_H
#define IPMIB_PLATFORM_CONNECTIONS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The tables, whose rows have the same form. */
enum {
    IPMIB_TCP_CONNECTIONS = 0, /* tcpConnectionTable: none that listen; no instances, which are 0 */
    IPMIB_TCP_LISTENERS = 1,   /* tcpListenerTable: all of the remote end is 0, and so are states and instances */
    IPMIB_UDP_ENDPOINTS = 2,   /* udpEndpointTable: no states, which are 0 */
    IPMIB_CONNECTION_TABLES = 3
};

/* InetAddressType of an end. */
enum {
    IPMIB_END_ANY = 0,   /* 0 octets: of a local end any address of both versions, of a remote one any at all */
    IPMIB_END_IPV4 = 1,  /* 4 octets; all of them 0 for any address of this version */
    IPMIB_END_IPV6 = 2,  /* 16 octets; likewise */
    IPMIB_END_IPV4Z = 3, /* 4 octets and 4 of the zone, most significant first */
    IPMIB_END_IPV6Z = 4  /* 16 octets and 4 of the zone, which is an ifIndex: a link-local address */
};

/* tcpConnectionState. */
enum {
    IPMIB_TCP_CLOSED = 1,
    IPMIB_TCP_LISTEN = 2,
    IPMIB_TCP_SYN_SENT = 3,
    IPMIB_TCP_SYN_RECEIVED = 4,
    IPMIB_TCP_ESTABLISHED = 5,
    IPMIB_TCP_FIN_WAIT_1 = 6,
    IPMIB_TCP_FIN_WAIT_2 = 7,
    IPMIB_TCP_CLOSE_WAIT = 8,
    IPMIB_TCP_LAST_ACK = 9,
    IPMIB_TCP_CLOSING = 10,
    IPMIB_TCP_TIME_WAIT = 11
};

typedef struct IpmibEnd {
    uint32_t type;      /* IPMIB_END_x */
    uint32_t size;      /* octets */
    uint8_t octets[20]; /* in network order; those behind the size are 0 */
    uint32_t port;      /* 0 to 65535; 0: any */
} IpmibEnd;

/* Of no two rows of a table it is the same. It is compared member by member in this order, octets one by one: that is
 * the order of the tables. A key that is asked from need not be any row's, nor have sizes that fit its types, but all
 * its members are within the ranges given here. A key of zeros is in front of all rows. */
typedef struct IpmibConnectionKey {
    IpmibEnd local;
    IpmibEnd remote;
    uint32_t instance; /* tells endpoints apart that share both ends; not 0 */
} IpmibConnectionKey;

typedef struct IpmibConnection {
    IpmibConnectionKey key;
    uint32_t state;   /* IPMIB_TCP_x */
    uint32_t process; /* whose it is; 0 when that is not known */
} IpmibConnection;

/* `find` and `next` answer 0 when they have filled the row, and something else when there is none. Key and row may
 * share storage. No function may be null. */
typedef struct IpmibConnectionHooks {
    uint32_t size; /* of this record, as the platform knows it: what lies behind is absent */

    /* Whether there are rows of this table (IPMIB_TCP_CONNECTIONS...) that are new enough to answer from: 1, or 0 for
     * not yet. To ask for them begins their reading where that is due: rows that nobody asks for cost nothing. Does not
     * wait for the reading, which goes on with each `dispatch`. A host keeps questions back until then, at most for
     * some seconds; whoever asks nevertheless finds the rows that there are. */
    uint32_t (*are_read)(uint32_t table);
    int (*find)(uint32_t table, const IpmibConnectionKey *key, IpmibConnection *row);
    /* The first row behind the key. */
    int (*next)(uint32_t table, const IpmibConnectionKey *key, IpmibConnection *row);
} IpmibConnectionHooks;

#ifdef __cplusplus
}
#endif

#endif
