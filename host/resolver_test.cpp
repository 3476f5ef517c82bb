// SPDX-License-Identifier: BSD-3-Clause
// What the resolver makes of answers: rows shared by a packet, ends, errors.
#include "resolver.h"

#include "testing/identifiers.h"
#include "testing/sorted_table.h"
#include "testing/test_module.h"

#include <gtest/gtest.h>

#include <deque>

namespace ipmib::host::testing
{
namespace
{

std::deque<std::string> resolverLog;

void logOfResolver(int, const char *line)
{
    resolverLog.emplace_back(line);
}

// A scalar pair (1.10, 1.11), a table with two rows (1.20), an empty one (1.21) and one with rows again (1.22).
class ResolverTest : public ::testing::Test
{
  protected:
    ResolverTest() : module([this](MorRequest *request, MorReply *reply) { return answer(request, reply); })
    {
        resolverLog.clear();
        tree.addScalar(tree.root(), 10, ip_ParamId(1, 1), {MIB_TYPE_UNSIGNED32});
        tree.addScalar(tree.root(), 11, ip_ParamId(1, 2), {MIB_TYPE_UNSIGNED32});
        tree.addScalar(tree.root(), 12, 0, {MIB_TYPE_UNSIGNED32});
        for (const std::uint32_t id : {20u, 21u, 22u}) {
            tables.emplace_back(tree, id, std::vector{integer(1, 99)}, SortedTable::Manners{});
        }
        tables[0].add({{5}});
        tables[0].add({{7}});
        tables[2].add({{1}});
        resolver.emplace(tree.root(), TestModule::callback, logOfResolver);
    }

    std::uint32_t answer(MorRequest *request, MorReply *reply)
    {
        const std::uint32_t table = MOR_GetTableId(request);
        if (table >= 20) {
            return tables[table - 20].answer(request, reply);
        }
        if (MOR_GetMsgOpType(request) != OP_GET) {
            return fail(reply, ERR_BAD_PARAM);
        }
        std::uint32_t parameter = 0;
        for (std::uint32_t more = MOR_GetFirstParaFromMsg(request, 0, &parameter); more;
             more = MOR_GetNextParaFromMsg(request, 0, &parameter)) {
            append(reply, parameter, VT_UNSIGNED32, parameter & 0xFF);
        }
        return 0;
    }

    std::vector<Variable> ask(const std::vector<Identifier> &packet, bool isGet, const Identifier &region = {1})
    {
        static std::vector<Identifier> asked; // variables point into it
        asked = packet;
        std::vector<Variable> variables(asked.size());
        for (std::size_t i = 0; i < asked.size(); ++i) {
            variables[i].asked = asked[i];
        }
        const std::uint64_t before = resolver->requestCount();
        isGet ? resolver->get(variables) : resolver->getNext(variables, region);
        requests = resolver->requestCount() - before;
        return variables;
    }
    std::vector<Variable> get(const std::vector<Identifier> &packet) { return ask(packet, true); }
    std::vector<Variable> getNext(const std::vector<Identifier> &packet, const Identifier &region = {1})
    {
        return ask(packet, false, region);
    }
    static std::string nameOf(const Variable &variable)
    {
        return variable.status == Status::ok ? text(variable.name.view()) : "none";
    }

    TestTree tree;
    std::deque<SortedTable> tables;
    TestModule module;
    std::optional<Resolver> resolver;
    std::uint64_t requests = 0;
};

TEST_F(ResolverTest, regionsAreScalarsAndEntriesInOrder)
{
    std::vector<std::string> roots;
    for (const Resolver::Region &region : resolver->regions()) {
        roots.push_back(text(region.root.view()));
    }
    EXPECT_EQ(roots, (std::vector<std::string>{"1.10", "1.11", "1.20.1", "1.21.1", "1.22.1"}));
    EXPECT_EQ(resolver->regions()[2].node->ulKind, std::uint32_t{MIB_NODE_ENTRY});
}

TEST_F(ResolverTest, columnsOfOneRowShareARequest)
{
    const auto variables = get({{1, 20, 1, 2, 5}, {1, 20, 1, 3, 5}, {1, 20, 1, 2, 5}});
    EXPECT_EQ(requests, 1u);
    for (const Variable &variable : variables) {
        ASSERT_EQ(variable.status, Status::ok);
        EXPECT_EQ(variable.value.number, SortedTable::valueOf(ip_ParamId(20, variable.asked[3]), {5}));
    }
    get({{1, 20, 1, 2, 5}, {1, 20, 1, 3, 7}, {1, 20, 1, 3, 5}});
    EXPECT_EQ(requests, 2u);
    getNext({{1, 20, 1, 2}, {1, 20, 1, 3}});
    EXPECT_EQ(requests, 1u);
}

TEST_F(ResolverTest, aWalkIsOneRequestARow)
{
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2}})[0]), "1.20.1.2.5");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2, 5}})[0]), "1.20.1.2.7");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2, 7}})[0]), "1.20.1.3.5");
    EXPECT_EQ(requests, 2u); // the end of the column, and the first row of the next one
}

