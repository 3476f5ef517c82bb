// SPDX-License-Identifier: BSD-3-Clause
// The agent is asked in the library's blocking way, which is good for a program that looks once and ends.

#include "comparison.h"

#include "varbind.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace ipmib::agent
{

namespace
{

constexpr long repetitions = 50;

struct FreePdu {
    void operator()(netsnmp_pdu *pdu) const { snmp_free_pdu(pdu); }
};
using Response = std::unique_ptr<netsnmp_pdu, FreePdu>;

bool endsTheView(const netsnmp_variable_list &variable)
{
    return variable.type == SNMP_ENDOFMIBVIEW || variable.type == SNMP_NOSUCHOBJECT ||
           variable.type == SNMP_NOSUCHINSTANCE;
}

} // namespace

Comparison::Comparison(const std::string &words)
{
    std::istringstream stream("ipmibd " + words);
    std::vector<std::string> list{std::istream_iterator<std::string>(stream), {}};
    std::vector<char *> arguments;
    for (std::string &word : list) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    netsnmp_session wanted;
    const int used = snmp_parse_args(static_cast<int>(list.size()), arguments.data(), &wanted, "", nullptr);
    if (used != static_cast<int>(list.size())) {
        throw std::runtime_error("--ask needs the options and the address that snmpwalk takes, not \"" + words + "\"");
    }
    session_ = snmp_sess_open(&wanted);
    std::free(wanted.community); // a copy of the word
    if (session_ == nullptr) {
        throw std::runtime_error("cannot ask \"" + words + "\": " + snmp_api_errstring(snmp_errno));
    }
    hasBulk_ = wanted.version != SNMP_VERSION_1;
}

Comparison::~Comparison()
{
    snmp_sess_close(session_);
}

Comparison::Instances Comparison::instancesOfAgent(host::OidView root)
{
    Instances found;
    host::Oid last(root);
    for (;;) {
        netsnmp_pdu *request = snmp_pdu_create(hasBulk_ ? SNMP_MSG_GETBULK : SNMP_MSG_GETNEXT);
        if (hasBulk_) {
            request->non_repeaters = 0;
            request->max_repetitions = repetitions;
        }
        const LibraryOid name(last.view());
        snmp_add_null_var(request, name.data(), name.size());
        netsnmp_pdu *answer = nullptr;
        if (snmp_sess_synch_response(session_, request, &answer) != STAT_SUCCESS || answer == nullptr) {
            throw std::runtime_error("the agent does not answer what is below " + host::textOf(root));
        }
        const Response response(answer);
        if (response->errstat != SNMP_ERR_NOERROR) {
            return found; // as version 1 ends a walk
        }
        for (const auto *variable = response->variables; variable != nullptr; variable = variable->next_variable) {
            host::Oid next;
            assignOid(next, {variable->name, variable->name_length});
            if (endsTheView(*variable) || !host::isWithin(next.view(), root) ||
                !std::is_gt(host::compare(next.view(), last.view()))) {
                return found;
            }
            found.emplace_back(next.view().begin(), next.view().end());
            last = next;
        }
        if (response->variables == nullptr) {
            return found;
        }
    }
}

Comparison::Instances Comparison::ownInstances(const host::ServedTable &table)
{
    Instances found;
    table.source->start();
    host::Oid last(table.root);
    host::Variable variable;
    for (;;) {
        variable.asked = last.view();
        table.source->getNext({&variable, 1}, table.root.view());
        if (variable.status != host::Status::ok) {
            return found;
        }
        found.emplace_back(variable.name.view().begin(), variable.name.view().end());
        last = variable.name;
    }
}

Difference Comparison::of(const host::ServedTable &table)
{
    const Instances theirs = instancesOfAgent(table.root.view());
    const Instances ours = ownInstances(table);
    const auto isBelow = [](const auto &left, const auto &right) {
        return std::is_lt(host::compare(host::OidView(left), host::OidView(right)));
    };
    Instances both;
    std::ranges::set_intersection(theirs, ours, std::back_inserter(both), isBelow);
    return {ours.size() - both.size(), theirs.size() - both.size()};
}

} // namespace ipmib::agent
