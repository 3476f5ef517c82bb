// SPDX-License-Identifier: BSD-3-Clause
// Modules that answer nonsense. Whatever they do, a search ends soon, and what it finds lies behind what was asked.
#include "resolver.h"

#include "testing/identifiers.h"
#include "testing/packets.h"
#include "testing/test_module.h"
#include "testing/test_tree.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ipmib::host::testing
{
namespace
{

constexpr std::uint32_t tableId = 2;
// Far more than any module of good will needs, far less than would be felt.
constexpr std::uint64_t bearable = 10'000;

void appendRow(MorReply *reply, std::uint32_t number, std::uint32_t type, const std::vector<std::uint8_t> &bytes)
{
    append(reply, ip_ParamId(tableId, 1), VT_INTEGER, number);
    append(reply, ip_ParamId(tableId, 2), VT_INTEGER, type);
    MOR_AppendPara2Msg(reply, 0, ip_ParamId(tableId, 3), VT_OCTETS, reinterpret_cast<std::uintptr_t>(bytes.data()),
                       static_cast<std::uint32_t>(bytes.size()));
    append(reply, ip_ParamId(tableId, 4), VT_COUNTER32, 1);
    append(reply, ip_ParamId(tableId, 5), VT_COUNTER32, 1);
}

class HostileModule : public ::testing::Test
{
  protected:
    HostileModule()
    {
        entry = &tree.addTable(tree.root(), tableId, tableId,
                               {integer(1, INT32_MAX), labels({0, 1, 2, 3, 4, 16}), octets(0, 255)});
        tree.addColumn(*entry, 4, {MIB_TYPE_COUNTER32});
        tree.addColumn(*entry, 5, {MIB_TYPE_COUNTER32});
        tree.addScalar(tree.root(), 3, ip_ParamId(1, 1), {MIB_TYPE_COUNTER32});
    }

    // Asks around in a table that is said to have these rows, and walks it.
    void survive(TestModule::Handler handler, int packets = 300)
    {
        static std::size_t complaints;
        complaints = 0;
        TestModule module(std::move(handler));
        Resolver resolver(tree.root(), TestModule::callback, [](int, const char *) { ++complaints; });
        const Instances somewhere({{1, 2, 1, 4}, {1, 2, 1, 5}, {1, 3}},
                                  {{1, 2, 1, 4, 3, 2, 2, 1, 1}, {1, 2, 1, 5, 3, 4, 1, 255}, {1, 3, 0}});
        Random random(3);
        for (int packet = 0; packet < packets; ++packet) {
            const std::vector<Identifier> asked = {somewhere.random(random), somewhere.random(random),
                                                   somewhere.random(random)};
            std::vector<Variable> variables(asked.size());
            for (std::size_t i = 0; i < asked.size(); ++i) {
                variables[i].asked = asked[i];
            }
            const std::uint64_t before = resolver.requestCount();
            resolver.getNext(variables, {});
            for (const Variable &variable : variables) {
                if (variable.status == Status::ok) {
                    EXPECT_TRUE(std::is_gt(compare(variable.name.view(), variable.asked)))
                        << text(variable.name.view());
                }
            }
            resolver.get(variables);
            EXPECT_LT(resolver.requestCount() - before, bearable);
        }
        EXPECT_LE(complaints, 8u); // each kind once, not once for each packet
    }

    TestTree tree;
    MibTreeNode *entry;
};

TEST_F(HostileModule, whoseNextRowIsAlwaysTheSame)
{
    survive([](MorRequest *, MorReply *reply) {
        appendRow(reply, 3, 2, {1, 1});
        return 0u;
    });
}

TEST_F(HostileModule, whoseRowsDescend)
{
    std::uint32_t number = INT32_MAX;
    survive([&number](MorRequest *, MorReply *reply) {
        appendRow(reply, number--, 2, {1, 1});
        return 0u;
    });
}

TEST_F(HostileModule, whoseRowsNeverEnd)
{
    std::uint32_t number = 1;
    survive(
        [&number](MorRequest *, MorReply *reply) {
            appendRow(reply, 1, number++ & INT32_MAX, {});
            return 0u;
        },
        10);
}

TEST_F(HostileModule, whoseRowsCreepUpToWhatWasAsked)
{
    // One octet more for each request, and never as far as the identifier.
    survive(
        [](MorRequest *request, MorReply *reply) {
            MorPara *octets = MOR_GetParaFromMsgByMOR(request, 0, ip_ParamId(tableId, 3));
            const std::uint32_t length = octets ? MOR_GetParaLen(octets) : 0;
            appendRow(reply, 1, 0, std::vector<std::uint8_t>(std::min(length + 1, 100u)));
            return 0u;
        },
        100);
}

TEST_F(HostileModule, whoseIdentifiersAreTooLong)
{
    survive([](MorRequest *, MorReply *reply) {
        appendRow(reply, 3, 2, std::vector<std::uint8_t>(255, 1));
        return 0u;
    });
}

TEST_F(HostileModule, whichAppendsWithoutEnd)
{
    survive([](MorRequest *, MorReply *reply) {
        appendRow(reply, 3, 2, {1, 1});
        const std::vector<std::uint8_t> large(65535);
        for (int i = 0; i < 2000; ++i) {
            MOR_AppendPara2Msg(reply, 0, ip_ParamId(tableId, 4), VT_OCTETS,
                               reinterpret_cast<std::uintptr_t>(large.data()),
                               static_cast<std::uint32_t>(large.size()));
            append(reply, ip_ParamId(tableId, 4), VT_COUNTER32, 1);
        }
        return 0u;
    });
}

TEST_F(HostileModule, whichAnswersAtRandom)
{
    Random random(9);
    survive(
        [&random](MorRequest *request, MorReply *reply) {
            std::uint32_t parameter = 0;
            MOR_GetFirstParaFromMsg(request, 0, &parameter);
            while (random() % 3 != 0) {
                MOR_GetNextParaFromMsg(request, 0, &parameter);
            }
            if (random() % 2) {
                appendRow(reply, static_cast<std::uint32_t>(random() % 5), static_cast<std::uint32_t>(random() % 6),
                          std::vector<std::uint8_t>(random() % 5, 1));
            }
            std::uint64_t number = random();
            for (std::size_t i = random() % 8; i > 0; --i) {
                const auto type = static_cast<std::uint32_t>(random() % 10);
                const bool isAddress = type >= VT_OCTETS;
                MOR_AppendPara2Msg(reply, 0, random() % 2 ? parameter : static_cast<std::uint32_t>(random()), type,
                                   isAddress && random() % 8 ? reinterpret_cast<std::uintptr_t>(&number) : 0,
                                   random() % 2 ? 4 : static_cast<std::uint32_t>(random() % 9));
            }
            static constexpr std::uint32_t codes[] = {
                0, 0, 0, 0, 1, ERR_TABLE_UNKNOWN, ERR_END_OF_TABLE, ERR_BAD_PARAM, ERR_NO_INSTANCE, ERR_NEXT_FAILED};
            if (random() % 4 == 0) {
                MOR_SetMsgError(random() % 8 ? reply : nullptr, pick(random, codes),
                                static_cast<std::int32_t>(random()));
            }
            return pick(random, codes);
        },
        2000);
}

} // namespace
} // namespace ipmib::host::testing
