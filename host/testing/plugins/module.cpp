// SPDX-License-Identifier: BSD-3-Clause
// A small module with one scalar, 1.7, whose value comes from the platform. Built several times, each time with another
// fault.
#ifdef RECORDS_VERSION
#include <ipmib/contract_note.h>
#endif
#include <ipmib/message.h>
#include <ipmib/mib_tree.h>

#include <cstdint>

namespace
{

constexpr std::uint32_t parameter = 0x01230101;

const MibSyntax syntax = {MIB_TYPE_UNSIGNED32, nullptr};
extern const MibTreeNode root;
const MibTreeNode scalar = {"scalar",           MIB_NODE_SCALAR,      &syntax, &root,     nullptr, nullptr, 0, 7, "",
                            MIB_STATUS_CURRENT, MIB_ACCESS_READ_ONLY, nullptr, parameter, nullptr, 0,       0, 0};
const MibTreeNode root = {"root",  MIB_NODE_GROUP, nullptr,
#ifdef WITH_BROKEN_TREE
                          &scalar,
#else
                          nullptr,
#endif
                          &scalar, &scalar,        0,       1, "", MIB_STATUS_NONE, MIB_ACCESS_NONE, nullptr,
                          0,       nullptr,        0,       0, 0};

#ifdef RECORDS_VERSION
// As a library has it that was built with other headers.
__attribute__((section(".note.ipmib"), used, aligned(4))) const IpmibContractNote note = {6,
                                                                                          16,
                                                                                          IPMIB_CONTRACT_NOTE_TYPE,
                                                                                          "ipmib",
                                                                                          RECORDS_VERSION,
                                                                                          IPMIB_PLATFORM_VERSION,
                                                                                          IPMIB_MESSAGE_VERSION,
                                                                                          IPMIB_MODULE_VERSION};
#endif

} // namespace

extern "C" {
std::uint32_t ipmib_test_service();
std::uint32_t ipmib_test_service_that_nobody_has();
}

namespace
{

[[maybe_unused]] std::uint32_t answer(MorRequest *, MorReply *reply)
{
#ifdef WITH_MISSING_SYMBOL
    ipmib_test_service_that_nobody_has();
#endif
    MOR_AppendPara2Msg(reply, 0, parameter, VT_UNSIGNED32, ipmib_test_service(), 4);
    return 0;
}

[[maybe_unused]] __attribute__((constructor)) void load()
{
#ifndef WITHOUT_TREE
    SNMP_RegisterMibTree("TEST", 0, 1, &root);
#endif
#ifndef WITHOUT_CALLBACK
    MOR_RegCallBack(0x01230000, answer);
#endif
}

[[maybe_unused]] __attribute__((destructor)) void unload()
{
#ifndef WITHOUT_TREE
    SNMP_DeregMibTree("TEST", 0, 1, &root);
#endif
#ifndef WITHOUT_CALLBACK
    MOR_DeregCallBack(0x01230000);
#endif
}

} // namespace
