// SPDX-License-Identifier: BSD-3-Clause
// A line for each table that is not as one would expect, one for all that replace the master's, and one for all that it
// keeps.

#include "ownership_report.h"

#include "net_snmp.h"

#include <set>

namespace ipmib::agent
{

OwnershipReport::OwnershipReport(std::string topic, std::string directive)
    : topic_(std::move(topic)), directive_(std::move(directive))
{
}

void OwnershipReport::log(const std::vector<Claim> &claims)
{
    told_.resize(claims.size());
    std::string left;
    std::string replaced;
    std::set<std::string> said; // of scalars of one group what is true of all is said once
    for (std::size_t i = 0; i < claims.size(); ++i) {
        std::string text = textOf(claims[i]);
        if (text == told_[i]) {
            continue;
        }
        told_[i] = std::move(text);
        const char *name = claims[i].table().name;
        if (!said.insert(name + (": " + told_[i])).second) {
            continue;
        }
        if (claims[i].owner() == Owner::agents || claims[i].owner() == Owner::oursInstead) {
            std::string &list = claims[i].owner() == Owner::agents ? left : replaced;
            list += std::string(list.empty() ? "" : ", ") + name;
        } else {
            log(claims[i]);
        }
    }
    if (!replaced.empty()) {
        snmp_log(LOG_INFO, "%s: our rows replace the master's (\"%s TABLE off\" leaves it its own): %s\n",
                 topic_.c_str(), directive_.c_str(), replaced.c_str());
    }
    if (!left.empty()) {
        snmp_log(LOG_INFO, "%s: left to the master, which has its own (\"%s TABLE take\" replaces it): %s\n",
                 topic_.c_str(), directive_.c_str(), left.c_str());
    }
}

void OwnershipReport::log(const Claim &claim) const
{
    const char *name = claim.table().name;
    if (claim.isFault()) {
        snmp_log(LOG_ERR, "%s: %s is %s; end the other, or say \"%s %s off\"\n", topic_.c_str(), name,
                 textOf(claim).c_str(), directive_.c_str(), name);
    } else if (claim.owner() == Owner::others) {
        snmp_log(LOG_WARNING, "%s: %s is left to another sub-agent, which registered it before\n", topic_.c_str(),
                 name);
    }
}

} // namespace ipmib::agent
