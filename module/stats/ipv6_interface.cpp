// SPDX-License-Identifier: BSD-3-Clause
// ipv6InterfaceTable: the IPv6 settings of each interface that has an IPv6 interface identifier.
#include "frame/described_table.h"
#include "frame/tables.h"
#include "stats/interface_walk.h"

#include <cstddef>
#include <cstring>

namespace ipmib
{

namespace
{

struct Ipv6InterfaceRow {
    std::uint32_t if_index;
    std::uint32_t reasm_max_size; // bytes
    std::uint8_t identifier[8];
    std::uint32_t enable_status;
    std::uint32_t reachable_time;  // milliseconds
    std::uint32_t retransmit_time; // milliseconds
    std::uint32_t forwarding;
};

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(Ipv6InterfaceRow, if_index)),                            // ipv6InterfaceIfIndex
    number(VT_UNSIGNED32, offsetof(Ipv6InterfaceRow, reasm_max_size)),                   // ipv6InterfaceReasmMaxSize
    octets(offsetof(Ipv6InterfaceRow, identifier), sizeof Ipv6InterfaceRow::identifier), // ipv6InterfaceIdentifier
    number(VT_INTEGER, offsetof(Ipv6InterfaceRow, enable_status)),                       // ipv6InterfaceEnableStatus
    number(VT_UNSIGNED32, offsetof(Ipv6InterfaceRow, reachable_time)),                   // ipv6InterfaceReachableTime
    number(VT_UNSIGNED32, offsetof(Ipv6InterfaceRow, retransmit_time)),                  // ipv6InterfaceRetransmitTime
    number(VT_INTEGER, offsetof(Ipv6InterfaceRow, forwarding)),                          // ipv6InterfaceForwarding
};
constexpr Table ipv6Interface = describedTable<tableIpv6Interface, columns>;

constexpr std::uint32_t reasmMaxSize = 65535; // the same on every interface
constexpr std::uint32_t statusUp = 1;
constexpr std::uint32_t statusDown = 2;
constexpr std::uint32_t forwarding = 1; // the device is a router
constexpr std::uint32_t defaultReachableMs = 30000;
constexpr std::uint32_t defaultRetransmitMs = 1000;

std::uint32_t ip_Ipv6Interface_GetByIndex(std::uint32_t ifIndex, Ipv6InterfaceRow *row)
{
    std::uint8_t identifier[sizeof row->identifier] = {};
    if (IP6Mib_GetIFID(ifIndex, identifier) != 0) {
        return RC_NOT_FOUND;
    }
    row->if_index = ifIndex;
    row->reasm_max_size = reasmMaxSize;
    std::memcpy(row->identifier, identifier, sizeof identifier);
    FullAddressRecord linkLocal{};
    // IPv6 is up on an interface when its main link-local address is there.
    row->enable_status = IP6ADDR_DRVK_GetMainLLA(ifIndex, &linkLocal) == 0 ? statusUp : statusDown;
    NdIfConfigInfo info{};
    const bool known = ND_GetIfConfigInfo(ifIndex, &info) == 0;
    row->reachable_time = known ? info.reachable_ms : defaultReachableMs;
    row->retransmit_time = known ? info.retransmit_ms : defaultRetransmitMs;
    row->forwarding = forwarding;
    return 0;
}

// A get does not ask whether the selection has the interface, only whether it exists.
std::uint32_t getExisting(std::uint32_t ifIndex, Ipv6InterfaceRow *row)
{
    return IF_IsValidIfIndex(ifIndex) == 0 ? RC_NOT_FOUND : ip_Ipv6Interface_GetByIndex(ifIndex, row);
}

} // namespace

std::uint32_t ip_Ipv6Interface_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart ifIndex = readIndexPart(request, ipv6Interface.parameterId(0));
    Ipv6InterfaceRow row{};
    const std::uint32_t result = operation == OP_GET
                                     ? getExisting(ifIndex.value, &row)
                                     : nextInterfaceRow(ifIndex.value, ip_Ipv6Interface_GetByIndex, &row);
    return answer(ipv6Interface, operation, result, &row, request, reply);
}

} // namespace ipmib
