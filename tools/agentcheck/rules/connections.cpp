// SPDX-License-Identifier: BSD-3-Clause
// TCP connections and UDP endpoints: what their states and the two ends in their indexes may be beside each other.
#include "index_key.h"
#include "rules.h"

#include <algorithm>
#include <set>

namespace ipmib::agentcheck
{
namespace
{

constexpr std::uint64_t listen = 2;
constexpr std::uint64_t deleteTcb = 12;

// Of IP; 0 where the type does not say it.
unsigned versionOf(std::uint32_t addressType)
{
    return addressType == ipv4 || addressType == ipv4z ? 4 : addressType == ipv6 || addressType == ipv6z ? 6 : 0;
}

void checkStates(Check &check, const char *column, bool mayListen)
{
    const host::Object &state = check.objects.named(column);
    for (const auto &[region, walk] : check.walks) {
        if (!host::isWithin(state.oid.view(), region->root)) {
            continue;
        }
        for (const auto &[name, value] : walk.values) {
            const bool isWrong = value.number == deleteTcb || (value.number == listen && !mayListen);
            if (host::isWithin(name, state.oid.view()) && value.tag == Tag::integer && isWrong) {
                check.report.broken(Rule::connectionState, name,
                                    value.number == listen ? "is listen(2)" : "is deleteTCB(12)");
            }
        }
    }
}

struct Ends {
    const char *table;
    const char *localType;
    const char *remoteType;
};
constexpr Ends tcpEnds{"tcpConnectionTable", "tcpConnectionLocalAddressType", "tcpConnectionRemAddressType"};
constexpr Ends udpEnds{"udpEndpointTable", "udpEndpointLocalAddressType", "udpEndpointRemoteAddressType"};

// Each row once: its first column, and its index.
void forEachRow(const Check &check, const char *table, const std::function<void(const Name &, const IndexKey &)> &look)
{
    std::set<Name, Ascending> rows;
    for (const auto &[name, value] : check.walked(table).values) {
        const host::Object &object = *check.objects.objectOf(name);
        const host::OidView instance = instanceOf(name, object);
        if (rows.emplace(instance.begin(), instance.end()).second) {
            if (const auto key = readIndex(*object.node, instance)) {
                look(name, *key);
            }
        }
    }
}

void checkVersions(Check &check, const Ends &ends)
{
    forEachRow(check, ends.table, [&](const Name &name, const IndexKey &key) {
        const unsigned local = versionOf(key.number(ends.localType));
        const unsigned remote = versionOf(key.number(ends.remoteType));
        if (local != 0 && remote != 0 && local != remote) {
            check.report.broken(Rule::oneVersion, name,
                                "is IPv" + std::to_string(local) + " here and IPv" + std::to_string(remote) + " there");
        }
    });
}

void checkRemoteEnds(Check &check)
{
    forEachRow(check, udpEnds.table, [&](const Name &name, const IndexKey &key) {
        const auto address = key.octets("udpEndpointRemoteAddress");
        const std::uint32_t port = key.number("udpEndpointRemotePort");
        if (address.empty() && port != 0) {
            check.report.broken(Rule::anyRemote, name,
                                "has no remote address and the remote port " + std::to_string(port));
        } else if (!address.empty() && std::ranges::all_of(address, [](std::uint8_t octet) { return octet == 0; })) {
            check.report.broken(Rule::anyRemote, name,
                                "its remote address is " + std::to_string(address.size()) + " octets of 0");
        }
    });
}

} // namespace

void checkConnections(Check &check)
{
    checkStates(check, "tcpConnectionState", false);
    checkStates(check, "tcpConnState", true);
    checkVersions(check, tcpEnds);
    checkVersions(check, udpEnds);
    checkRemoteEnds(check);
}

} // namespace ipmib::agentcheck
