// SPDX-License-Identifier: BSD-3-Clause
// ipv6IpForwarding and ipv6IpDefaultHopLimit.
#include <scripted/module_test.h>

namespace ipmib::scripted::ipv6_scalars
{
namespace
{

constexpr std::uint32_t table = 1;
enum Column { forwarding = 1, hopLimit };

class Ipv6Scalars : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().hopLimit = 63;
    }
};

TEST_F(Ipv6Scalars, ForwardingIsAlwaysOnAndTheHopLimitIsTheDevices)
{
    EXPECT_EQ(get(table).want(forwarding, hopLimit).send(), answered({integer(forwarding, 1), integer(hopLimit, 63)}));
}

TEST_F(Ipv6Scalars, TheHopLimitIsReadAtEachOccurrence)
{
    EXPECT_EQ(get(table).want(hopLimit, forwarding, hopLimit).send(),
              answered({integer(hopLimit, 63), integer(forwarding, 1), integer(hopLimit, 63)}));
    EXPECT_EQ(serviceCalls(), (Calls{"ND_GetHopLimit()", "ND_GetHopLimit()"}));
}

TEST_F(Ipv6Scalars, ForwardingAsksNobody)
{
    get(table).want(forwarding).send();
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(Ipv6Scalars, AreAnsweredWithoutTheIpv6Service)
{
    world().ipv6Service = {1};
    EXPECT_EQ(get(table).want(hopLimit).send(), answered({integer(hopLimit, 63)}));
}

TEST_F(Ipv6Scalars, ARequestWithoutParametersIsAnsweredWithNothing)
{
    EXPECT_EQ(get(table).send(), answered());
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(Ipv6Scalars, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 3), ip_ParamId(2, 1), 0xFFFFFFFFu}) {
        EXPECT_EQ(get(table).want(hopLimit).wantId(id).want(forwarding).send(),
                  refused(ERR_BAD_PARAM, 1, {integer(hopLimit, 63)}));
    }
    EXPECT_EQ(get(table).wantId(0).send(), refused(ERR_BAD_PARAM, 0));
}

} // namespace
} // namespace ipmib::scripted::ipv6_scalars
