// SPDX-License-Identifier: BSD-3-Clause
// Messages for benchmarks: a request is built once and sent many times, a reply only counts what is appended.
#include "free_message.h"

#include <ipmib/mib_tree.h>

#include <cstring>

std::uint32_t MOR_RegCallBack(std::uint32_t, MorCallback)
{
    return 0;
}
std::uint32_t MOR_DeregCallBack(std::uint32_t)
{
    return 0;
}
std::uint32_t SNMP_RegisterMibTree(const char *, std::uint32_t, std::uint32_t, const MibTreeNode *)
{
    return 0;
}
std::uint32_t SNMP_DeregMibTree(const char *, std::uint32_t, std::uint32_t, const MibTreeNode *)
{
    return 0;
}
std::uint32_t MOR_GetTableId(MorRequest *request)
{
    return request->table;
}
std::uint32_t MOR_GetMsgOpType(MorRequest *request)
{
    return request->operation;
}
MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, std::uint32_t, std::uint32_t id)
{
    for (std::uint32_t place = 0; place < request->count; ++place) {
        if (request->parameters[place].id == id) {
            return &request->parameters[place];
        }
    }
    return nullptr;
}
std::uint32_t MOR_GetData32(MorPara *parameter)
{
    return parameter->number;
}
std::uint32_t MOR_GetParaLen(MorPara *parameter)
{
    return parameter->length;
}
std::uint32_t MOR_GetDataFromPara(MorPara *parameter, std::uint32_t, void *buffer)
{
    std::memcpy(buffer, parameter->octets, parameter->length);
    return 0;
}
std::uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, std::uint32_t, std::uint32_t *id)
{
    request->place = 0;
    *id = request->parameters[0].id;
    return request->count;
}
std::uint32_t MOR_GetNextParaFromMsg(MorRequest *request, std::uint32_t, std::uint32_t *id)
{
    if (++request->place >= request->count) {
        return 0;
    }
    *id = request->parameters[request->place].id;
    return 1;
}
std::uint32_t MOR_AppendPara2Msg(MorReply *reply, std::uint32_t, std::uint32_t, std::uint32_t, std::uintptr_t,
                                 std::uint32_t)
{
    return ++reply->appended;
}
std::uint32_t MOR_SetMsgError(MorReply *reply, std::uint32_t error, std::int32_t)
{
    return reply->error = error;
}
