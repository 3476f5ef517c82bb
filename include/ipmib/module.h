/* SPDX-License-Identifier: BSD-3-Clause */
/* What libipmib.so exports: the entry for requests, the hooks that its load and unload run, and the handler families of
 * four tables with their rows. All functions may be called once the library is loaded; they keep no state. */
#ifndef IPMIB_MODULE_H
#define IPMIB_MODULE_H

#include <ipmib/big_endian.h>
#include <ipmib/layout.h>
#include <ipmib/message.h>
#include <ipmib/mib_tree.h>
#include <ipmib/version.h>

#define IPMIB_MODULE_VERSION IPMIB_CONTRACT_VERSION(1, 0)

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* these names are what libraries are linked by, whatever the default is */

/* --- Load, unload and requests -------------------------------------------------------------------------------------
 */

/* Register and deregister the tree "IP-MIB". They return what the agent answered. */
uint32_t SNMP_Add_MIB_ip_tree(void);
uint32_t SNMP_Del_MIB_ip_tree(void);
/* Build the ICMPv6 type map and bind IP_ConfigCallBack; end the binding. They return what the message layer answered.
 */
uint32_t IP_Mor_Init(void);
uint32_t IP_Mor_Fini(void);

/* Answers one request: the only entry of the message layer. Returns 0 or an ERR_* code. */
uint32_t IP_ConfigCallBack(MorRequest *request, MorReply *reply);

/* The root of the 279 tree records. Each record is exported as ip_tree_node_<descriptor>, with "_" for "-". */
extern const MibTreeNode ip_tree_node_iso;

/* --- icmpStatsTable ------------------------------------------------------------------------------------------------
 */
/* Of each family, _Proc applies the operation gate and calls _Get, which answers OP_GET and OP_GETNEXT; both return 0
 * or an ERR_* code. The lookups fill a row that the caller cleared and return 0 or an RC_* code. Index arguments are in
 * machine order. */

typedef struct IcmpStatsRow {
    uint32_t ip_version; /* always 2 */
    uint32_t in_msgs;
    uint32_t in_errors;
    uint32_t out_msgs;
    uint32_t out_errors; /* always 0 */
} IcmpStatsRow;
IPMIB_SIZE(IcmpStatsRow, 20);

uint32_t ip_IcmpStats_Proc(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_IcmpStats_Get(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_IcmpStats_GetByIndex(uint32_t ip_version, IcmpStatsRow *row);
uint32_t ip_IcmpStats_GetNextByIndex(uint32_t ip_version, IcmpStatsRow *row);
uint32_t ip_IcmpStats_GetFirstByIndex(IcmpStatsRow *row);

/* --- icmpMsgStatsTable ---------------------------------------------------------------------------------------------
 */

typedef struct IcmpMsgStatsRow {
    uint32_t ip_version; /* always 2 */
    uint32_t type;       /* ICMPv6 type */
    uint32_t in_pkts;
    uint32_t out_pkts;
} IcmpMsgStatsRow;
IPMIB_SIZE(IcmpMsgStatsRow, 16);

/* By ICMPv6 type: the served-type number below 21, or 255 for a type that is not served. 201 holds the end mark 21. */
extern uint16_t g_ausIcmp6Type[256];

/* Fills g_ausIcmp6Type. Returns 0. */
uint32_t ip_IcmpMsgStats_Init(void);
/* Stores the served-type number of an ICMPv6 type, or returns RC_NOT_FOUND and leaves the suffix alone. */
uint32_t ip_IcmpMsgStats_TypeToSuffix(uint32_t type, uint16_t *suffix);
/* 0 when (ip_version, type) names a row, else RC_NOT_FOUND. */
uint32_t ip_IcmpMsgStats_IsExistIndex(uint32_t ip_version, uint32_t type);
uint32_t ip_IcmpMsgStats_Proc(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_IcmpMsgStats_Get(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_IcmpMsgStats_GetByIndex(uint32_t ip_version, uint32_t type, IcmpMsgStatsRow *row);
uint32_t ip_IcmpMsgStats_GetNextByIndex(uint32_t ip_version, uint32_t type, IcmpMsgStatsRow *row);
uint32_t ip_IcmpMsgStats_GetFirstByIndex(IcmpMsgStatsRow *row);

/* --- ipNetToPhysicalTable ------------------------------------------------------------------------------------------
 */

typedef struct IpNetToPhysicalRow {
    uint32_t if_index;
    uint32_t address_type; /* 2 ipv6, 4 ipv6z */
    uint8_t address[16];
    IpmibBe32 zone;          /* behind the address, so that both together are the 20-byte ipv6z value */
    uint32_t address_length; /* 16 or 20 */
    uint8_t link_layer[6];
    uint8_t padding[2];
    uint32_t last_updated; /* hundredths of a second since boot */
    uint32_t type;
    uint32_t state;
    uint32_t row_status; /* always 1 */
} IpNetToPhysicalRow;
IPMIB_SIZE(IpNetToPhysicalRow, 56);
IPMIB_OFFSET(IpNetToPhysicalRow, zone, 24);
IPMIB_OFFSET(IpNetToPhysicalRow, link_layer, 32);
IPMIB_OFFSET(IpNetToPhysicalRow, last_updated, 40);

uint32_t ip_IpNetToPhysical_Proc(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_IpNetToPhysical_Get(uint32_t operation, MorRequest *request, MorReply *reply);
/* The address is 16 bytes, and for address type 4 a big-endian zone behind them. */
uint32_t ip_IpNetToPhysical_GetByIndex(uint32_t if_index, uint32_t address_type, const uint8_t *address,
                                       uint32_t address_length, IpNetToPhysicalRow *row);
/* The address is 20 bytes: 16 and a big-endian zone. */
uint32_t ip_IpNetToPhysical_GetNextByIndex(uint32_t if_index, uint32_t address_type, const uint8_t *address,
                                           IpNetToPhysicalRow *row);
/* The key is 16 bytes. */
uint32_t ip_IpNetToPhysical_GetNext(uint32_t if_index, uint32_t address_type, const uint8_t *key,
                                    IpNetToPhysicalRow *row);
uint32_t ip_IpNetToPhysical_GetFirstByIndex(IpNetToPhysicalRow *row);

/* --- ipv6RouterAdvertTable -----------------------------------------------------------------------------------------
 */

typedef struct Ipv6RouterAdvertRow {
    uint32_t if_index;
    uint32_t send_adverts; /* truth values: 1 true, 2 false */
    uint32_t max_interval; /* seconds */
    uint32_t min_interval; /* seconds */
    uint32_t managed_flag;
    uint32_t other_config_flag;
    uint32_t link_mtu;        /* bytes, 0: no MTU option */
    uint32_t reachable_time;  /* milliseconds, 0: not advertised */
    uint32_t retransmit_time; /* milliseconds, 0: not advertised */
    uint32_t cur_hop_limit;
    uint32_t default_lifetime; /* seconds */
    uint32_t row_status;       /* always 1 */
} Ipv6RouterAdvertRow;
IPMIB_SIZE(Ipv6RouterAdvertRow, 48);

uint32_t ip_Ipv6RouterAdvert_Proc(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_Ipv6RouterAdvert_Get(uint32_t operation, MorRequest *request, MorReply *reply);
uint32_t ip_Ipv6RouterAdvert_GetByIndex(uint32_t if_index, Ipv6RouterAdvertRow *row);
/* 0 asks for the first row. */
uint32_t ip_Ipv6RouterAdvert_GetNextByIndex(uint32_t if_index, Ipv6RouterAdvertRow *row);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
