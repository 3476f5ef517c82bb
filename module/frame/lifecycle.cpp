// SPDX-License-Identifier: BSD-3-Clause
// What loading and unloading the library do: register the tree and the callback, and take both back. Nobody looks at
// the results: registration state lives in the agent and in the message layer.
#include <ipmib/contract_note.h>
#include <ipmib/module.h>

#include <cstdint>

IPMIB_CONTRACT_NOTE;

namespace
{

constexpr char mibName[] = "IP-MIB";

// The tree goes first in both directions, so that the agent never asks for an object that it no longer knows.
__attribute__((constructor)) void load()
{
    SNMP_Add_MIB_ip_tree();
    IP_Mor_Init();
}

__attribute__((destructor)) void unload()
{
    SNMP_Del_MIB_ip_tree();
    IP_Mor_Fini();
}

} // namespace

std::uint32_t SNMP_Add_MIB_ip_tree()
{
    return SNMP_RegisterMibTree(mibName, 0, 1, &ip_tree_node_iso);
}

std::uint32_t SNMP_Del_MIB_ip_tree()
{
    return SNMP_DeregMibTree(mibName, 0, 1, &ip_tree_node_iso);
}

std::uint32_t IP_Mor_Init()
{
    ip_IcmpMsgStats_Init(); // before the callback is bound: the first request finds the map complete
    return MOR_RegCallBack(MOR_MODULE_IP, IP_ConfigCallBack);
}

std::uint32_t IP_Mor_Fini()
{
    return MOR_DeregCallBack(MOR_MODULE_IP);
}
