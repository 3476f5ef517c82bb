// SPDX-License-Identifier: BSD-3-Clause
// What the kernel's sock_diag says of one socket.
#include "connections/socket_message.h"

#include "core/attributes.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>

#include <algorithm>
#include <iterator>

namespace ipmib::platform
{
namespace
{

constexpr std::uint32_t allStates = 0xFFF;

// The kernel's number of a state to that of tcpConnectionState.
std::uint32_t stateOf(std::uint8_t kernels)
{
    constexpr std::uint8_t states[] = {0,
                                       IPMIB_TCP_ESTABLISHED,
                                       IPMIB_TCP_SYN_SENT,
                                       IPMIB_TCP_SYN_RECEIVED,
                                       IPMIB_TCP_FIN_WAIT_1,
                                       IPMIB_TCP_FIN_WAIT_2,
                                       IPMIB_TCP_TIME_WAIT,
                                       IPMIB_TCP_CLOSED,
                                       IPMIB_TCP_CLOSE_WAIT,
                                       IPMIB_TCP_LAST_ACK,
                                       IPMIB_TCP_LISTEN,
                                       IPMIB_TCP_CLOSING,
                                       IPMIB_TCP_SYN_RECEIVED}; // of requests
    return kernels < std::size(states) ? states[kernels] : 0;
}

// The link, or the interface, is the scope of such an address.
bool hasZone(const PackedAddress &address)
{
    constexpr std::uint64_t scopeBits = 0x000F;
    constexpr std::uint64_t linkScope = 2;
    return address.isLinkLocal() || (address.isMulticast() && ((address.high >> 48) & scopeBits) <= linkScope);
}

// IPv4 by way of a socket of IPv6.
bool isMapped(const PackedAddress &address)
{
    return address.high == 0 && address.low >> 32 == 0xFFFF;
}

PackedEnd readEnd(std::uint8_t family, const __be32 *octets, __be16 bigEndianPort, std::uint32_t ifIndex)
{
    const std::uint16_t port = ntohs(bigEndianPort);
    if (family == AF_INET) {
        return PackedEnd::ipv4(ntohl(octets[0]), port);
    }
    const auto address = PackedAddress::of(octets);
    if (isMapped(address)) {
        return PackedEnd::ipv4(static_cast<std::uint32_t>(address.low), port);
    }
    return PackedEnd::ipv6(address, hasZone(address) ? ifIndex : 0, port);
}

bool isZero(const __be32 (&octets)[4])
{
    return std::ranges::all_of(octets, [](__be32 word) { return word == 0; });
}

} // namespace

bool askForSockets(Rtnetlink &socket, std::uint8_t family, std::uint8_t protocol)
{
    RtnetlinkRequest request(SOCK_DIAG_BY_FAMILY, NLM_F_DUMP);
    auto &wanted = request.family<inet_diag_req_v2>();
    wanted.sdiag_family = family;
    wanted.sdiag_protocol = protocol;
    wanted.idiag_states = allStates;
    return socket.send(request);
}

bool readSocket(const nlmsghdr &message, std::uint8_t protocol, SocketRow &socket)
{
    if (message.nlmsg_type != SOCK_DIAG_BY_FAMILY || message.nlmsg_len < mnl_nlmsg_size(sizeof(inet_diag_msg))) {
        return false;
    }
    const auto &said = *static_cast<const inet_diag_msg *>(mnl_nlmsg_get_payload(&message));
    if (said.idiag_family != AF_INET && said.idiag_family != AF_INET6) {
        return false;
    }
    const std::uint32_t state = stateOf(said.idiag_state);
    const bool isTcp = protocol == IPPROTO_TCP;
    const bool isConnected = said.id.idiag_dport != 0 || !isZero(said.id.idiag_dst);
    ConnectionRow &row = socket.row;
    row = {};
    row.local = readEnd(said.idiag_family, said.id.idiag_src, said.id.idiag_sport, said.id.idiag_if);
    if (isConnected) {
        row.remote = readEnd(said.idiag_family, said.id.idiag_dst, said.id.idiag_dport, said.id.idiag_if);
    } else if (said.idiag_family == AF_INET6 && isZero(said.id.idiag_src)) {
        const Attributes<INET_DIAG_MAX> attributes(message, sizeof said);
        const auto onlyIpv6 = attributes.get<std::uint8_t>(INET_DIAG_SKV6ONLY);
        if (onlyIpv6.value_or(0) == 0) {
            row.local = PackedEnd::any(row.local.port);
        }
    }
    if (!isTcp) {
        socket.table = IPMIB_UDP_ENDPOINTS;
        row.instance = std::max<std::uint32_t>(said.idiag_inode, 1);
    } else if (state == IPMIB_TCP_LISTEN) {
        socket.table = IPMIB_TCP_LISTENERS;
    } else {
        socket.table = IPMIB_TCP_CONNECTIONS;
        row.state = state & 0xFu;
    }
    return true;
}

} // namespace ipmib::platform
