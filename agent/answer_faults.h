// SPDX-License-Identifier: BSD-3-Clause
// What goes wrong with the answers of a device that is made up: here alone, between the library's encoder and the
// transports. What is sent later waits here and holds nobody up.
#pragma once

#include "contexts.h"
#include "net_snmp.h"

#include "host/instances.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

namespace ipmib::agent
{

class AnswerFaults
{
  public:
    // Of this platform's devices. All outlive it, and so do the transports. There is one at a time.
    AnswerFaults(const IpmibPlatformHooks *platform, host::Instances &instances, const Contexts &contexts);
    ~AnswerFaults();
    AnswerFaults(const AnswerFaults &) = delete;
    AnswerFaults &operator=(const AnswerFaults &) = delete;

    // Null where answers are sent as they are, as all those of real devices.
    static AnswerFaults *inForce();

    // A message to whoever asks is about to be encoded: `request`, where it is known. Changes it.
    void spoil(netsnmp_pdu &message, const netsnmp_pdu *request);

    // Sends that message. The arguments are those of the library's f_send, and so is the function that does send.
    using Send = int (*)(netsnmp_transport *, const void *, int, void **, int *);
    struct Encoded {
        const void *octets;
        int size;
        void **opaque;
        int *opaqueLength;
    };
    enum class Patience { none, asLongAsItTakes }; // whether the transport is sure to be there later
    void send(netsnmp_transport &transport, const Encoded &message, Send way, Patience patience);

  private:
    using Clock = std::chrono::steady_clock;
    struct Held {
        netsnmp_transport *transport;
        Send send;
        std::vector<std::uint8_t> octets;
        std::vector<std::uint8_t> opaque;
    };

    void hold(netsnmp_transport &transport, const Encoded &message, Send way, std::uint32_t delayMs);
    void sendWhatIsDue();
    void setAlarm();

    const IpmibRehearsalHooks *hooks_; // null for a platform without
    host::Instances &instances_;
    const Contexts &contexts_;
    IpmibAnswerFaults next_{}; // of the message that has been encoded last
    std::multimap<Clock::time_point, Held> held_;
    unsigned alarm_ = 0;
};

} // namespace ipmib::agent