TEST_F(ResolverTest, aGuessTakesTwoRequestsAtMost)
{
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2, 6}}, {1, 20})[0]), "1.20.1.2.7");
    EXPECT_EQ(requests, 2u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2, 4, 9}}, {1, 20})[0]), "1.20.1.2.5");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 2, 0}}, {1, 20})[0]), "1.20.1.2.5");
    EXPECT_EQ(requests, 1u);
}

TEST_F(ResolverTest, aPartOfAnAddressIsOneRequest)
{
    TestTree other;
    SortedTable table(other, 20, {integer(1, 9), octets(0, 4)}, {});
    table.add({{3}, {10, 20}});
    table.add({{3}, {10, 21}});
    TestModule answers([&table](MorRequest *request, MorReply *reply) { return table.answer(request, reply); });
    resolver.emplace(other.root(), TestModule::callback, logOfResolver);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 3, 3}})[0]), "1.20.1.3.3.2.10.20");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 3, 4}}, {1, 20, 1, 3})[0]), "none");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 3, 3, 2, 10}})[0]), "1.20.1.3.3.2.10.20");
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 20, 1, 3, 3, 2, 10, 20, 0}})[0]), "1.20.1.3.3.2.10.21");
    EXPECT_EQ(requests, 2u);
}

TEST_F(ResolverTest, anEmptyTableIsAskedOnce)
{
    EXPECT_EQ(nameOf(getNext({{1, 21}})[0]), "1.22.1.2.1");
    EXPECT_EQ(requests, 2u);
}

TEST_F(ResolverTest, variablesWhoseColumnEndsGoOnTogether)
{
    const auto variables = getNext({{1, 20, 1, 2, 7}, {1, 20, 1, 3, 7}, {1, 20, 1, 2, 5}});
    EXPECT_EQ(nameOf(variables[0]), "1.20.1.3.5");
    EXPECT_EQ(nameOf(variables[1]), "1.22.1.2.1");
    EXPECT_EQ(nameOf(variables[2]), "1.20.1.2.7");
}

TEST_F(ResolverTest, scalarsAreAskedByGetAndShareARequest)
{
    const auto variables = getNext({{1, 10}, {1, 11}, {1}});
    EXPECT_EQ(nameOf(variables[0]), "1.10.0");
    EXPECT_EQ(nameOf(variables[1]), "1.11.0");
    EXPECT_EQ(nameOf(variables[2]), "1.10.0");
    EXPECT_EQ(variables[1].value.number, 2u);
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(nameOf(getNext({{1, 10, 0}})[0]), "1.11.0");
    EXPECT_EQ(nameOf(getNext({{1, 11, 0}})[0]), "1.20.1.2.5");
    const auto got = get({{1, 10, 0}, {1, 11, 0}});
    EXPECT_EQ(requests, 1u);
    EXPECT_EQ(got[1].value.number, 2u);
    EXPECT_TRUE(resolverLog.empty());
}

TEST_F(ResolverTest, aGetSaysWhatIsMissing)
{
    const auto variables = get({{1, 12, 0},          // not served
                                {1, 20, 1, 1, 5},    // not accessible
                                {1, 20, 1, 9, 5},    // no such column
                                {1, 20, 1, 2},       // no instance
                                {1, 20, 1, 2, 6},    // no such row
                                {1, 20, 1, 2, 5, 0}, // too long
                                {1, 20, 1, 2, 100},  // out of range
                                {1, 10},             // no instance
                                {1, 10, 1},          // not the instance of a scalar
                                {}});
    std::vector<Status> statuses;
    statuses.reserve(variables.size());
    for (const Variable &variable : variables) {
        statuses.push_back(variable.status);
    }
    using enum Status;
    EXPECT_EQ(statuses,
              (std::vector<Status>{noSuchObject, noSuchObject, noSuchObject, noSuchInstance, noSuchInstance,
                                   noSuchInstance, noSuchInstance, noSuchInstance, noSuchInstance, noSuchObject}));
    EXPECT_EQ(requests, 1u); // only for the row that could have been
}

