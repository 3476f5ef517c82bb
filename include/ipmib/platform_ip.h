/* SPDX-License-Identifier: BSD-3-Clause */
/* What a platform can say of IP beyond the services that the module calls: the rows of IPv4 in the tables of the
 * IP-MIB, counters that the module leaves out, and the groups of the transport layer. The module never sees this; a
 * device whose agent has such rows leaves the pointer to these hooks null.
 *
 * An IPv4 address is a number here: 192.0.2.1 is 0xC0000201. Times of rows are values of sysUpTime in hundredths of a
 * second, 0 for what was there before it began (see `uptime_began` in platform_hooks.h). All numbers of enumerations
 * are those of the columns of the same name. */
#ifndef IPMIB_PLATFORM_IP_H
#define IPMIB_PLATFORM_IP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* InetVersion. */
enum { IPMIB_IPV4 = 1, IPMIB_IPV6 = 2 };

/* IP traffic, of the system or of an interface: the counters of ipSystemStatsTable and ipIfStatsTable by name. */
enum {
    IPMIB_IP_IN_RECEIVES,
    IPMIB_IP_IN_OCTETS,
    IPMIB_IP_IN_HDR_ERRORS,
    IPMIB_IP_IN_NO_ROUTES,
    IPMIB_IP_IN_ADDR_ERRORS,
    IPMIB_IP_IN_UNKNOWN_PROTOS,
    IPMIB_IP_IN_TRUNCATED_PKTS,
    IPMIB_IP_IN_FORW_DATAGRAMS,
    IPMIB_IP_REASM_REQDS,
    IPMIB_IP_REASM_OKS,
    IPMIB_IP_REASM_FAILS,
    IPMIB_IP_IN_DISCARDS,
    IPMIB_IP_IN_DELIVERS,
    IPMIB_IP_OUT_REQUESTS,
    IPMIB_IP_OUT_NO_ROUTES,
    IPMIB_IP_OUT_FORW_DATAGRAMS,
    IPMIB_IP_OUT_DISCARDS,
    IPMIB_IP_OUT_FRAG_REQDS,
    IPMIB_IP_OUT_FRAG_OKS,
    IPMIB_IP_OUT_FRAG_FAILS,
    IPMIB_IP_OUT_FRAG_CREATES,
    IPMIB_IP_OUT_TRANSMITS,
    IPMIB_IP_OUT_OCTETS,
    IPMIB_IP_IN_MCAST_PKTS,
    IPMIB_IP_IN_MCAST_OCTETS,
    IPMIB_IP_OUT_MCAST_PKTS,
    IPMIB_IP_OUT_MCAST_OCTETS,
    IPMIB_IP_IN_BCAST_PKTS,
    IPMIB_IP_OUT_BCAST_PKTS,
    IPMIB_IP_ROUTING_DISCARDS, /* ipRoutingDiscards, of the system */
    IPMIB_IP_COUNTERS
};

typedef struct IpmibIpCounters {
    uint64_t counted; /* bit IPMIB_IP_x: this one is counted; a column without its bit has no instance */
    uint64_t value[IPMIB_IP_COUNTERS]; /* each wraps around at 2^64 */
} IpmibIpCounters;

typedef struct IpmibIcmpCounters {
    uint64_t in_msgs;
    uint64_t in_errors;
    uint64_t out_msgs;
    uint64_t out_errors;
    uint64_t in_type[256]; /* messages by ICMP type */
    uint64_t out_type[256];
    uint8_t listed[32]; /* bit type % 8 of octet type / 8: the type has a row of icmpMsgStatsTable */
} IpmibIcmpCounters;

typedef struct IpmibIpSettings {
    uint32_t forwarding;      /* 1 forwarding, 2 not */
    uint32_t default_ttl;     /* 1 to 255 */
    uint32_t reasm_timeout_s; /* how long fragments are kept for the others of their datagram */
} IpmibIpSettings;

