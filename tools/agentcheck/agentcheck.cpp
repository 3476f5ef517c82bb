// SPDX-License-Identifier: BSD-3-Clause
// The order of a check: one walk of all, and then one group of rules after the other.
#include "agentcheck.h"

#include <set>

namespace ipmib::agentcheck
{
namespace
{

// Whether there is an agent at all.
std::uint64_t readUpTime(ClientSession &session)
{
    const Answer answer = session.get({sysUpTime});
    if (!answer.isThere) {
        throw NoAnswer(ClientSession::agent() + " does not answer in " + session.versionText());
    }
    return answer.variables.empty() ? 0 : answer.variables.front().value.number;
}

// The same agent for those who speak SNMPv1; null when it has no answer for them.
std::unique_ptr<ClientSession> openVersion1(Pace &pace, Version version, Report &report)
{
    if (version != Version::v2c) {
        return nullptr;
    }
    auto session = std::make_unique<ClientSession>(pace, Version::v1);
    if (!session->get({sysUpTime}).isThere) {
        report.fact("the agent does not answer in SNMPv1");
        return nullptr;
    }
    return session;
}

std::string sizeText(const Region &region, const Walk &walk)
{
    if (!region.isTable) {
        return std::to_string(walk.values.size()) + " scalars";
    }
    std::set<Name, Ascending> rows;
    for (const auto &[name, value] : walk.values) {
        const host::OidView instance = instanceOf(name, *region.objectOf(name));
        rows.emplace(instance.begin(), instance.end());
    }
    return (walk.isCut ? "the first " : "") + std::to_string(rows.size()) + " rows" +
           (walk.isCut ? ", more were not looked at (--rows)" : "");
}

} // namespace

void checkAgent(const Options &options, const Objects &objects, Report &report)
{
    Pace pace(options.packetsPerSecond);
    ClientSession session(pace);
    const auto began = std::chrono::steady_clock::now();
    const std::uint64_t upTime = readUpTime(session);
    const auto session1 = openVersion1(pace, session.version(), report);

    Exchange exchange(session, report);
    std::unique_ptr<Exchange> exchange1;
    if (session1 != nullptr) {
        exchange1 = std::make_unique<Exchange>(*session1, report);
    }
    Check check{options.settings, objects, report, exchange, exchange1.get(), upTime, began};
    Walker walker(exchange, report, options.settings.rows);
    for (const Region &region : objects.regions()) {
        if (options.regions.empty() || options.regions.contains(region.name)) {
            const Walk &walk = check.walks[&region] = walker.byGetNext(region);
            report.fact(region.name + ": " + sizeText(region, walk));
        }
    }
    for (const auto group : {checkValues, checkIndexes, checkSameRows, checkSuccessors, checkRelations, checkPointers,
                             checkZones, checkWholeRows, checkInterfaces, checkConnections, checkCounts, checkCounters,
                             checkTimes, checkAbsent, checkWrites}) {
        group(check);
    }
    reportWhatIsStillWrong(check);
}

} // namespace ipmib::agentcheck
