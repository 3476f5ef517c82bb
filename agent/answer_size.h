// SPDX-License-Identifier: BSD-3-Clause
// What becomes of an answer that is longer than whoever asked can take, or than the transport can carry.
#pragma once

#include "net_snmp.h"

namespace ipmib::agent
{

// A flag of a message, beside the library's: the context that it has was not named by who asks, nor is it in the
// answer.
inline constexpr u_long contextIsImplied = 0x40000000;

// For as long as it lives, answers are answers to this request of the session, which must outlive it. What the request
// says about the room for them (msgMaxSize) is kept, and hidden from the library.
class AnswersTo
{
  public:
    AnswersTo(const netsnmp_session &session, netsnmp_pdu &request);
    ~AnswersTo();
    AnswersTo(const AnswersTo &) = delete;
    AnswersTo &operator=(const AnswersTo &) = delete;
};

// Encodes a message for the library, as the build hook of a session (snmp_add_full). An answer that is longer than
// there is room, which is never more than the session's `sndMsgMaxSize`, keeps as many variables from the front as fit
// when it answers a GETBULK, and else becomes tooBig (RFC 1157, 4.1; RFC 3416, 4.2). `buffer` is allocated with malloc,
// holds `size` octets and may be reallocated; the message begins where it begins and is `length` octets long. Returns
// 0, or -1 with the session's `s_snmp_errno` set.
int buildMessage(netsnmp_session *session, netsnmp_pdu *message, u_char **buffer, std::size_t *size,
                 std::size_t *length);

} // namespace ipmib::agent
