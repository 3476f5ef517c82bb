// SPDX-License-Identifier: BSD-3-Clause
// The type code under which an interface can be selected: where the standard selection has the IANA ifType number of
// the link's kind, that number; for all other links 1, "other".
#include "links/link_type.h"

#include <net/if_arp.h>

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

} // namespace ipmib::platform
