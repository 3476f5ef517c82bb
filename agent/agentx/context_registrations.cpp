// SPDX-License-Identifier: BSD-3-Clause
// A master that has to register a thousand contexts is sent so many messages as it can take at a time.

#include "agent/agentx/context_registrations.h"

#include "agent/ownership.h"

#include <algorithm>
#include <utility>

namespace ipmib::agent::agentx
{
namespace
{

constexpr std::size_t mostUnderWay = 64;

// What is registered of them: tables, and groups of scalars as one.
std::vector<host::Oid> rootsOf(const std::vector<const host::ServedTable *> &tables)
{
    std::vector<host::Oid> roots;
    for (const host::ServedTable *table : tables) {
        const host::OidView root = table->isOfGroup ? table->place() : table->root.view();
        const auto isSame = [&](const host::Oid &other) { return std::ranges::equal(other.view(), root); };
        if (std::ranges::none_of(roots, isSame)) {
            roots.emplace_back(root);
        }
    }
    return roots;
}

} // namespace

void ContextRegistrations::serve(std::vector<const host::ServedTable *> tables, const Context &context)
{
    std::ranges::sort(tables, [](const host::ServedTable *left, const host::ServedTable *right) {
        return std::is_lt(host::compare(left->root.view(), right->root.view()));
    });
    Place &place = places_[context.name];
    const bool isSame = place.tables == tables && place.instance == context.instance;
    if (!isSame) {
        ask(context.name, place, false);
        place.instance = context.instance;
        place.tables = std::move(tables);
        ask(context.name, place, true);
    }
}

void ContextRegistrations::leave(const std::string &context)
{
    const auto found = places_.find(context);
    if (found != places_.end()) {
        ask(context, found->second, false);
        places_.erase(found);
    }
}

void ContextRegistrations::begin()
{
    isOpen_ = true;
    for (auto &[context, place] : places_) {
        ask(context, place, true);
    }
}

void ContextRegistrations::end()
{
    isOpen_ = false;
    requests_.clear();
    sent_.clear();
    for (auto &[context, place] : places_) {
        place.underWay = 0;
    }
}

void ContextRegistrations::ask(const std::string &context, Place &place, bool registers)
{
    if (!isOpen_) {
        return;
    }
    place.refused = 0;
    for (const host::Oid &root : rootsOf(place.tables)) {
        requests_.push_back({context, root, registers});
        place.underWay += registers ? 1 : 0;
    }
    sendMore();
}

void ContextRegistrations::sendMore()
{
    while (sent_.size() < mostUnderWay && !requests_.empty()) {
        Request request = std::move(requests_.front());
        requests_.pop_front();
        Message message = makeMessage(request.registers ? registerMessage : unregisterMessage, 0, 0);
        message->priority = ourPriority;
        setContext(*message, request.context);
        addIdentifier(*message, request.root.view());
        const long number = send_(std::move(message));
        sent_.emplace(number, std::move(request));
    }
}

bool ContextRegistrations::take(const netsnmp_pdu &response)
{
    const auto found = sent_.find(response.reqid);
    if (found == sent_.end()) {
        return false;
    }
    const Request request = std::move(found->second);
    sent_.erase(found);
    const auto place = places_.find(request.context);
    if (request.registers && place != places_.end() && place->second.underWay != 0) {
        Place &asked = place->second;
        if (response.errstat != noError && asked.refused++ == 0) {
            asked.reason = host::textOf(request.root.view()) + ": " + textOfError(response.errstat);
        }
        if (--asked.underWay == 0 && asked.refused != 0) {
            snmp_log(LOG_ERR, "agentx: context %s: the master refuses %zu of %zu registrations, the first %s\n",
                     request.context.c_str(), asked.refused, rootsOf(asked.tables).size(), asked.reason.c_str());
        }
    }
    sendMore();
    return true;
}

const ContextRegistrations::Place *ContextRegistrations::find(const std::string &context) const
{
    const auto found = places_.find(context);
    return found == places_.end() ? nullptr : &found->second;
}

} // namespace ipmib::agent::agentx
