// SPDX-License-Identifier: BSD-3-Clause
// What a session serves in contexts, and what it has asked its master to register there. Masters have nothing in a
// context by themselves, so a registration is one message; many are under way at a time.
#pragma once

#include "agent/agentx/codec.h"
#include "agent/context_server.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace ipmib::agent::agentx
{

class ContextRegistrations
{
  public:
    struct Place {
        std::size_t instance = host::Instances::first;
        std::vector<const host::ServedTable *> tables = {}; // ascending
        std::size_t underWay = 0;                           // registrations
        std::size_t refused = 0;
        std::string reason = {}; // of the first that was refused
    };

    // Has a message sent, and returns the number that it then has.
    using Send = std::function<long(Message)>;
    explicit ContextRegistrations(Send send) : send_(std::move(send)) {}

    // Served in this context are these tables and no others.
    void serve(std::vector<const host::ServedTable *> tables, const Context &context);
    void leave(const std::string &context);

    // A session is open: everything is registered. Or there is none any more.
    void begin();
    void end();

    // Whether it was the answer to one of these registrations.
    bool take(const netsnmp_pdu &response);
    bool areDone() const { return requests_.empty() && sent_.empty(); }

    // Null when there is no such context.
    const Place *find(const std::string &context) const;

  private:
    struct Request {
        std::string context;
        host::Oid root;
        bool registers;
    };

    void ask(const std::string &context, Place &place, bool registers);
    void sendMore();

    Send send_;
    bool isOpen_ = false;
    std::map<std::string, Place> places_;
    std::deque<Request> requests_;           // to be sent
    std::unordered_map<long, Request> sent_; // by number, without an answer
};

} // namespace ipmib::agent::agentx
