// SPDX-License-Identifier: BSD-3-Clause
// What every request meets before its table: the table id, the operation type, the IPv6 service.
#include <scripted/module_test.h>

namespace ipmib::scripted::dispatcher
{
namespace
{

class Dispatcher : public ModuleTest
{
};

constexpr std::uint32_t lastTable = 11;

// A request that every table would have an opinion about, was it let through.
Request anyRequest(std::uint32_t table, std::uint32_t operation)
{
    return Request(table, operation).index(1, 2).want(2);
}

TEST_F(Dispatcher, TablesThatDoNotExistAreRefusedWhateverTheOperation)
{
    for (std::uint32_t table : {0u, 12u, 13u, 256u, 0xFFFFFFFFu}) {
        for (std::uint32_t operation = 0; operation <= 11; ++operation) {
            EXPECT_EQ(anyRequest(table, operation).send(), refused(ERR_TABLE_UNKNOWN)) << table << " " << operation;
        }
    }
}

TEST_F(Dispatcher, NothingElseOfARequestForAnUnknownTableIsLookedAt)
{
    anyRequest(12, OP_GET).send();
    EXPECT_EQ(allCalls(), (Calls{"MOR_GetTableId()", "MOR_GetMsgOpType()", "MOR_SetMsgError(0x61010041, -1)"}));
}

TEST_F(Dispatcher, WritesAreRefusedAlsoWhenTheServicesAreDown)
{
    world().ipv6Service = {1};
    world().ipv4Service = {1};
    for (std::uint32_t table = 1; table <= lastTable; ++table) {
        EXPECT_EQ(anyRequest(table, OP_SET).send(), refused(ERR_READ_ONLY)) << table;
    }
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(Dispatcher, OperationsFiveToNineAreAcceptedAndIgnored)
{
    for (std::uint32_t table = 1; table <= lastTable; ++table) {
        for (std::uint32_t operation = 5; operation <= 9; ++operation) {
            EXPECT_EQ(anyRequest(table, operation).send(), answered()) << table << " " << operation;
        }
    }
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(Dispatcher, OtherOperationsAreRefused)
{
    for (std::uint32_t table = 1; table <= lastTable; ++table) {
        for (std::uint32_t operation : {0u, 4u, 10u, 11u, 0x80000001u, 0xFFFFFFFFu}) {
            EXPECT_EQ(anyRequest(table, operation).send(), refused(ERR_BAD_PARAM)) << table << " " << operation;
        }
    }
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(Dispatcher, ScalarsAreNotServedToGetNext)
{
    EXPECT_EQ(getNext(1).want(1, 2).send(), refused(ERR_BAD_PARAM));
    EXPECT_EQ(serviceCalls(), Calls{});
}

class CheckedTable : public Dispatcher, public testing::WithParamInterface<std::uint32_t>
{
};
INSTANTIATE_TEST_SUITE_P(, CheckedTable, testing::Values(2, 5, 6, 8));

TEST_P(CheckedTable, WithoutTheIpv6ServiceNothingIsLookedUp)
{
    for (std::uint32_t down : {1u, 0xFFFFFFFFu, RC_NO_MORE}) {
        world().ipv6Service = {down};
        forgetCalls();
        EXPECT_EQ(anyRequest(GetParam(), OP_GET).send(), refused(ERR_NO_INSTANCE));
        EXPECT_EQ(anyRequest(GetParam(), OP_GETNEXT).send(), refused(ERR_END_OF_TABLE));
        EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)"}));
    }
}

} // namespace
} // namespace ipmib::scripted::dispatcher
