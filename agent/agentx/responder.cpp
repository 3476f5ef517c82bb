// SPDX-License-Identifier: BSD-3-Clause
// The library's own sub-agent passes each message through its request machinery and two pipes to itself. None of that
// is needed here: the master has checked who may see what, and the resolver knows the rest.

#include "agent/agentx/responder.h"

#include "agent/varbind.h"

#include <algorithm>

namespace ipmib::agent::agentx
{

namespace
{

// Repetitions end where nobody would read on; a master asks again for what is missing.
constexpr long mostVariables = 1000;

// What the library turns the ranges of a request into.
bool isIncluded(const netsnmp_variable_list &variable)
{
    return variable.type == ASN_PRIV_INCL_RANGE;
}

host::Oid endOf(const netsnmp_variable_list &variable)
{
    host::Oid end;
    if (variable.type == ASN_PRIV_INCL_RANGE || variable.type == ASN_PRIV_EXCL_RANGE) {
        assignOid(end, {variable.val.objid, variable.val_len / sizeof(oid)});
    }
    if (end.size() <= 2 && std::ranges::all_of(end.view(), [](host::SubId id) { return id == 0; })) {
        end.clear(); // the null identifier, which means no end
    }
    return end;
}

void setException(netsnmp_variable_list &variable, u_char exception)
{
    snmp_set_var_typed_value(&variable, exception, nullptr, 0);
}

} // namespace

const host::Source *Responder::begin(const netsnmp_pdu &message)
{
    if (message.command != getMessage && message.command != getNextMessage && message.command != getBulkMessage) {
        return nullptr;
    }
    catalogue_.beginPacket();
    for (const netsnmp_variable_list *each = message.variables; each != nullptr; each = each->next_variable) {
        host::Oid name;
        assignOid(name, {each->name, each->name_length});
        const std::size_t table = tableOf(name.view());
        if (table < tables_.size() && !tables_[table]->source->areRead()) {
            return tables_[table]->source;
        }
    }
    return nullptr;
}

bool Responder::answer(netsnmp_pdu &message)
{
    error_ = noError;
    errorIndex_ = 0;
    switch (message.command) {
    case getMessage:
    case getNextMessage:
    case getBulkMessage:
        gather(message.variables, message.command != getMessage);
        if (message.command == getMessage) {
            get();
        } else if (message.command == getNextMessage) {
            getNext();
        } else {
            getBulk(message);
        }
        break;
    case testSetMessage:
        error_ = SNMP_ERR_NOTWRITABLE;
        errorIndex_ = 1;
        break;
    case commitSetMessage:
    case undoSetMessage: // of a test that was refused
        error_ = processingError;
        break;
    case cleanupSetMessage:
        return false;
    default:
        error_ = parseError;
        break;
    }
    becomeResponse(message, error_, errorIndex_);
    return true;
}

void Responder::gather(netsnmp_variable_list *first, bool withRange)
{
    count_ = 0;
    for (netsnmp_variable_list *variable = first; variable != nullptr; variable = variable->next_variable) {
        if (count_ == asked_.size()) {
            asked_.emplace_back();
        }
        Asked &asked = asked_[count_++];
        asked.variable = variable;
        assignOid(asked.name, {variable->name, variable->name_length});
        asked.ended = false;
        asked.included = withRange && isIncluded(*variable);
        asked.end.clear();
        if (withRange) {
            asked.end = endOf(*variable);
        }
        setException(*variable, SNMP_ENDOFMIBVIEW); // until there is an answer
    }
}

// The table that the name lies in, or else the first one behind it.
std::size_t Responder::tableOf(host::OidView name) const
{
    const auto behind = std::ranges::partition_point(tables_, [name](const host::ServedTable *table) {
        return std::is_gt(host::compare(name, table->root.view())) && !host::isWithin(name, table->root.view());
    });
    return static_cast<std::size_t>(behind - tables_.begin());
}

bool Responder::mayFollow(const Asked &asked, host::OidView name)
{
    return asked.end.size() == 0 || std::is_lt(host::compare(name, asked.end.view()));
}

void Responder::fail(std::size_t variable)
{
    const long index = static_cast<long>(variable) + 1;
    if (error_ == noError || index < errorIndex_) { // tables are not asked in the order of variables
        error_ = SNMP_ERR_GENERR;
        errorIndex_ = index;
    }
}

template <typename Method>
void Responder::ask(Method method)
{
    if (variables_.size() < batch_.size()) {
        variables_.resize(batch_.size());
    }
    for (std::size_t i = 0; i < batch_.size(); ++i) {
        variables_[i].asked = asked_[batch_[i]].name.view();
    }
    method(std::span(variables_.data(), batch_.size()));
}

template <typename Predicate>
bool Responder::gatherBatch(std::size_t table, Predicate isWanted)
{
    batch_.clear();
    for (std::size_t i = 0; i < count_; ++i) {
        if (asked_[i].table == table && isWanted(asked_[i])) {
            batch_.push_back(i);
        }
    }
    return !batch_.empty();
}

bool Responder::isWithinTable(const Asked &asked) const
{
    return asked.table < tables_.size() && host::isWithin(asked.name.view(), tables_[asked.table]->root.view());
}

void Responder::get()
{
    for (std::size_t i = 0; i < count_; ++i) {
        Asked &asked = asked_[i];
        asked.table = tableOf(asked.name.view());
        if (!isWithinTable(asked)) {
            asked.table = tables_.size();
            setException(*asked.variable, SNMP_NOSUCHOBJECT);
        }
    }
    for (std::size_t table = 0; table < tables_.size(); ++table) {
        if (gatherBatch(table, [](const Asked &) { return true; })) {
            ask([&](std::span<host::Variable> variables) { tables_[table]->source->get(variables); });
            deliver();
        }
    }
}

void Responder::deliver()
{
    for (std::size_t i = 0; i < batch_.size(); ++i) {
        netsnmp_variable_list &variable = *asked_[batch_[i]].variable;
        switch (variables_[i].status) {
        case host::Status::ok:
            setValue(variable, variables_[i].value);
            break;
        case host::Status::noSuchObject:
            setException(variable, SNMP_NOSUCHOBJECT);
            break;
        case host::Status::genErr:
            fail(batch_[i]);
            break;
        default:
            setException(variable, SNMP_NOSUCHINSTANCE);
            break;
        }
    }
}

void Responder::getIncluded(std::size_t table)
{
    if (!gatherBatch(table, [this](const Asked &asked) {
            return asked.included && isWithinTable(asked) && mayFollow(asked, asked.name.view());
        })) {
        return;
    }
    ask([&](std::span<host::Variable> variables) { tables_[table]->source->get(variables); });
    for (std::size_t i = 0; i < batch_.size(); ++i) {
        if (variables_[i].status == host::Status::ok) {
            Asked &asked = asked_[batch_[i]];
            setValue(*asked.variable, variables_[i].value);
            asked.table = tables_.size();
        }
    }
}

void Responder::getNext()
{
    std::size_t table = tables_.size();
    for (std::size_t i = 0; i < count_; ++i) {
        asked_[i].table = asked_[i].ended ? tables_.size() : tableOf(asked_[i].name.view());
        table = std::min(table, asked_[i].table);
    }
    for (; table < tables_.size(); ++table) {
        getIncluded(table);
        const host::OidView root = tables_[table]->root.view();
        if (!gatherBatch(table, [&](const Asked &asked) { return mayFollow(asked, root); })) {
            continue;
        }
        ask([&](std::span<host::Variable> variables) { tables_[table]->source->getNext(variables, root); });
        for (std::size_t i = 0; i < batch_.size(); ++i) {
            Asked &asked = asked_[batch_[i]];
            const host::Variable &found = variables_[i];
            if (found.status == host::Status::endOfRegion) {
                ++asked.table;
            } else if (found.status == host::Status::ok && mayFollow(asked, found.name.view())) {
                asked.name = found.name;
                setName(*asked.variable, found.name.view());
                setValue(*asked.variable, found.value);
            } else if (found.status == host::Status::genErr) {
                fail(batch_[i]);
            }
        }
    }
}

void Responder::getBulk(netsnmp_pdu &message)
{
    const auto single = static_cast<std::size_t>(std::clamp<long>(message.non_repeaters, 0, mostVariables));
    const long repetitions = message.max_repetitions;
    getNext();
    const std::size_t repeated = count_ - std::min(single, count_);
    if (repeated == 0) {
        return;
    }
    netsnmp_variable_list *last = asked_[count_ - 1].variable;
    asked_.erase(asked_.begin(), asked_.begin() + static_cast<std::ptrdiff_t>(count_ - repeated));
    count_ = repeated;
    for (long i = 1; i < repetitions && error_ == noError && i * static_cast<long>(repeated) < mostVariables; ++i) {
        if (std::all_of(asked_.begin(), asked_.begin() + static_cast<std::ptrdiff_t>(count_),
                        [](const Asked &asked) { return asked.variable->type == SNMP_ENDOFMIBVIEW; })) {
            return;
        }
        for (std::size_t j = 0; j < count_; ++j) {
            asked_[j].ended = asked_[j].variable->type == SNMP_ENDOFMIBVIEW;
            asked_[j].included = false;
            const LibraryOid name(asked_[j].name.view());
            last = snmp_varlist_add_variable(&last, name.data(), name.size(), SNMP_ENDOFMIBVIEW, nullptr, 0);
            asked_[j].variable = last;
        }
        getNext();
    }
}

} // namespace ipmib::agent::agentx
