// SPDX-License-Identifier: BSD-3-Clause
// The library would shorten an answer with its other encoder, which writes into buffers of fixed sizes, past their end,
// or tries for ever. So no answer that is too long ever reaches it from here.

#include "answer_size.h"

#include "answer_faults.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace ipmib::agent
{

namespace
{

const netsnmp_pdu *asked = nullptr;

using Variables = std::vector<netsnmp_variable_list *>;

struct Buffer {
    u_char **octets;
    std::size_t *size;
    std::size_t *length;
};

// From the end to the beginning, the one way in which the library extends the buffer as it needs; a configuration may
// have chosen the other.
bool encode(netsnmp_session &session, netsnmp_pdu &message, const Buffer &buffer)
{
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_REVERSE_ENCODE, 1);
    message.flags &= ~static_cast<u_long>(UCD_MSG_FLAG_FORWARD_ENCODE | UCD_MSG_FLAG_BULK_TOOBIG);
    *buffer.length = 0;
    if (snmp_build(buffer.octets, buffer.size, buffer.length, &session, &message) < 0) {
        return false;
    }
    std::memmove(*buffer.octets, *buffer.octets + *buffer.size - *buffer.length, *buffer.length);
    return true;
}

bool fits(const netsnmp_pdu &message, const Buffer &buffer)
{
    return std::cmp_less_equal(*buffer.length, message.msgMaxSize);
}

// Makes the first `count` of these the message's variables.
void keep(netsnmp_pdu &message, const Variables &variables, std::size_t count)
{
    message.variables = variables.front();
    for (std::size_t i = 0; i + 1 < variables.size(); ++i) {
        variables[i]->next_variable = variables[i + 1];
    }
    if (count == 0) {
        message.variables = nullptr;
    } else {
        variables[count - 1]->next_variable = nullptr;
    }
}

// Leaves off variables at the end until the rest fits. Only the encoder knows how long a message with so many of them
// is: privacy pads it, and its lengths have lengths.
bool shorten(netsnmp_session &session, netsnmp_pdu &message, const Buffer &buffer)
{
    Variables variables;
    for (netsnmp_variable_list *variable = message.variables; variable != nullptr; variable = variable->next_variable) {
        variables.push_back(variable);
    }
    std::size_t fitting = 0;
    std::size_t tooMany = variables.size();
    bool isEncoded = true;
    while (isEncoded && tooMany > fitting + 1) {
        const std::size_t middle = (fitting + tooMany) / 2;
        keep(message, variables, middle);
        isEncoded = encode(session, message, buffer);
        (fits(message, buffer) ? fitting : tooMany) = middle;
    }
    keep(message, variables, fitting);
    if (fitting < variables.size()) {
        snmp_free_varbind(variables[fitting]);
    }
    return isEncoded && encode(session, message, buffer);
}

// Version 1 gives the request back; where not even that fits, and in the other versions, there are no variables.
bool encodeTooBig(netsnmp_session &session, netsnmp_pdu &message, const Buffer &buffer)
{
    snmp_increment_statistic(STAT_SNMPOUTTOOBIGS);
    message.errstat = SNMP_ERR_TOOBIG;
    message.errindex = 0;
    snmp_free_varbind(message.variables);
    message.variables =
        message.version == SNMP_VERSION_1 && asked != nullptr ? snmp_clone_varbind(asked->variables) : nullptr;
    if (!encode(session, message, buffer)) {
        return false;
    }
    if (fits(message, buffer) || message.variables == nullptr) {
        return true;
    }
    snmp_free_varbind(message.variables);
    message.variables = nullptr;
    return encode(session, message, buffer);
}

} // namespace

// The library ought not to know how much room there is: it would guess how many variables fit, and gather no others. An
// answer that a sub-agent has a part in is sent later; it is made of a copy of the request, so what matters goes along
// in two fields that only traps of version 1 have.
AnswersTo::AnswersTo(const netsnmp_session &session, netsnmp_pdu &request)
{
    const auto ours = static_cast<long>(session.sndMsgMaxSize);
    asked = &request;
    request.specific_type = request.msgMaxSize == 0 ? ours : std::min(ours, request.msgMaxSize);
    request.trap_type = request.command;
    request.msgMaxSize = ours;
}

AnswersTo::~AnswersTo()
{
    asked = nullptr;
}

int buildMessage(netsnmp_session *session, netsnmp_pdu *message, u_char **octets, std::size_t *size,
                 std::size_t *length)
{
    const Buffer buffer{octets, size, length};
    if (AnswerFaults *const faults = AnswerFaults::inForce()) {
        faults->spoil(*message, asked);
    }
    if ((message->flags & contextIsImplied) != 0) {
        message->contextNameLen = 0;
    }
    message->msgMaxSize =
        message->specific_type != 0 ? message->specific_type : static_cast<long>(session->sndMsgMaxSize);
    bool isEncoded = encode(*session, *message, buffer);
    if (isEncoded && !fits(*message, buffer) && message->command == SNMP_MSG_RESPONSE) {
        const bool mayBeShorter = message->trap_type == SNMP_MSG_GETBULK && message->errstat == SNMP_ERR_NOERROR &&
                                  message->variables != nullptr;
        isEncoded = mayBeShorter && shorten(*session, *message, buffer);
        // Without a single variable a success would tell a walk nothing, and it would ask the same again.
        if (!isEncoded || message->variables == nullptr) {
            isEncoded = encodeTooBig(*session, *message, buffer);
        }
    }
    if (isEncoded && !fits(*message, buffer)) {
        session->s_snmp_errno = SNMPERR_TOO_LONG;
        return -1;
    }
    return isEncoded ? 0 : -1;
}

} // namespace ipmib::agent
