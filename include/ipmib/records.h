/* SPDX-License-Identifier: BSD-3-Clause */
/* The records that the platform services fill. IpmibBe32 fields are big-endian on every machine, all others are in the
 * machine's own order. Addresses are 16 bytes in network order. */
#ifndef IPMIB_RECORDS_H
#define IPMIB_RECORDS_H

#include <ipmib/big_endian.h>
#include <ipmib/layout.h>
#include <ipmib/version.h>

#define IPMIB_RECORDS_VERSION IPMIB_CONTRACT_VERSION(1, 0)

#ifdef __cplusplus
extern "C" {
#endif

/* Storage for an interface selection. The caller provides the memory; only the platform knows what is in it. */
typedef union IfSelection {
    uint8_t bytes[512];
    uint64_t alignment;
} IfSelection;
IPMIB_SIZE(IfSelection, 512);

/* IPv6 traffic counters, of the system or of one interface. */
typedef struct Ip6MibStat {
    uint64_t in_receives;     /*  1 */
    uint64_t in_forwarded;    /*  2: received datagrams that were forwarded */
    uint64_t out_forwarded;   /*  3 */
    uint64_t out_transmits;   /*  4 */
    uint32_t header_errors_1; /*  5: the four parts are summed */
    uint32_t in_truncated;    /*  6 */
    uint32_t header_errors_2; /*  7 */
    uint32_t header_errors_3; /*  8 */
    uint32_t header_errors_4; /*  9 */
    uint32_t reasm_required;  /* 10 */
    uint32_t reasm_oks;       /* 11 */
    uint32_t reasm_fails_1;   /* 12: the two parts are summed */
    uint32_t reasm_fails_2;   /* 13 */
    uint32_t unknown_protos;  /* 14 */
    uint32_t in_delivers;     /* 15 */
    uint32_t in_no_routes;    /* 16 */
    uint32_t address_errors;  /* 17 */
    uint32_t frag_fails;      /* 18 */
    uint32_t unread_19;
    uint32_t unread_20;
    uint32_t frag_oks;     /* 21 */
    uint32_t frag_creates; /* 22 */
    uint32_t unread_23;
    uint32_t in_mcast_pkts;  /* 24 */
    uint32_t out_mcast_pkts; /* 25 */
    uint32_t in_discards;    /* 26 */
    uint32_t out_discards;   /* 27 */
    uint32_t out_no_routes;  /* 28 */
    uint32_t unread_29;
    uint32_t unread_30;
    uint64_t out_requests; /* 31 */
    uint64_t in_octets;    /* 32 */
    uint64_t out_octets;   /* 33 */
} Ip6MibStat;
IPMIB_SIZE(Ip6MibStat, 160);
IPMIB_OFFSET(Ip6MibStat, header_errors_1, 32);
IPMIB_OFFSET(Ip6MibStat, frag_fails, 84);
IPMIB_OFFSET(Ip6MibStat, out_no_routes, 124);
IPMIB_OFFSET(Ip6MibStat, out_requests, 136);

/* IPv4 traffic counters of one interface. */
typedef struct IpMibIfStat {
    uint64_t in_receives;    /*  1 */
    uint64_t out_transmits;  /*  2 */
    uint64_t in_octets;      /*  3 */
    uint64_t out_octets;     /*  4 */
    uint64_t out_requests;   /*  5 */
    uint64_t in_mcast_pkts;  /*  6 */
    uint64_t out_mcast_pkts; /*  7 */
    uint64_t unread_8;
    uint64_t out_forwarded; /*  9 */
    uint64_t unread_10;
    uint64_t unread_11;
    uint64_t in_discards;  /* 12 */
    uint64_t out_discards; /* 13 */
} IpMibIfStat;
IPMIB_SIZE(IpMibIfStat, 104);
IPMIB_OFFSET(IpMibIfStat, out_forwarded, 64);

/* ICMPv6 counters by number. */
enum {
    ICMP6_STAT_OUT_TYPE = 3,     /* plus the ICMPv6 type: messages of that type sent */
    ICMP6_STAT_IN_ERROR_1 = 261, /* four counters of input errors, summed */
    ICMP6_STAT_IN_ERROR_4 = 264,
    ICMP6_STAT_IN_TYPE = 266, /* plus the ICMPv6 type: messages of that type received */
    ICMP6_STAT_OUT_MSGS = 545,
    ICMP6_STAT_IN_MSGS = 546,
    ICMP6_STAT_COUNT = 547
};
typedef struct Icmp6MibStat {
    uint32_t counter[ICMP6_STAT_COUNT];
} Icmp6MibStat;
IPMIB_SIZE(Icmp6MibStat, 2188);

/* Flag bits of NdIfConfigInfo. */
enum {
    ND_FLAG_MANAGED = 0x002,          /* managed address configuration */
    ND_FLAG_OTHER_CONFIG = 0x004,     /* other configuration */
    ND_FLAG_RETRANSMIT_VALID = 0x010, /* the retransmit time is advertised */
    ND_FLAG_REACHABLE_VALID = 0x020,  /* the reachable time is advertised */
    ND_FLAG_SEND_ADVERTS = 0x040,     /* advertisements are sent on this interface */
    ND_FLAG_NO_MTU_OPTION = 0x100,    /* no MTU option is sent */
    ND_FLAG_LIFETIME_VALID = 0x200,   /* the default lifetime is configured */
    ND_FLAG_NO_HOP_LIMIT = 0x400      /* no hop limit is advertised */
};

/* Neighbour discovery and router advertisement settings of one interface; words that are not named are not read. */
typedef struct NdIfConfigInfo {
    uint32_t retransmit_ms;
    uint32_t reachable_ms;
    uint32_t unread_2[2];
    uint32_t max_interval_s;
    uint32_t min_interval_s;
    uint32_t default_lifetime_s;
    uint32_t unread_7;
    uint32_t flags; /* ND_FLAG_* */
    uint32_t unread_9[39];
} NdIfConfigInfo;
IPMIB_SIZE(NdIfConfigInfo, 192);
IPMIB_OFFSET(NdIfConfigInfo, max_interval_s, 16);
IPMIB_OFFSET(NdIfConfigInfo, flags, 32);

/* One entry of the neighbour cache; as an argument of a next call, the key to start from. */
typedef struct NeighbourEntry {
    IpmibBe32 if_index;
    uint8_t address[16];
    uint8_t link_layer[6];
    uint8_t padding[2];
    IpmibBe32 type;           /* reported plus 1: 1 invalid, 2 dynamic, 3 static, 4 local */
    IpmibBe32 state;          /* reported as it is: 1 reachable .. 7 incomplete */
    IpmibBe32 last_updated_s; /* seconds since boot */
} NeighbourEntry;
IPMIB_SIZE(NeighbourEntry, 40);
IPMIB_OFFSET(NeighbourEntry, type, 28);

/* One IPv6 prefix of an interface; as an argument of a next call, the key to start from. */
typedef struct FullPrefixRecord {
    IpmibBe32 unread_0;
    IpmibBe32 if_index;
    uint8_t prefix[16];
    IpmibBe32 length;      /* bits */
    IpmibBe32 origin;      /* 1, 2 manual; 4 well-known; 8 DHCP; 16 router advertisement; else other */
    IpmibBe32 valid_s;     /* 0xFFFFFFFF: for ever */
    IpmibBe32 preferred_s; /* 0xFFFFFFFF: for ever */
    uint8_t flags;         /* 0x80 on-link, 0x40 autonomous */
    uint8_t padding[3];
    IpmibBe32 learned_at_s; /* seconds since boot */
    IpmibBe32 unread_12;
    IpmibBe32 unread_13;
} FullPrefixRecord;
IPMIB_SIZE(FullPrefixRecord, 56);
IPMIB_OFFSET(FullPrefixRecord, prefix, 8);
IPMIB_OFFSET(FullPrefixRecord, flags, 40);
IPMIB_OFFSET(FullPrefixRecord, learned_at_s, 44);

/* One IPv6 address with all that is known of it. */
typedef struct FullAddressRecord {
    uint16_t lead; /* 0 in a record that counts */
    uint16_t unread_2;
    uint32_t if_index;
    uint8_t address[16];
    uint32_t prefix_length; /* bits */
    uint32_t origin;        /* 4, 8 manual; 16 DHCP; 64 link layer; 128 random; else other */
    uint32_t flags;         /* 0x1 anycast */
    uint32_t state;         /* 4 deprecated; 64 tentative; 128 duplicate; else preferred */
    uint32_t unread_40[6];
    uint32_t created_s;      /* seconds since boot */
    uint32_t last_changed_s; /* seconds since boot */
    uint32_t unread_72[3];
} FullAddressRecord;
IPMIB_SIZE(FullAddressRecord, 84);
IPMIB_OFFSET(FullAddressRecord, prefix_length, 24);
IPMIB_OFFSET(FullAddressRecord, created_s, 64);

/* What IP6Addr_GetLinkLocalAddr fills; only whether it could is ever looked at. */
typedef struct LinkLocalBuffer {
    uint8_t bytes[40];
} LinkLocalBuffer;
IPMIB_SIZE(LinkLocalBuffer, 40);

/* One default router. */
typedef struct GatewayRecord {
    IpmibBe32 if_index;
    uint8_t address[16];
    IpmibBe32 lead;       /* the upper 16 bits are 0 in a record that counts */
    IpmibBe32 flags;      /* router preference in bits 0x18 of the most significant byte: 00 medium, 01 high, 11 low */
    IpmibBe32 lifetime_s; /* at the time it was learned */
    IpmibBe32 learned_at_s; /* seconds since boot */
    IpmibBe32 unread_36;
} GatewayRecord;
IPMIB_SIZE(GatewayRecord, 40);
IPMIB_OFFSET(GatewayRecord, flags, 24);

/* Names one default router. */
typedef struct GatewayKey {
    IpmibBe32 if_index;
    uint8_t address[16];
    IpmibBe32 zero;
} GatewayKey;
IPMIB_SIZE(GatewayKey, 24);

#ifdef __cplusplus
}
#endif

#endif
