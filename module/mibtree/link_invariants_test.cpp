// SPDX-License-Identifier: BSD-3-Clause
// The invariants of the links notice a fault: each is shown a copy of the tree with one.
#include "mibtree/link_invariants.h"
#include "mibtree/tree_copy.h"

#include <gtest/gtest.h>

namespace
{

using namespace ipmib::mibtree::invariant;

class LinkInvariants : public testing::Test
{
  protected:
    ipmib::mibtree::TreeCopy tree;
};

TEST_F(LinkInvariants, HoldForAFaithfulCopy)
{
    EXPECT_TRUE(reachesEachOnce(tree.records()));
    EXPECT_TRUE(leavesAreChained(tree.records()));
    for (const auto condition : {isParentOfItsChildren, childrenAscend, standsInPlace, isGroupWithMembers}) {
        EXPECT_TRUE(all(tree.records(), condition));
    }
}

TEST_F(LinkInvariants, NoticeASkippedSibling)
{
    tree[ip_tree_node_ipForwarding].pstNextSibling = &tree[ip_tree_node_ipInReceives];
    EXPECT_FALSE(reachesEachOnce(tree.records()));
}

TEST_F(LinkInvariants, NoticeALostSubtree)
{
    tree[ip_tree_node_ipMIB].pstNextSibling = nullptr;
    EXPECT_FALSE(reachesEachOnce(tree.records()));
    tree[ip_tree_node_ipMIB].pstNextSibling = &tree[ip_tree_node_inetAddressMIB];
    EXPECT_TRUE(reachesEachOnce(tree.records()));
    tree[ip_tree_node_iso].pstParent = &tree[ip_tree_node_org];
    EXPECT_FALSE(reachesEachOnce(tree.records()));
}

TEST_F(LinkInvariants, NoticeAForeignParent)
{
    tree[ip_tree_node_ipDefaultTTL].pstParent = &tree[ip_tree_node_icmp];
    EXPECT_FALSE(all(tree.records(), isParentOfItsChildren));
}

TEST_F(LinkInvariants, NoticeEqualAndDescendingSiblings)
{
    tree[ip_tree_node_ipDefaultTTL].ulSubId = 1;
    EXPECT_FALSE(all(tree.records(), childrenAscend));
    tree[ip_tree_node_ipDefaultTTL].ulSubId = 4;
    EXPECT_FALSE(all(tree.records(), childrenAscend));
}

TEST_F(LinkInvariants, NoticeNodesOutOfPlace)
{
    tree[ip_tree_node_icmpStatsEntry].ulSubId = 2;
    EXPECT_FALSE(standsInPlace(tree[ip_tree_node_icmpStatsEntry]));
    tree[ip_tree_node_icmpStatsInMsgs].ulKind = MIB_NODE_SCALAR;
    EXPECT_FALSE(standsInPlace(tree[ip_tree_node_icmpStatsInMsgs]));
    tree[ip_tree_node_ipAddrEntry].pstNextSibling = &tree[ip_tree_node_ipAdEntAddr];
    EXPECT_FALSE(standsInPlace(tree[ip_tree_node_ipAddrTable]));
    tree[ip_tree_node_ipDefaultTTL].pstFirstChild = &tree[ip_tree_node_ipInReceives];
    EXPECT_FALSE(standsInPlace(tree[ip_tree_node_ipDefaultTTL]));
    tree[ip_tree_node_ipForwarding].ulKind = MIB_NODE_TABLE;
    EXPECT_FALSE(standsInPlace(tree[ip_tree_node_ipForwarding]));
}

TEST_F(LinkInvariants, NoticeAWrongGroup)
{
    tree[ip_tree_node_icmp].ulKind = MIB_NODE_PLAIN;
    EXPECT_FALSE(all(tree.records(), isGroupWithMembers));
    tree[ip_tree_node_icmp].ulKind = MIB_NODE_GROUP;
    tree[ip_tree_node_mib_2].ulKind = MIB_NODE_GROUP;
    EXPECT_FALSE(all(tree.records(), isGroupWithMembers));
}

TEST_F(LinkInvariants, NoticeABrokenLeafChain)
{
    tree[ip_tree_node_ipForwarding].pstNextLeaf = &tree[ip_tree_node_ipInReceives];
    EXPECT_FALSE(leavesAreChained(tree.records()));
    tree[ip_tree_node_ipForwarding].pstNextLeaf = &tree[ip_tree_node_ipDefaultTTL];
    EXPECT_TRUE(leavesAreChained(tree.records()));
    tree[ip_tree_node_ipMIB].pstNextLeaf = &tree[ip_tree_node_icmpInMsgs];
    EXPECT_FALSE(leavesAreChained(tree.records()));
}

TEST_F(LinkInvariants, NoticeALeafChainThatDoesNotEnd)
{
    tree[ip_tree_node_icmpMsgStatsOutPkts].pstNextLeaf = &tree[ip_tree_node_ipForwarding];
    EXPECT_FALSE(leavesAreChained(tree.records()));
}

} // namespace
