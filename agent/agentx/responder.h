// SPDX-License-Identifier: BSD-3-Clause
// Answers a master's requests: all variables of a message that fall into one region are one batch.
#pragma once

#include "agent/agentx/codec.h"

#include "host/resolver.h"

#include <ipmib/platform_hooks.h>

#include <deque>
#include <vector>

namespace ipmib::agent::agentx
{

class Responder
{
  public:
    // The platform may be null.
    Responder(host::Resolver &resolver, const IpmibPlatformHooks *platform) : resolver_(resolver), platform_(platform)
    {
    }

    // Only these regions are answered; ascending.
    void serve(std::vector<const host::Resolver::Region *> regions) { regions_ = std::move(regions); }

    // Turns a request into its response. False when there is none to send.
    bool answer(netsnmp_pdu &message);

  private:
    // A variable of a request, and what follows it.
    struct Asked {
        netsnmp_variable_list *variable;
        host::Oid name;
        host::Oid end;      // the answer must lie before it; empty: anywhere
        bool included;      // the name itself is an answer too
        bool ended;         // there was nothing more in the repetition before
        std::size_t region; // that is asked next
    };

    void gather(netsnmp_variable_list *first, bool withRange);
    void get();
    void getNext();
    void getIncluded();
    void getBulk(netsnmp_pdu &message);
    // Asks for the variables of `batch_`, by their numbers, with one of the resolver's methods.
    template <typename Method>
    void ask(Method method);
    void fail(std::size_t variable);
    std::size_t regionOf(host::OidView name) const;
    static bool mayFollow(const Asked &asked, host::OidView name);

    host::Resolver &resolver_;
    const IpmibPlatformHooks *platform_;
    std::vector<const host::Resolver::Region *> regions_;
    long error_ = 0;
    long errorIndex_ = 0;
    // The message in work; all keep the size of the largest so far.
    std::deque<Asked> asked_;
    std::size_t count_ = 0;
    std::vector<std::size_t> batch_;
    std::vector<host::Variable> variables_;
};

} // namespace ipmib::agent::agentx
