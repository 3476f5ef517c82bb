/* SPDX-License-Identifier: BSD-3-Clause */
/* A definition of every function and record of the contract that a module does not define itself, so that all of them
 * are in one library whose interface can be stored. Nobody calls it. */
#include "../../examples/platform/one_interface.c"

#include <ipmib/mib_tree.h>
#include <ipmib/platform_hooks.h>

const IpmibPlatformHooks ipmib_platform_hooks;
/* Opaque arguments alone would leave these out. */
const GatewayKey ipmib_abi_gateway_key;
const LinkLocalBuffer ipmib_abi_link_local_buffer;

uint32_t MOR_RegCallBack(uint32_t module_id, MorCallback callback)
{
    return (void)module_id, (void)callback, 0;
}

uint32_t MOR_DeregCallBack(uint32_t module_id)
{
    return (void)module_id, 0;
}

uint32_t MOR_GetTableId(MorRequest *request)
{
    return (void)request, 0;
}

uint32_t MOR_GetMsgOpType(MorRequest *request)
{
    return (void)request, 0;
}

MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, uint32_t zero, uint32_t parameter_id)
{
    return (void)request, (void)zero, (void)parameter_id, (MorPara *)0;
}

uint32_t MOR_GetData32(MorPara *parameter)
{
    return (void)parameter, 0;
}

uint32_t MOR_GetParaLen(MorPara *parameter)
{
    return (void)parameter, 0;
}

uint32_t MOR_GetDataFromPara(MorPara *parameter, uint32_t capacity, void *buffer)
{
    return (void)parameter, (void)capacity, (void)buffer, 0;
}

uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id)
{
    return (void)request, (void)zero, (void)parameter_id, 0;
}

uint32_t MOR_GetNextParaFromMsg(MorRequest *request, uint32_t zero, uint32_t *parameter_id)
{
    return (void)request, (void)zero, (void)parameter_id, 0;
}

uint32_t MOR_AppendPara2Msg(MorReply *reply, uint32_t zero, uint32_t parameter_id, uint32_t value_type, uintptr_t value,
                            uint32_t length)
{
    return (void)reply, (void)zero, (void)parameter_id, (void)value_type, (void)value, (void)length, 0;
}

uint32_t MOR_SetMsgError(MorReply *reply, uint32_t error_code, int32_t position)
{
    return (void)reply, (void)error_code, (void)position, 0;
}

uint32_t SNMP_RegisterMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root)
{
    return (void)module_name, (void)zero, (void)one, (void)root, 0;
}

uint32_t SNMP_DeregMibTree(const char *module_name, uint32_t zero, uint32_t one, const MibTreeNode *root)
{
    return (void)module_name, (void)zero, (void)one, (void)root, 0;
}
