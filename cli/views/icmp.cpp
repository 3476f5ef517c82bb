// SPDX-License-Identifier: BSD-3-Clause
// Messages of ICMP and ICMPv6, all together and by type.
#include "view.h"

#include <ipmib/platform_ip.h>

#include <algorithm>
#include <span>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn icmpColumns[] = {
    {"VERSION", "version"},         {"TYPE", "type", Align::right},
    {"MESSAGE", "message"},         {"RECEIVED", "received", Align::right},
    {"SENT", "sent", Align::right},
};

struct IcmpType {
    std::uint32_t number;
    const char *name;
};
constexpr IcmpType ipv4Types[] = {
    {0, "echo reply"},           {3, "destination unreachable"},
    {4, "source quench"},        {5, "redirect"},
    {8, "echo request"},         {9, "router advertisement"},
    {10, "router solicitation"}, {11, "time exceeded"},
    {12, "parameter problem"},   {13, "timestamp request"},
    {14, "timestamp reply"},     {17, "address mask request"},
    {18, "address mask reply"},
};
constexpr IcmpType ipv6Types[] = {
    {1, "destination unreachable"},
    {2, "packet too big"},
    {3, "time exceeded"},
    {4, "parameter problem"},
    {128, "echo request"},
    {129, "echo reply"},
    {130, "multicast listener query"},
    {131, "multicast listener report"},
    {132, "multicast listener done"},
    {133, "router solicitation"},
    {134, "router advertisement"},
    {135, "neighbour solicitation"},
    {136, "neighbour advertisement"},
    {137, "redirect"},
    {138, "router renumbering"},
    {139, "node information query"},
    {140, "node information response"},
    {143, "multicast listener report, version 2"},
    {144, "home agent address discovery request"},
    {145, "home agent address discovery reply"},
    {200, "private experimentation"},
};

Cell messageCell(std::uint32_t version, std::uint32_t number)
{
    const std::span<const IcmpType> types = version == IPMIB_IPV4 ? std::span<const IcmpType>(ipv4Types) : ipv6Types;
    const auto type = std::ranges::find(types, number, &IcmpType::number);
    return type == types.end() ? emptyCell() : textCell(type->name);
}

void listIcmpMessages(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { inMsgs, outMsgs, inErrors, outErrors };
    TableReader all(device, "icmpStatsEntry",
                    {"icmpStatsInMsgs", "icmpStatsOutMsgs", "icmpStatsInErrors", "icmpStatsOutErrors"});
    while (all.next()) {
        const Cell version = indexLabelCell(all, 0);
        sink({version, emptyCell(), textCell("all messages"), counterCell(all, inMsgs), counterCell(all, outMsgs)});
        sink({version, emptyCell(), textCell("errors"), counterCell(all, inErrors), counterCell(all, outErrors)});
    }
    enum { inPkts, outPkts };
    TableReader byType(device, "icmpMsgStatsEntry", {"icmpMsgStatsInPkts", "icmpMsgStatsOutPkts"});
    while (byType.next()) {
        const std::uint32_t type = byType.key().number(1);
        sink({indexLabelCell(byType, 0), Cell{std::to_string(type), type, {}},
              messageCell(byType.key().number(0), type), counterCell(byType, inPkts), counterCell(byType, outPkts)});
    }
}

} // namespace

const View icmpView{"icmp", icmpColumns, listIcmpMessages};

} // namespace ipmib::cli
