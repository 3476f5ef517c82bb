// SPDX-License-Identifier: BSD-3-Clause
// What happens to a request before a table looks at it: the operation gate and the service check.
#include "frame/gate.h"

#include <ipmib/platform.h>

namespace ipmib
{

namespace
{

std::uint32_t require(std::uint32_t state, std::uint32_t operation, MorReply *reply)
{
    if (state == 0) {
        return 0;
    }
    return refuse(reply, operation == OP_GETNEXT ? ERR_END_OF_TABLE : ERR_NO_INSTANCE);
}

} // namespace

std::uint32_t refuse(MorReply *reply, std::uint32_t error, std::int32_t position)
{
    MOR_SetMsgError(reply, error, position);
    return error;
}

std::uint32_t requireIp6(std::uint32_t operation, MorReply *reply)
{
    return require(IP6_DaemonCheck(1), operation, reply);
}

std::uint32_t requireIp4(std::uint32_t operation, MorReply *reply)
{
    return require(IP_DaemonCheck(1), operation, reply);
}

std::uint32_t serve(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler)
{
    switch (operation) {
    case OP_GET:
    case OP_GETNEXT:
        return handler(operation, request, reply);
    case OP_SET:
        return refuse(reply, ERR_READ_ONLY);
    case 5: // the message layer's own notices: taken, and nothing done
    case 6:
    case 7:
    case 8:
    case 9:
        return 0;
    default:
        return refuse(reply, ERR_BAD_PARAM);
    }
}

std::uint32_t serveIp6(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler)
{
    if (operation == OP_GET || operation == OP_GETNEXT) {
        if (const std::uint32_t error = requireIp6(operation, reply)) {
            return error;
        }
    }
    return serve(operation, request, reply, handler);
}

std::uint32_t serveScalars(std::uint32_t operation, MorRequest *request, MorReply *reply, Handler handler)
{
    if (operation == OP_GETNEXT) {
        return refuse(reply, ERR_BAD_PARAM);
    }
    return serve(operation, request, reply, handler);
}

} // namespace ipmib