TEST_F(ResolverTest, theRegionEndsTheSearch)
{
    EXPECT_EQ(getNext({{1, 20, 1, 3, 7}}, {1, 20, 1})[0].status, Status::endOfRegion);
    EXPECT_EQ(getNext({{1, 20, 1, 2, 7}}, {1, 20, 1, 2})[0].status, Status::endOfRegion);
    EXPECT_EQ(getNext({{1, 20, 1, 2, 5}}, {1, 20, 1, 2, 5})[0].status, Status::endOfRegion);
    EXPECT_EQ(getNext({{1, 30}}, {1, 20, 1})[0].status, Status::endOfRegion);
    EXPECT_EQ(getNext({{1}}, {1, 23})[0].status, Status::endOfRegion);
}

TEST_F(ResolverTest, aSearchFromBeforeTheRegionBeginsAtItsRoot)
{
    EXPECT_EQ(nameOf(getNext({{1, 10}}, {1, 20, 1, 3})[0]), "1.20.1.3.5");
    EXPECT_EQ(nameOf(getNext({{1, 10}}, {1, 20, 1, 3, 7})[0]), "1.20.1.3.7");
    EXPECT_EQ(nameOf(getNext({{1, 10}}, {1, 11, 0})[0]), "1.11.0");
    EXPECT_EQ(nameOf(getNext({{}}, {})[0]), "1.10.0");
}

// --- Unusable answers, each from a module of its own

class Answers : public ResolverTest
{
  protected:
    // What the module answers for the table 20 from now on.
    void always(TestModule::Handler handler) { special.emplace(std::move(handler)); }

    Variable first() { return getNext({{1, 20, 1, 2}}, {1, 20, 1})[0]; }

    std::optional<TestModule> special;
};

TEST_F(Answers, eachEndCodeEndsTheColumnQuietly)
{
    for (const std::uint32_t code : {ERR_END_OF_TABLE, ERR_NEXT_FAILED, ERR_NO_INSTANCE}) {
        always([code](MorRequest *, MorReply *) { return code; }); // returned, not set
        EXPECT_EQ(first().status, Status::endOfRegion);
        always([code](MorRequest *, MorReply *reply) { return fail(reply, code), 0; }); // set, not returned
        EXPECT_EQ(first().status, Status::endOfRegion);
    }
    EXPECT_TRUE(resolverLog.empty());
}

TEST_F(Answers, otherErrorsAreLoggedOnce)
{
    for (const std::uint32_t code : {ERR_BAD_PARAM, ERR_TABLE_UNKNOWN, ERR_READ_ONLY, UINT32_C(1)}) {
        always([code](MorRequest *, MorReply *reply) { return fail(reply, code); });
        EXPECT_EQ(first().status, Status::genErr);
        EXPECT_EQ(get({{1, 20, 1, 2, 5}})[0].status, Status::genErr);
    }
    ASSERT_EQ(resolverLog.size(), 1u);
    EXPECT_EQ(resolverLog[0], "table: the module refuses a column of the table, or the operation");
}

TEST_F(Answers, aGoodTableIsNotBlamedForABadOne)
{
    always([this](MorRequest *request, MorReply *reply) {
        return MOR_GetTableId(request) == 20 ? fail(reply, ERR_BAD_PARAM) : answer(request, reply);
    });
    EXPECT_EQ(get({{1, 20, 1, 2, 5}})[0].status, Status::genErr);
    EXPECT_EQ(get({{1, 22, 1, 2, 1}, {1, 10, 0}})[0].status, Status::ok);
    EXPECT_EQ(getNext({{1, 22}})[0].status, Status::ok);
    EXPECT_EQ(resolverLog.size(), 1u);
}

TEST_F(Answers, anInstanceThatIsTooLongIsNoRow)
{
    TestTree other;
    SortedTable table(other, 20, {octets(0, 255)}, {});
    table.add({SortedTable::Part(maxOidLength - 4, 1)});
    always([&table](MorRequest *request, MorReply *reply) { return table.answer(request, reply); });
    resolver.emplace(other.root(), TestModule::callback, logOfResolver);
    EXPECT_EQ(getNext({{1}})[0].status, Status::genErr);
    EXPECT_EQ(resolverLog, (std::deque<std::string>{"table: a row's index is too long for an identifier"}));
    table.clear();
    table.add({SortedTable::Part(maxOidLength - 5, 1)});
    const Variable longest = getNext({{1}})[0];
    ASSERT_EQ(longest.status, Status::ok);
    EXPECT_EQ(longest.name.size(), maxOidLength);
}

