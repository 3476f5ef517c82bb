// SPDX-License-Identifier: BSD-3-Clause
// ICMPv6 messages, all together and by type.
#include "view.h"

#include <algorithm>
#include <iterator>

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"TYPE", "type", Align::right},
    {"MESSAGE", "message"},
    {"RECEIVED", "received", Align::right},
    {"SENT", "sent", Align::right},
};

struct Type {
    std::uint32_t number;
    const char *name;
};
constexpr Type types[] = {
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

Cell messageCell(std::uint32_t number)
{
    const auto type = std::ranges::find(types, number, &Type::number);
    return type == std::end(types) ? emptyCell() : textCell(type->name);
}

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { inMsgs, outMsgs, inErrors, outErrors };
    TableReader all(session, "icmpStatsEntry",
                    {"icmpStatsInMsgs", "icmpStatsOutMsgs", "icmpStatsInErrors", "icmpStatsOutErrors"});
    while (all.next()) {
        sink({emptyCell(), textCell("all messages"), counterCell(all, inMsgs), counterCell(all, outMsgs)});
        sink({emptyCell(), textCell("errors"), counterCell(all, inErrors), counterCell(all, outErrors)});
    }
    enum { inPkts, outPkts };
    TableReader byType(session, "icmpMsgStatsEntry", {"icmpMsgStatsInPkts", "icmpMsgStatsOutPkts"});
    while (byType.next()) {
        const std::uint32_t type = byType.key().number(1);
        sink({Cell{std::to_string(type), type, {}}, messageCell(type), counterCell(byType, inPkts),
              counterCell(byType, outPkts)});
    }
}

} // namespace

const View icmpView{"icmp", columns, list};

} // namespace ipmib::cli
