// SPDX-License-Identifier: BSD-3-Clause
// A link as the interface tables show it.
#include "links/interface_row.h"

#include <linux/if.h>
#include <linux/if_arp.h>

#include <algorithm>
#include <cstring>

namespace ipmib::platform
{
namespace
{

constexpr std::uint8_t other = 1;

struct Mapping {
    std::uint16_t hardware; // ARPHRD_*
    std::uint8_t code;
};

// Loopback, tunnels, tun devices, VRFs and whatever a later kernel invents are "other": IANA has numbers for some of
// them (24, 131), but the standard selection does not ask for those, and no link may fall out of it.
constexpr Mapping mappings[] = {
    {ARPHRD_ETHER, 6},               // Ethernet, and what looks like it: veth, bridge, bond, VLAN, macvlan, tap
    {ARPHRD_EETHER, 26},             // experimental 3 Mbit Ethernet
    {ARPHRD_IEEE802, 7},             // 802.3 frames
    {ARPHRD_IEEE80211, 71},          // 802.11, as station or in monitor mode; most drivers say Ethernet
    {ARPHRD_IEEE80211_PRISM, 71},    //
    {ARPHRD_IEEE80211_RADIOTAP, 71}, //
    {ARPHRD_ARCNET, 35},             //
    {ARPHRD_LOCALTLK, 42},           //
    {ARPHRD_HIPPI, 47},              //
    {ARPHRD_X25, 5},                 //
    {ARPHRD_LAPB, 16},               //
    {ARPHRD_SLIP, 28},               // four framings of one link kind
    {ARPHRD_CSLIP, 28},              //
    {ARPHRD_SLIP6, 28},              //
    {ARPHRD_CSLIP6, 28},             //
    {ARPHRD_PPP, 23},                //
    {ARPHRD_CISCO, 22},              // serial lines with a framing of their maker
    {ARPHRD_RAWHDLC, 22},            //
};

enum IanaType : std::uint32_t {
    softwareLoopback = 24,
    propVirtual = 53,
    tunnel = 131,
    l2vlan = 135,
    ieee8023adLag = 161,
    infiniband = 199,
    bridge = 209,
};

// What the kernel presents as Ethernet, or as nothing in particular, and names more precisely.
struct Kind {
    const char *name;
    IanaType type;
};
constexpr Kind kinds[] = {
    {"bridge", bridge},   {"bond", ieee8023adLag}, {"team", ieee8023adLag}, {"vlan", l2vlan},
    {"vrf", propVirtual}, {"dummy", propVirtual},  {"wireguard", tunnel},
};

struct Hardware {
    std::uint16_t number; // ARPHRD_*
    IanaType type;
};
constexpr Hardware hardwares[] = {
    {ARPHRD_LOOPBACK, softwareLoopback},
    {ARPHRD_TUNNEL, tunnel},
    {ARPHRD_TUNNEL6, tunnel},
    {ARPHRD_SIT, tunnel},
    {ARPHRD_IPGRE, tunnel},
    {ARPHRD_IP6GRE, tunnel},
    {ARPHRD_INFINIBAND, infiniband},
    {ARPHRD_NONE, propVirtual},
};

} // namespace

std::uint8_t typeCode(const Link &link)
{
    for (const Mapping &mapping : mappings) {
        if (mapping.hardware == link.hardware) {
            return mapping.code;
        }
    }
    return other;
}

std::uint32_t interfaceType(const Link &link)
{
    for (const Kind &kind : kinds) {
        if (std::strcmp(kind.name, link.kind) == 0) {
            return kind.type;
        }
    }
    for (const Hardware &hardware : hardwares) {
        if (hardware.number == link.hardware) {
            return hardware.type;
        }
    }
    return typeCode(link);
}

std::uint32_t operStatus(const Link &link)
{
    switch (link.operState) {
    case IF_OPER_UP:
        return IPMIB_OPER_UP;
    case IF_OPER_DOWN:
        return IPMIB_OPER_DOWN;
    case IF_OPER_LOWERLAYERDOWN:
        return IPMIB_OPER_LOWER_LAYER_DOWN;
    case IF_OPER_TESTING:
        return IPMIB_OPER_TESTING;
    case IF_OPER_DORMANT:
        return IPMIB_OPER_DORMANT;
    case IF_OPER_NOTPRESENT:
        return IPMIB_OPER_NOT_PRESENT;
    default: // the driver keeps no such state; the kernel itself sends over such a link as over one that is up
        return (link.flags & IFF_RUNNING) != 0 ? IPMIB_OPER_UP : IPMIB_OPER_DOWN;
    }
}

void describe(const Link &link, IpmibInterface &interface)
{
    interface = IpmibInterface{};
    interface.if_index = link.ifIndex;
    interface.type = interfaceType(link);
    interface.mtu = link.mtu;
    interface.admin_status = (link.flags & IFF_UP) != 0 ? IPMIB_ADMIN_UP : IPMIB_ADMIN_DOWN;
    interface.oper_status = operStatus(link);
    interface.changed_ms = link.changedMs;
    interface.promiscuous = link.promiscuous ? 1 : 0;
    // What software makes has a kind, but for the loopback interface.
    interface.connector = link.kind[0] == '\0' && link.hardware != ARPHRD_LOOPBACK ? 1 : 0;
    // The loopback interface has one of zeros, which is none.
    interface.address_size =
        link.hardware == ARPHRD_LOOPBACK ? 0 : std::min<std::uint8_t>(link.addressSize, sizeof interface.address);
    std::memcpy(interface.address, link.address, interface.address_size);
    interface.name = link.name;
    interface.alias = link.alias;
}

} // namespace ipmib::platform
