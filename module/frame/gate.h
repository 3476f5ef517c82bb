// SPDX-License-Identifier: BSD-3-Clause
// What happens to a request before a table looks at it: the operation gate and the service check.
#pragma once

#include <ipmib/message.h>

#include <cstdint>

namespace ipmib
{

// Answers OP_GET and OP_GETNEXT of one table. Returns 0 or the error that it also set on the reply.
using Handler = std::uint32_t (*)(std::uint32_t operation, MorRequest *request, MorReply *reply);

// Sets the error on the reply and returns it.
std::uint32_t refuse(MorReply *reply, std::uint32_t error, std::int32_t position = IPMIB_WHOLE_REQUEST);

// Lets OP_GET and OP_GETNEXT pass to the handler and answers every other operation itself.
std::uint32_t serve(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler);

// The same for a table that needs the running IPv6 service, whatever the request asks for.
std::uint32_t serveIp6(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler);

// The same for scalars, which are read by OP_GET alone.
std::uint32_t serveScalars(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler);

// Refuses the request when a service is not running. Returns 0 when it is.
std::uint32_t requireIp6(std::uint32_t operation, MorReply *reply);
std::uint32_t requireIp4(std::uint32_t operation, MorReply *reply);

} // namespace ipmib
