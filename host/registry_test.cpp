// SPDX-License-Identifier: BSD-3-Clause
// Registration as a module's hooks see it, and the trees that are refused.
#include "registry.h"

#include "testing/test_tree.h"
#include "tree_check.h"

#include <gtest/gtest.h>

namespace ipmib::host
{
namespace
{

using testing::integer;
using testing::TestTree;

constexpr std::uint32_t otherId = 0x04440000;

std::uint32_t answerNothing(MorRequest *, MorReply *)
{
    return 0;
}

class RegistryTest : public ::testing::Test
{
  protected:
    void SetUp() override { registry.takeProblem(); }
    void TearDown() override
    {
        EXPECT_TRUE(registry.trees().empty());
        EXPECT_TRUE(registry.callbacks().empty());
    }

    Registry &registry = Registry::ofProcess();
    TestTree tree;
};

TEST_F(RegistryTest, treesComeAndGoByNameAndRoot)
{
    TestTree other;
    EXPECT_EQ(SNMP_RegisterMibTree("A", 0, 1, &tree.root()), 0u);
    EXPECT_EQ(SNMP_RegisterMibTree("B", 0, 1, &other.root()), 0u);
    ASSERT_EQ(registry.trees().size(), 2u);
    EXPECT_EQ(registry.trees()[1].module, "B");
    EXPECT_EQ(registry.trees()[1].root, &other.root());
    EXPECT_NE(SNMP_DeregMibTree("A", 0, 1, &other.root()), 0u);
    EXPECT_EQ(SNMP_DeregMibTree("A", 0, 1, &tree.root()), 0u);
    EXPECT_NE(SNMP_DeregMibTree("A", 0, 1, &tree.root()), 0u);
    EXPECT_EQ(SNMP_DeregMibTree("B", 0, 1, &other.root()), 0u);
}

TEST_F(RegistryTest, aSecondTreeOfTheSameNameIsRefused)
{
    TestTree other;
    EXPECT_EQ(SNMP_RegisterMibTree("A", 0, 1, &tree.root()), 0u);
    EXPECT_NE(SNMP_RegisterMibTree("A", 0, 1, &other.root()), 0u);
    EXPECT_EQ(registry.takeProblem(), "a tree named \"A\" is registered already");
    ASSERT_EQ(registry.trees().size(), 1u);
    EXPECT_EQ(registry.trees()[0].root, &tree.root());
    EXPECT_EQ(SNMP_DeregMibTree("A", 0, 1, &tree.root()), 0u);
}

TEST_F(RegistryTest, nullIsNoTreeAndNoName)
{
    EXPECT_NE(SNMP_RegisterMibTree("A", 0, 1, nullptr), 0u);
    EXPECT_NE(SNMP_RegisterMibTree(nullptr, 0, 1, &tree.root()), 0u);
    EXPECT_NE(SNMP_DeregMibTree(nullptr, 0, 1, &tree.root()), 0u);
}

TEST_F(RegistryTest, callbacksComeAndGoByModuleId)
{
    EXPECT_EQ(MOR_RegCallBack(MOR_MODULE_IP, answerNothing), 0u);
    EXPECT_NE(MOR_RegCallBack(MOR_MODULE_IP, answerNothing), 0u);
    EXPECT_EQ(MOR_RegCallBack(otherId, answerNothing), 0u);
    EXPECT_EQ(MOR_DeregCallBack(MOR_MODULE_IP), 0u);
    EXPECT_NE(MOR_DeregCallBack(MOR_MODULE_IP), 0u);
    EXPECT_EQ(MOR_DeregCallBack(otherId), 0u);
    EXPECT_NE(MOR_RegCallBack(otherId, nullptr), 0u);
}

class TreeCheck : public ::testing::Test
{
  protected:
    TreeCheck()
    {
        entry = &tree.addTable(tree.root(), 5, 1, {integer(1, 9)});
        column = &tree.addColumn(*entry, 2, {MIB_TYPE_COUNTER32});
        scalar = &tree.addScalar(tree.root(), 6, ip_ParamId(2, 1), {MIB_TYPE_COUNTER32});
    }

    void expectProblem(const char *part)
    {
        const std::string problem = checkTree(&tree.root());
        EXPECT_NE(problem.find(part), std::string::npos) << "\"" << problem << "\"";
    }

