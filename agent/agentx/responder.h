// SPDX-License-Identifier: BSD-3-Clause
// Answers a master's requests: all variables of a message that fall into one table are one batch.
#pragma once

#include "agent/agentx/codec.h"

#include "host/catalogue.h"

#include <deque>
#include <span>
#include <vector>

namespace ipmib::agent::agentx
{

class Responder
{
  public:
    explicit Responder(host::Catalogue &catalogue) : catalogue_(catalogue) {}

    // Only these tables are answered from here on; ascending. They are kept by whoever calls.
    using Tables = std::span<const host::ServedTable *const>;
    void serve(Tables tables) { tables_ = tables; }

    // A message has come: what is answered from now on is so now. The first source that it asks and whose rows have not
    // been read yet; null when there is none.
    const host::Source *begin(const netsnmp_pdu &message);

    // Turns a request, which has begun, into its response. False when there is none to send.
    bool answer(netsnmp_pdu &message);

  private:
    // A variable of a request, and what follows it.
    struct Asked {
        netsnmp_variable_list *variable;
        host::Oid name;
        host::Oid end;     // the answer must lie before it; empty: anywhere
        bool included;     // the name itself is an answer too
        bool ended;        // there was nothing more in the repetition before
        std::size_t table; // that is asked next
    };

    void gather(netsnmp_variable_list *first, bool withRange);
    void get();
    void getNext();
    void getIncluded(std::size_t table);
    void getBulk(netsnmp_pdu &message);
    // Asks for the variables of `batch_`, by their numbers, with one of a source's methods.
    template <typename Method>
    void ask(Method method);
    // Those variables of a table into `batch_`; false when there are none.
    template <typename Predicate>
    bool gatherBatch(std::size_t table, Predicate isWanted);
    void deliver();
    bool isWithinTable(const Asked &asked) const;
    void fail(std::size_t variable);
    std::size_t tableOf(host::OidView name) const;
    static bool mayFollow(const Asked &asked, host::OidView name);

    host::Catalogue &catalogue_;
    Tables tables_;
    long error_ = 0;
    long errorIndex_ = 0;
    // The message in work; all keep the size of the largest so far.
    std::deque<Asked> asked_;
    std::size_t count_ = 0;
    std::vector<std::size_t> batch_;
    std::vector<host::Variable> variables_;
};

} // namespace ipmib::agent::agentx
