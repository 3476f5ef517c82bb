// SPDX-License-Identifier: BSD-3-Clause
// A walk over columns of a table.
#pragma once

#include "snmp_session.h"

#include <cstdint>
#include <stdexcept>

namespace ipmib::bench
{

// Walks the columns side by side, each until an answer leaves it.
class Walk
{
  public:
    explicit Walk(std::vector<Identifier> roots) : roots_(std::move(roots)), at_(roots_)
    {
        for (std::size_t i = 0; i < roots_.size(); ++i) {
            open_.push_back(i);
        }
    }

    template <class Visit>
    void run(SnmpSession &session, long repetitions, Visit visit)
    {
        const int command = repetitions == 0 ? SNMP_MSG_GETNEXT : SNMP_MSG_GETBULK;
        while (!open_.empty()) {
            std::vector<Identifier> names;
            for (const std::size_t column : open_) {
                names.push_back(at_[column]);
            }
            const auto take = [&](const netsnmp_pdu &answer) { takeIn(answer, visit); };
            if (!session.ask(command, names, take, repetitions)) {
                throw std::runtime_error("no answer within a minute");
            }
            ++requests;
        }
    }

    std::uint64_t variables = 0;
    std::uint64_t requests = 0;

  private:
    template <class Visit>
    void takeIn(const netsnmp_pdu &answer, Visit visit)
    {
        if (answer.errstat != SNMP_ERR_NOERROR || answer.variables == nullptr) {
            throw std::runtime_error("the agent answers with error " + std::to_string(answer.errstat));
        }
        std::vector<bool> ended(roots_.size());
        std::size_t i = 0;
        for (const netsnmp_variable_list *each = answer.variables; each != nullptr; each = each->next_variable, ++i) {
            const std::size_t column = open_[i % open_.size()];
            const Identifier name = nameOf(*each);
            if (ended[column] || isException(*each) || !isWithin(name, roots_[column])) {
                ended[column] = true;
                continue;
            }
            if (name <= at_[column]) {
                throw std::runtime_error("an identifier does not increase");
            }
            at_[column] = name;
            ++variables;
            visit(name);
        }
        std::erase_if(open_, [&](std::size_t column) { return ended[column]; });
    }

    std::vector<Identifier> roots_;
    std::vector<Identifier> at_;
    std::vector<std::size_t> open_;
};

} // namespace ipmib::bench