    TestTree tree;
    MibTreeNode *entry;
    MibTreeNode *column;
    MibTreeNode *scalar;
};

TEST_F(TreeCheck, findsNothingWrongWithAGoodTree)
{
    EXPECT_EQ(checkTree(&tree.root()), "");
}

TEST_F(TreeCheck, endsWhereChildrenRunInACircle)
{
    MibTreeNode &first = tree.add(tree.root(), 7, MIB_NODE_PLAIN, "first");
    MibTreeNode &second = tree.add(first, 1, MIB_NODE_PLAIN, "second");
    second.pstFirstChild = &first;
    expectProblem("first: its parent link names another node");
}

TEST_F(TreeCheck, endsWhereANodeIsItsOwnChild)
{
    MibTreeNode &node = tree.add(tree.root(), 7, MIB_NODE_PLAIN, "ouroboros");
    node.pstFirstChild = &node;
    expectProblem("ouroboros: its parent link");
}

TEST_F(TreeCheck, endsWhereSiblingsRunInACircle)
{
    scalar->pstNextSibling = scalar;
    expectProblem("not greater than its elder sibling's");
}

TEST_F(TreeCheck, wantsSiblingsInOrder)
{
    scalar->ulSubId = 5;
    expectProblem("scalar: its sub-identifier");
}

TEST_F(TreeCheck, wantsARootWithoutRelations)
{
    tree.root().pstParent = scalar;
    expectProblem("root has a parent");
    EXPECT_EQ(checkTree(nullptr), "it has no root");
}

TEST_F(TreeCheck, wantsNames)
{
    scalar->pszName = nullptr;
    expectProblem("the name is missing");
}

TEST_F(TreeCheck, wantsSyntaxAndItsLists)
{
    MibSyntax &syntax = tree.syntax(integer(1, 2));
    column->pstSyntax = &syntax;
    EXPECT_EQ(checkTree(&tree.root()), "");
    MibRestriction restriction = *syntax.pstRestrict;
    syntax.pstRestrict = &restriction;
    restriction.ulCount = 0;
    expectProblem("labels or ranges");
    restriction.ulCount = 1;
    restriction.ulRestrictKind = MIB_RESTRICT_ENUM;
    expectProblem("labels or ranges");
    restriction.ulRestrictKind = 7;
    expectProblem("labels or ranges");
    column->pstSyntax = nullptr;
    expectProblem("no syntax");
}

TEST_F(TreeCheck, wantsLeavesAtTheEnd)
{
    scalar->pstFirstChild = column;
    expectProblem("has children");
}

TEST_F(TreeCheck, wantsColumnsUnderEntriesOnly)
{
    scalar->ulKind = MIB_NODE_COLUMN;
    expectProblem("columns, and nothing else");
}

TEST_F(TreeCheck, wantsParameterIdsOfLeavesAlone)
{
    entry->ulParamId = ip_ParamId(1, 9);
    expectProblem("only columns and scalars");
}

TEST_F(TreeCheck, wantsParameterIdsOnce)
{
    scalar->ulParamId = column->ulParamId;
    expectProblem("the same parameter id");
}

TEST_F(TreeCheck, wantsTheIndexOfTheEntry)
{
    column->pstIndex = nullptr;
    expectProblem("not its entry's");
}

TEST_F(TreeCheck, wantsAnIndexThatCanBeUsed)
{
    MibIndexList &list = tree.indexOf(*entry);
    const MibIndexList good = list;
    list.ulCount = 0;
    expectProblem("index list");
    list.ulCount = 9;
    expectProblem("index list");
    list = good;
    list.ppstColumns = nullptr;
    expectProblem("index list");
    const MibTreeNode *columns[] = {scalar};
    list.ppstColumns = columns;
    expectProblem("not its own");
    columns[0] = nullptr;
    expectProblem("not its own");
    columns[0] = column; // a counter
    expectProblem("no index can have");
}

TEST_F(TreeCheck, wantsParameterIdsOfOneTable)
{
    column->ulParamId = ip_ParamId(3, 2);
    expectProblem("an index column");
    tree.addColumn(*entry, 3, {MIB_TYPE_COUNTER32});
    expectProblem("several tables");
}

TEST_F(TreeCheck, leavesDescribedTablesAlone)
{
    MibTreeNode &described = tree.addTable(tree.root(), 9, 4, {{MIB_TYPE_OID}});
    const_cast<MibTreeNode *>(described.pstFirstChild)->ulParamId = 0;
    EXPECT_EQ(checkTree(&tree.root()), "");
}

} // namespace
} // namespace ipmib::host