TEST_F(Answers, misuseOfTheMessageLayerSpoilsTheReply)
{
    always([](MorRequest *, MorReply *reply) {
        append(reply, ip_ParamId(20, 1), VT_INTEGER, 5);
        append(reply, ip_ParamId(20, 2), VT_UNSIGNED32, 1);
        MOR_GetTableId(nullptr);
        return 0u;
    });
    EXPECT_EQ(first().status, Status::genErr);
    ASSERT_EQ(resolverLog.size(), 1u);
    EXPECT_EQ(resolverLog[0], "table: asked for the table of no request");
}

TEST_F(Answers, aReplyMustBeginWithARow)
{
    const auto answerIndex = [this](std::uint32_t column, std::uint32_t type, std::uint32_t number) {
        always([=](MorRequest *, MorReply *reply) {
            append(reply, ip_ParamId(20, column), type, number);
            append(reply, ip_ParamId(20, 2), VT_UNSIGNED32, 1);
            return 0u;
        });
        return first().status;
    };
    EXPECT_EQ(answerIndex(1, VT_INTEGER, 5), Status::ok);
    EXPECT_EQ(answerIndex(3, VT_INTEGER, 5), Status::genErr);
    EXPECT_EQ(answerIndex(1, VT_UNSIGNED32, 5), Status::genErr);
    EXPECT_EQ(answerIndex(1, VT_INTEGER, 0), Status::genErr);
    EXPECT_EQ(answerIndex(1, VT_INTEGER, 100), Status::genErr);
    always([](MorRequest *, MorReply *) { return 0u; });
    EXPECT_EQ(first().status, Status::genErr);
    ASSERT_EQ(resolverLog.size(), 1u);
    EXPECT_EQ(resolverLog[0], "table: the reply does not begin with the index of a row");
}

TEST_F(Answers, theOrderOfValuesDoesNotMatterButTheirPresenceDoes)
{
    always([](MorRequest *, MorReply *reply) {
        append(reply, ip_ParamId(20, 3), VT_UNSIGNED32, 33);
        append(reply, ip_ParamId(20, 9), VT_UNSIGNED32, 99);
        append(reply, ip_ParamId(20, 2), VT_UNSIGNED32, 22);
        return 0u;
    });
    const auto variables = get({{1, 20, 1, 2, 5}, {1, 20, 1, 3, 5}});
    EXPECT_EQ(variables[0].value.number, 22u);
    EXPECT_EQ(variables[1].value.number, 33u);
    always([](MorRequest *, MorReply *) { return 0u; });
    EXPECT_EQ(get({{1, 20, 1, 2, 5}})[0].status, Status::genErr);
    EXPECT_EQ(get({{1, 20, 1, 2, 5}})[0].status, Status::genErr);
    EXPECT_EQ(resolverLog, (std::deque<std::string>{"column: the module answers without a value"}));
}

// --- Index columns that can be read, as older tables have them

TEST(ReadableIndex, isAnsweredFromTheRow)
{
    TestTree tree;
    SortedTable table(tree, 20, {integer(1, 9), octets(0, 4)}, {});
    auto *entry = const_cast<MibTreeNode *>(tree.root().pstFirstChild->pstFirstChild);
    for (const MibTreeNode *column = entry->pstFirstChild; column; column = column->pstNextSibling) {
        const_cast<MibTreeNode *>(column)->ulAccess = MIB_ACCESS_READ_ONLY;
    }
    table.add({{3}, {10, 20}});
    TestModule module([&table](MorRequest *request, MorReply *reply) { return table.answer(request, reply); });
    Resolver resolver(tree.root(), TestModule::callback, nullptr);
    const Identifier number{1, 20, 1, 1};
    const Identifier bytes{1, 20, 1, 2, 3, 2, 10, 20};
    const Identifier noRow{1, 20, 1, 1, 4, 0};
    Variable next;
    next.asked = number;
    resolver.getNext({&next, 1}, {});
    ASSERT_EQ(next.status, Status::ok);
    EXPECT_EQ(text(next.name.view()), "1.20.1.1.3.2.10.20");
    EXPECT_EQ(next.value.number, 3u);
    Variable got[2];
    got[0].asked = bytes;
    got[1].asked = noRow;
    resolver.get(got);
    ASSERT_EQ(got[0].status, Status::ok);
    EXPECT_EQ(got[0].value.octets.size(), 2u);
    EXPECT_EQ(got[0].value.octets[1], 20);
    EXPECT_EQ(got[1].status, Status::noSuchInstance);
}

} // namespace
} // namespace ipmib::host::testing