/* IPv4, or IPv6, on an interface. */
typedef struct IpmibIpInterface {
    uint32_t if_index;      /* 1 to 2147483647 */
    uint32_t enabled;       /* 1 up, 2 down */
    uint32_t reasm_max;     /* octets of the largest datagram that is put together from fragments, at most 65535 */
    uint32_t retransmit_ms; /* between two questions for a neighbour */
} IpmibIpInterface;

enum { IPMIB_ADDRESS_UNICAST = 1, IPMIB_ADDRESS_ANYCAST = 2, IPMIB_ADDRESS_BROADCAST = 3 };
enum {
    IPMIB_ADDRESS_ORIGIN_OTHER = 1,
    IPMIB_ADDRESS_ORIGIN_MANUAL = 2,
    IPMIB_ADDRESS_ORIGIN_DHCP = 4,
    IPMIB_ADDRESS_ORIGIN_LINKLAYER = 5,
    IPMIB_ADDRESS_ORIGIN_RANDOM = 6
};

typedef struct IpmibIpAddress {
    uint32_t address; /* not 0 */
    uint32_t if_index;
    uint32_t type;          /* IPMIB_ADDRESS_x */
    uint32_t prefix;        /* with prefix_length on if_index: a row of the prefixes below */
    uint32_t prefix_length; /* 0 to 32 bits */
    uint32_t origin;
    uint32_t status; /* 1 preferred to 8 optimistic */
    uint32_t created;
    uint32_t changed;
} IpmibIpAddress;

typedef struct IpmibIpPrefix {
    uint32_t if_index;
    uint32_t prefix; /* bits behind the length are 0 */
    uint32_t length; /* 0 to 32 bits */
    uint32_t origin; /* ipAddressPrefixOrigin */
    uint8_t on_link;
    uint8_t autonomous;
    uint32_t preferred_s; /* 4294967295: without end */
    uint32_t valid_s;
} IpmibIpPrefix;

typedef struct IpmibIpNeighbour {
    uint32_t if_index;
    uint32_t address;
    uint32_t type;  /* ipNetToPhysicalType */
    uint32_t state; /* ipNetToPhysicalState */
    uint32_t last_updated;
    uint8_t link_layer_size; /* 0 when it has none, or none that is known */
    uint8_t link_layer[32];
} IpmibIpNeighbour;

typedef struct IpmibIpRouter {
    uint32_t address; /* of the gateway */
    uint32_t if_index;
    uint32_t lifetime_s; /* 1 to 65535; a configured one has 65535 */
    int32_t preference;  /* -1 low, 0 medium, 1 high */
} IpmibIpRouter;

/* The tcp group, both versions of IP together. */
typedef struct IpmibTcpCounters {
    uint32_t rto_algorithm; /* tcpRtoAlgorithm */
    uint32_t rto_min_ms;
    uint32_t rto_max_ms;
    int32_t max_connections; /* -1: as many as there is room for */
    uint32_t established;    /* now */
    uint64_t active_opens;
    uint64_t passive_opens;
    uint64_t attempt_fails;
    uint64_t established_resets;
    uint64_t in_segments;
    uint64_t out_segments;
    uint64_t retransmitted_segments;
    uint64_t in_errors;
    uint64_t out_resets;
} IpmibTcpCounters;

/* The udp group, both versions of IP together. */
typedef struct IpmibUdpCounters {
    uint64_t in_datagrams;
    uint64_t no_ports;
    uint64_t in_errors;
    uint64_t out_datagrams;
} IpmibUdpCounters;

/* One interface over another one; 0 stands for nothing above, or below. */
typedef struct IpmibStack {
    uint32_t higher;
    uint32_t lower;
} IpmibStack;

/* A link-layer address for which an interface takes frames. */
typedef struct IpmibReceiveAddress {
    uint32_t if_index;
    uint32_t type; /* ifRcvAddressType: 1 other, 2 volatile, 3 nonVolatile */
    uint8_t size;  /* 1 to 32 octets */
    uint8_t address[32];
} IpmibReceiveAddress;

