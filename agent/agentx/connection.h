// SPDX-License-Identifier: BSD-3-Clause
// A stream of AgentX messages to and from a master, in the library's wait. Nothing here ever blocks.
#pragma once

#include "agent/agentx/codec.h"
#include "agent/agentx/master_address.h"
#include "agent/agentx/name_lookup.h"

#include <functional>
#include <string>
#include <vector>

namespace ipmib::agent::agentx
{

class Connection
{
  public:
    static constexpr const char *masterClosed = "the master closed the connection";

    // Any of them may close the connection; none may destroy it.
    struct Listener {
        std::function<void()> connected;
        std::function<void(netsnmp_pdu &)> received;
        std::function<void(const std::string &reason)> lost; // or never made; it is closed then
    };

    Connection(MasterAddress address, Listener listener);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    const MasterAddress &address() const { return address_; }

    // Begins to connect; `connected` or `lost` follows, maybe within the call.
    void open();
    // Without a word to the listener. What was not written yet is not written.
    void close();
    void send(netsnmp_pdu &message);

  private:
    void connectTo(const Place &place);
    void readable();
    void writable();
    void takeMessages();
    void flush();
    void waitToWrite(bool wait);
    void lose(const std::string &reason);

    MasterAddress address_;
    Listener listener_;
    NameLookup lookup_;
    Codec codec_;
    int descriptor_ = -1;
    bool connecting_ = false;
    bool waitsToWrite_ = false;
    std::vector<std::uint8_t> input_;
    std::vector<std::uint8_t> output_;
};

} // namespace ipmib::agent::agentx
