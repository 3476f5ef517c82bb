// SPDX-License-Identifier: BSD-3-Clause
// Registration by hand: the four functions that the load and unload hooks run.
#include <scripted/module_test.h>

namespace ipmib::scripted::lifecycle
{
namespace
{

class Lifecycle : public ModuleTest
{
};

TEST_F(Lifecycle, TheTreeIsRegisteredByItsRoot)
{
    world().registerTree = 0xA1;
    EXPECT_EQ(SNMP_Add_MIB_ip_tree(), 0xA1u);
    EXPECT_EQ(allCalls(), Calls{"SNMP_RegisterMibTree(IP-MIB, 0, 1, iso)"});
}

TEST_F(Lifecycle, TheTreeIsDeregisteredByTheSameArguments)
{
    world().deregisterTree = 0xA2;
    EXPECT_EQ(SNMP_Del_MIB_ip_tree(), 0xA2u);
    EXPECT_EQ(allCalls(), Calls{"SNMP_DeregMibTree(IP-MIB, 0, 1, iso)"});
}

TEST_F(Lifecycle, TheRootHasSubIdentifierOneAndNoParent)
{
    EXPECT_EQ(ip_tree_node_iso.ulSubId, 1u);
    EXPECT_EQ(ip_tree_node_iso.pstParent, nullptr);
}

TEST_F(Lifecycle, TheCallbackIsBoundToTheModuleId)
{
    MorCallback bound = nullptr;
    world().onRegisterCallback = [&bound](MorCallback callback) { bound = callback; };
    world().registerCallback = 0xA3;
    EXPECT_EQ(IP_Mor_Init(), 0xA3u);
    EXPECT_EQ(allCalls(), Calls{"MOR_RegCallBack(0x3720000)"});
    EXPECT_EQ(bound, &IP_ConfigCallBack);
}

TEST_F(Lifecycle, TheIcmpTypesAreKnownBeforeTheCallbackIsBound)
{
    const auto wholeMap = [] { return std::vector<std::uint16_t>(g_ausIcmp6Type, g_ausIcmp6Type + 256); };
    ip_IcmpMsgStats_Init();
    const auto expected = wholeMap();
    std::fill_n(g_ausIcmp6Type, 256, std::uint16_t{0});
    world().onRegisterCallback = [&](MorCallback) { EXPECT_EQ(wholeMap(), expected); };
    IP_Mor_Init();
}

TEST_F(Lifecycle, TheCallbackIsUnboundByTheModuleId)
{
    world().deregisterCallback = 0xA4;
    EXPECT_EQ(IP_Mor_Fini(), 0xA4u);
    EXPECT_EQ(allCalls(), Calls{"MOR_DeregCallBack(0x3720000)"});
}

} // namespace
} // namespace ipmib::scripted::lifecycle