/* For `follow`: what an agent serves. */
enum {
    IPMIB_FOLLOW_ADDRESSES = 0x1, /* addresses, prefixes and the interfaces that have them */
    IPMIB_FOLLOW_NEIGHBOURS = 0x2,
    IPMIB_FOLLOW_ROUTERS = 0x4,
    IPMIB_FOLLOW_RECEIVE_ADDRESSES = 0x8
};

/* Functions answer 0 when they have filled the record, and something else when there is no such row or nothing to say.
 * `find_x` wants the row with exactly this key, `next_x` the first one behind it in the order of the key's parts; there
 * need not be one with this key, and a key of zeros is in front of all. Records and keys may share storage. Counters
 * are as they are now; one packet of requests sees one reading. Any function may be null. */
typedef struct IpmibIpHooks {
    uint32_t size; /* of this record, as the platform knows it: what lies behind is absent */

    /* From now on these rows are there, and are followed; before, their functions find none. May be called again with
     * more. For an agent that does not serve them they cost nothing. When it fails the error buffer holds one line. */
    int (*follow)(uint32_t rows, char *error, size_t capacity);

    int (*settings)(uint32_t version, IpmibIpSettings *settings);
    /* `counted` holds the counters that are wanted, by bits, when it is called; others may be missing in the answer. */
    int (*system_counters)(uint32_t version, IpmibIpCounters *counters);
    /* None when nothing counts this version by interface: a missing row is better than a false zero. */
    int (*interface_counters)(uint32_t version, uint32_t if_index, IpmibIpCounters *counters);
    int (*icmp_counters)(uint32_t version, IpmibIcmpCounters *counters);
    int (*tcp_counters)(IpmibTcpCounters *counters);
    int (*udp_counters)(IpmibUdpCounters *counters);

    /* Interfaces on which this version of IP runs, by ifIndex. */
    int (*find_interface)(uint32_t version, uint32_t if_index, IpmibIpInterface *row);
    int (*next_interface)(uint32_t version, uint32_t if_index, IpmibIpInterface *row);
    /* sysUpTime when a row of these last came or went, or a value in one changed. */
    uint32_t (*interfaces_changed)(uint32_t version);

    /* IPv4, with broadcast addresses. Of an address that several interfaces have: the one on the lowest ifIndex. */
    int (*find_address)(uint32_t address, IpmibIpAddress *row);
    int (*next_address)(uint32_t address, IpmibIpAddress *row);

    /* IPv4, by interface, prefix and length. */
    int (*find_prefix)(uint32_t if_index, uint32_t prefix, uint32_t length, IpmibIpPrefix *row);
    int (*next_prefix)(uint32_t if_index, uint32_t prefix, uint32_t length, IpmibIpPrefix *row);

    /* IPv4, by interface and address. */
    int (*find_neighbour)(uint32_t if_index, uint32_t address, IpmibIpNeighbour *row);
    int (*next_neighbour)(uint32_t if_index, uint32_t address, IpmibIpNeighbour *row);

    /* IPv4, by address and interface. */
    int (*find_router)(uint32_t address, uint32_t if_index, IpmibIpRouter *row);
    int (*next_router)(uint32_t address, uint32_t if_index, IpmibIpRouter *row);

    /* By the higher and then the lower one. */
    int (*find_stack)(uint32_t higher, uint32_t lower, IpmibStack *row);
    int (*next_stack)(uint32_t higher, uint32_t lower, IpmibStack *row);
    /* sysUpTime when a row of these last came or went. */
    uint32_t (*stack_changed)(void);

    /* By interface, and then as the identifiers of rows compare: a shorter address is in front of a longer one. */
    int (*find_receive_address)(uint32_t if_index, const uint8_t *address, size_t size, IpmibReceiveAddress *row);
    int (*next_receive_address)(uint32_t if_index, const uint8_t *address, size_t size, IpmibReceiveAddress *row);

    /* How many bits of an interface's link-local IPv6 address are its prefix; 0 when it has no such address. The tables
     * say 10 of each, the length of all link-local addresses' common prefix. */
    uint32_t (*link_local_prefix_length)(uint32_t if_index);
} IpmibIpHooks;

#ifdef __cplusplus
}
#endif

#endif
