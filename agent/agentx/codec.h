// SPDX-License-Identifier: BSD-3-Clause
// AgentX messages to octets and back, by the net-snmp library's own code for them.
#pragma once

#include "agent/net_snmp.h"

#include "host/oid.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ipmib::agent::agentx
{

// Types of messages, as RFC 2741 numbers them.
enum MessageType {
    openMessage = 1,
    closeMessage = 2,
    registerMessage = 3,
    unregisterMessage = 4,
    getMessage = 5,
    getNextMessage = 6,
    getBulkMessage = 7,
    testSetMessage = 8,
    commitSetMessage = 9,
    undoSetMessage = 10,
    cleanupSetMessage = 11,
    notifyMessage = 12,
    responseMessage = 18
};

// Errors of AgentX itself.
enum ErrorCode {
    noError = 0,
    notOpen = 257,
    unsupportedContext = 262,
    duplicateRegistration = 263,
    parseError = 266,
    processingError = 268
};

// "requestDenied (267)"
std::string textOfError(long code);

struct FreePdu {
    void operator()(netsnmp_pdu *pdu) const { snmp_free_pdu(pdu); }
};
using Message = std::unique_ptr<netsnmp_pdu, FreePdu>;

// A message of ours, of the session with this number. Throws std::bad_alloc.
Message makeMessage(MessageType type, long sessionId, long packetId);
// With its identifier as the message's only variable.
void addIdentifier(netsnmp_pdu &message, host::OidView identifier);
// That it is for; "" is the one without a name.
void setContext(netsnmp_pdu &message, const std::string &context);
std::string contextOf(const netsnmp_pdu &message);
void addText(netsnmp_pdu &message, const std::string &text);
// Turns a request into its response. With an error it has no variables; the index is that of the variable at fault.
void becomeResponse(netsnmp_pdu &message, long error, long errorIndex = 0);

class Codec
{
  public:
    Codec();

    // The octets of a message; they are good until the next call. Empty when it cannot be expressed.
    std::span<const std::uint8_t> encode(netsnmp_pdu &message);

    // How long the message is that these octets begin with: 0 when they do not tell yet, negative when they are none.
    static std::ptrdiff_t lengthOf(std::span<std::uint8_t> octets);
    // Null when the octets are no message.
    Message decode(std::span<std::uint8_t> octets);

  private:
    netsnmp_session session_; // the library's code wants one, for nothing but its version
    std::unique_ptr<u_char, void (*)(void *)> buffer_;
    std::size_t capacity_ = 0;
};

} // namespace ipmib::agent::agentx
