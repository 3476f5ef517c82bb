// SPDX-License-Identifier: BSD-3-Clause
// The invariants of the records notice a fault: each is shown a copy of the tree with one.
#include "mibtree/record_invariants.h"
#include "mibtree/tree_copy.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace
{

using namespace ipmib::mibtree::invariant;

class RecordInvariants : public testing::Test
{
  protected:
    ipmib::mibtree::TreeCopy tree;
};

TEST_F(RecordInvariants, HoldForAFaithfulCopy)
{
    EXPECT_TRUE(syntaxesAreOwn(tree.records()));
    EXPECT_TRUE(indexesAdjoin(tree.records()));
    EXPECT_TRUE(paramIdsNumberTables(tree.records()));
    for (const auto condition :
         {hasSyntaxIfLeaf, isRestrictedAsTyped, hasIndexOfItsEntry, indexesOwnColumns, carriesParamIdIfLeaf,
          indexParamIdsLead, codesAreKnown, sparesAreZero, textsAreThere}) {
        EXPECT_TRUE(all(tree.records(), condition));
    }
}

TEST_F(RecordInvariants, NoticeAMissingAndASpareSyntax)
{
    tree[ip_tree_node_ipAddrTable].pstSyntax = ip_tree_node_ipForwarding.pstSyntax;
    EXPECT_FALSE(all(tree.records(), hasSyntaxIfLeaf));
    tree[ip_tree_node_ipAddrTable].pstSyntax = nullptr;
    EXPECT_TRUE(all(tree.records(), hasSyntaxIfLeaf));
    tree[ip_tree_node_ipForwarding].pstSyntax = nullptr;
    EXPECT_FALSE(all(tree.records(), hasSyntaxIfLeaf));
}

TEST_F(RecordInvariants, NoticeARestrictionThatDoesNotFitItsType)
{
    const MibRestriction *labels = ip_tree_node_ipForwarding.pstSyntax->pstRestrict;
    const MibRestriction *range = ip_tree_node_ipDefaultTTL.pstSyntax->pstRestrict;
    const MibRestriction empty{MIB_RESTRICT_RANGE, 0, range->pstRanges, nullptr};
    const MibRestriction both{MIB_RESTRICT_ENUM, 2, range->pstRanges, labels->pstEnums};
    for (const MibSyntax &syntax :
         {MibSyntax{MIB_TYPE_ENUM, nullptr}, MibSyntax{MIB_TYPE_ENUM, range}, MibSyntax{MIB_TYPE_ENUM, &both},
          MibSyntax{MIB_TYPE_INTEGER, nullptr}, MibSyntax{MIB_TYPE_OCTETS, nullptr}, MibSyntax{MIB_TYPE_OCTETS, labels},
          MibSyntax{MIB_TYPE_INTEGER32, labels}, MibSyntax{MIB_TYPE_UNSIGNED32, &empty},
          MibSyntax{MIB_TYPE_COUNTER32, range}, MibSyntax{4, nullptr}, MibSyntax{13, nullptr}}) {
        tree[ip_tree_node_ipForwarding].pstSyntax = &syntax;
        EXPECT_FALSE(all(tree.records(), isRestrictedAsTyped)) << syntax.ulType;
    }
}

TEST_F(RecordInvariants, NoticeSharedSyntaxRecords)
{
    const MibSyntax *original = ip_tree_node_ipv6InterfaceForwarding.pstSyntax;
    tree[ip_tree_node_ipForwarding].pstSyntax = original;
    EXPECT_FALSE(syntaxesAreOwn(tree.records()));
    const MibSyntax sharedRestriction{MIB_TYPE_ENUM, original->pstRestrict};
    tree[ip_tree_node_ipForwarding].pstSyntax = &sharedRestriction;
    EXPECT_FALSE(syntaxesAreOwn(tree.records()));
    const MibRestriction ownRestriction = *original->pstRestrict;
    const MibSyntax sharedList{MIB_TYPE_ENUM, &ownRestriction};
    tree[ip_tree_node_ipForwarding].pstSyntax = &sharedList;
    EXPECT_FALSE(syntaxesAreOwn(tree.records()));
    const MibListRef ownList = *original->pstRestrict->pstEnums;
    const MibRestriction restriction{MIB_RESTRICT_ENUM, 2, nullptr, &ownList};
    const MibSyntax sharedItems{MIB_TYPE_ENUM, &restriction};
    tree[ip_tree_node_ipForwarding].pstSyntax = &sharedItems;
    EXPECT_FALSE(syntaxesAreOwn(tree.records()));
}

TEST_F(RecordInvariants, NoticeAnIndexListOfItsOwn)
{
    const MibIndexList copy = tree.indexOf(ip_tree_node_icmpStatsEntry);
    tree[ip_tree_node_icmpStatsInMsgs].pstIndex = &copy;
    EXPECT_FALSE(all(tree.records(), hasIndexOfItsEntry));
    tree[ip_tree_node_icmpStatsInMsgs].pstIndex = &tree.indexOf(ip_tree_node_icmpStatsEntry);
    tree[ip_tree_node_ipForwarding].pstIndex = &copy;
    EXPECT_FALSE(all(tree.records(), hasIndexOfItsEntry));
}

TEST_F(RecordInvariants, NoticeAMissingIndex)
{
    tree[ip_tree_node_icmpStatsEntry].pstIndex = nullptr;
    EXPECT_FALSE(hasIndexOfItsEntry(tree[ip_tree_node_icmpStatsEntry]));
    tree.indexOf(ip_tree_node_ipAddrEntry).ulCount = 0;
    EXPECT_FALSE(indexesOwnColumns(tree[ip_tree_node_ipAddrEntry]));
    tree.indexOf(ip_tree_node_ipAddressPrefixEntry).ulCount = 5;
    EXPECT_FALSE(indexesOwnColumns(tree[ip_tree_node_ipAddressPrefixEntry]));
}

TEST_F(RecordInvariants, NoticeAnIndexColumnOfAnotherEntry)
{
    tree.indexColumn(ip_tree_node_icmpMsgStatsEntry, 0) = &tree[ip_tree_node_icmpStatsIPVersion];
    EXPECT_FALSE(all(tree.records(), indexesOwnColumns));
}

TEST_F(RecordInvariants, NoticeIndexColumnsApart)
{
    ++tree.indexOf(ip_tree_node_icmpStatsEntry).ppstColumns;
    EXPECT_FALSE(indexesAdjoin(tree.records()));
}

TEST_F(RecordInvariants, NoticeParameterIdsWhereNoneBelong)
{
    for (const std::uint32_t id : {0x03720001u, 0x03720C01u, 0x03730101u, 1u}) {
        tree[ip_tree_node_ipForwarding].ulParamId = id;
        EXPECT_FALSE(all(tree.records(), carriesParamIdIfLeaf)) << id;
    }
    tree[ip_tree_node_ipForwarding].ulParamId = 0;
    tree[ip_tree_node_ipAddrTable].ulParamId = 0x03720103;
    EXPECT_FALSE(all(tree.records(), carriesParamIdIfLeaf));
}

TEST_F(RecordInvariants, NoticeParameterIdsThatDoNotCount)
{
    MibTreeNode &column = tree[ip_tree_node_icmpStatsOutErrors];
    for (const std::uint32_t id : {0x03720A04u, 0x03720A06u, 0x03720A00u, 0x03720B05u, 0x03720101u}) {
        column.ulParamId = id; // a double, a gap, a column 0, and two of another table
        EXPECT_FALSE(paramIdsNumberTables(tree.records())) << id;
    }
    column.ulParamId = 0;
    EXPECT_TRUE(paramIdsNumberTables(tree.records()));
}

TEST_F(RecordInvariants, NoticeIndexColumnsThatDoNotLead)
{
    tree[ip_tree_node_icmpMsgStatsType].ulParamId = 0x03720B03;
    tree[ip_tree_node_icmpMsgStatsInPkts].ulParamId = 0x03720B02;
    EXPECT_TRUE(paramIdsNumberTables(tree.records()));
    EXPECT_FALSE(all(tree.records(), indexParamIdsLead));
}

TEST_F(RecordInvariants, NoticeUnknownCodes)
{
    const auto isRefused = [this](const MibTreeNode &original, std::uint32_t kind, std::uint32_t status,
                                  std::uint32_t access) {
        MibTreeNode &node = tree[original];
        const MibTreeNode kept = node;
        node.ulKind = kind;
        node.ulStatus = status;
        node.ulAccess = access;
        const bool refused = !all(tree.records(), codesAreKnown);
        node = kept;
        return refused;
    };
    const std::uint32_t current = MIB_STATUS_CURRENT;
    EXPECT_TRUE(isRefused(ip_tree_node_ipForwarding, 5, current, MIB_ACCESS_READ_WRITE));
    EXPECT_TRUE(isRefused(ip_tree_node_ipForwarding, MIB_NODE_SCALAR, 4, MIB_ACCESS_READ_WRITE));
    EXPECT_TRUE(isRefused(ip_tree_node_ipForwarding, MIB_NODE_SCALAR, MIB_STATUS_NONE, MIB_ACCESS_READ_WRITE));
    EXPECT_TRUE(isRefused(ip_tree_node_ipForwarding, MIB_NODE_SCALAR, current, 1));
    EXPECT_TRUE(isRefused(ip_tree_node_ipForwarding, MIB_NODE_SCALAR, current, MIB_ACCESS_READ_CREATE));
    EXPECT_TRUE(isRefused(ip_tree_node_ipAdEntAddr, MIB_NODE_COLUMN, current, MIB_ACCESS_NONE));
    EXPECT_TRUE(isRefused(ip_tree_node_ipAddrTable, MIB_NODE_TABLE, current, MIB_ACCESS_READ_ONLY));
    EXPECT_TRUE(isRefused(ip_tree_node_ip, MIB_NODE_GROUP, current, MIB_ACCESS_NONE));
    EXPECT_TRUE(isRefused(ip_tree_node_ip, MIB_NODE_GROUP, MIB_STATUS_NONE, MIB_ACCESS_NOT_ACCESSIBLE));
    EXPECT_FALSE(isRefused(ip_tree_node_ipForwarding, MIB_NODE_SCALAR, current, MIB_ACCESS_READ_ONLY));
}

TEST_F(RecordInvariants, NoticeUsedSpares)
{
    for (const auto spare :
         {&MibTreeNode::ulSpare1, &MibTreeNode::ulSpare2, &MibTreeNode::ulSpare3, &MibTreeNode::ulSpare4}) {
        tree[ip_tree_node_ipForwarding].*spare = 1;
        EXPECT_FALSE(all(tree.records(), sparesAreZero));
        tree[ip_tree_node_ipForwarding].*spare = 0;
    }
    tree.indexOf(ip_tree_node_ipAddrEntry).ulLead = 1;
    EXPECT_FALSE(all(tree.records(), sparesAreZero));
}

TEST_F(RecordInvariants, NoticeOddTexts)
{
    MibTreeNode &node = tree[ip_tree_node_ipForwarding];
    for (const char *name : {"", "ip_forwarding"}) {
        node.pszName = name;
        EXPECT_FALSE(all(tree.records(), textsAreThere)) << name;
    }
    node.pszName = "ipForwarding";
    for (const char *defVal : {"1", "{1}", "{ 1", "1 }"}) {
        node.pszDefVal = defVal;
        EXPECT_FALSE(all(tree.records(), textsAreThere)) << defVal;
    }
}

} // namespace
