// SPDX-License-Identifier: BSD-3-Clause
// The tree as an agent walks it: identifiers, children and siblings, and the chain of leaves.
#include "mibtree/nodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace
{

constexpr std::size_t nodeCount = 279;

using Identifier = std::vector<std::uint32_t>;

// < of two vectors compares too little on big-endian machines with GCC 12.
bool isBefore(const Identifier &left, const Identifier &right)
{
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

Identifier identifierOf(const MibTreeNode &node)
{
    Identifier identifier = node.pstParent == nullptr ? Identifier{} : identifierOf(*node.pstParent);
    identifier.push_back(node.ulSubId);
    return identifier;
}

// Descends by first child and next sibling; `identifier` is built on the way down.
void descend(const MibTreeNode &node, Identifier identifier, std::vector<const MibTreeNode *> &visited)
{
    identifier.push_back(node.ulSubId);
    EXPECT_EQ(identifierOf(node), identifier) << node.pszName;
    visited.push_back(&node);
    ASSERT_LE(visited.size(), nodeCount) << "the links go in a circle";
    for (const MibTreeNode *child = node.pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        descend(*child, identifier, visited);
    }
}

std::vector<const MibTreeNode *> allNodes()
{
    std::vector<const MibTreeNode *> visited;
    descend(ip_tree_node_iso, {}, visited);
    return visited;
}

std::vector<const MibTreeNode *> leafChain()
{
    std::vector<const MibTreeNode *> leaves;
    for (const MibTreeNode *leaf = ip_tree_node_iso.pstNextLeaf; leaf != nullptr && leaves.size() <= nodeCount;
         leaf = leaf->pstNextLeaf) {
        leaves.push_back(leaf);
    }
    return leaves;
}

TEST(TreeWalk, ChildAndSiblingLinksReachEveryRecordInAscendingOrder)
{
    const std::vector<const MibTreeNode *> exported{
#define NODE(parent, subId, name, ...) &ip_tree_node_##name,
#include "mibtree/ip_mib.def"
    };
    const auto nodes = allNodes();
    EXPECT_EQ(nodes.size(), nodeCount);
    EXPECT_EQ(nodes, exported);
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        EXPECT_PRED2(isBefore, identifierOf(*nodes[i - 1]), identifierOf(*nodes[i]));
    }
}

TEST(TreeWalk, LeafChainReachesEveryLeafInAscendingOrder)
{
    std::vector<const MibTreeNode *> leaves;
    for (const MibTreeNode *node : allNodes()) {
        if (node->ulKind == MIB_NODE_COLUMN || node->ulKind == MIB_NODE_SCALAR) {
            leaves.push_back(node);
        }
    }
    EXPECT_EQ(leaves.size(), 232);
    EXPECT_EQ(leafChain(), leaves);
}

TEST(TreeWalk, LeafChainStartsAtIpForwarding)
{
    EXPECT_EQ(identifierOf(ip_tree_node_ipForwarding), (Identifier{1, 3, 6, 1, 2, 1, 4, 1}));
    EXPECT_EQ(ip_tree_node_iso.pstNextLeaf, &ip_tree_node_ipForwarding);
}

TEST(TreeWalk, LeafChainCrossesTablesAndGroups)
{
    EXPECT_EQ(ip_tree_node_ipFragCreates.pstNextLeaf, &ip_tree_node_ipAdEntAddr);
    EXPECT_EQ(ip_tree_node_ipAdEntReasmMaxSize.pstNextLeaf, &ip_tree_node_ipNetToMediaIfIndex);
    EXPECT_EQ(ip_tree_node_ipSystemStatsRefreshRate.pstNextLeaf, &ip_tree_node_ipIfStatsTableLastChange);
    EXPECT_EQ(ip_tree_node_ipIfStatsTableLastChange.pstNextLeaf, &ip_tree_node_ipIfStatsIPVersion);
    EXPECT_EQ(ip_tree_node_ipIfStatsRefreshRate.pstNextLeaf, &ip_tree_node_ipAddressPrefixIfIndex);
    EXPECT_EQ(ip_tree_node_ipv6RouterAdvertRowStatus.pstNextLeaf, &ip_tree_node_icmpInMsgs);
    EXPECT_EQ(ip_tree_node_icmpOutAddrMaskReps.pstNextLeaf, &ip_tree_node_icmpStatsIPVersion);
    EXPECT_EQ(ip_tree_node_icmpMsgStatsOutPkts.pstNextLeaf, nullptr);
}

TEST(TreeWalk, BranchesWithoutObjectsHaveNoLeaf)
{
    for (const MibTreeNode *node :
         {&ip_tree_node_ipMIB, &ip_tree_node_ipMIBConformance, &ip_tree_node_ipMIBCompliances,
          &ip_tree_node_ipMIBGroups, &ip_tree_node_inetAddressMIB, &ip_tree_node_snmpV2, &ip_tree_node_snmpModules,
          &ip_tree_node_snmpMIB, &ip_tree_node_snmpMIBObjects, &ip_tree_node_snmpTraps}) {
        EXPECT_EQ(node->pstNextLeaf, nullptr) << node->pszName;
        EXPECT_EQ(node->ulKind, MIB_NODE_PLAIN) << node->pszName;
    }
    EXPECT_EQ(identifierOf(ip_tree_node_snmpTraps), (Identifier{1, 3, 6, 1, 6, 3, 1, 1, 5}));
    EXPECT_EQ(identifierOf(ip_tree_node_ipMIBGroups), (Identifier{1, 3, 6, 1, 2, 1, 48, 2, 2}));
    EXPECT_EQ(identifierOf(ip_tree_node_inetAddressMIB), (Identifier{1, 3, 6, 1, 2, 1, 76}));
}

TEST(TreeWalk, OneDescriptorHasAHyphen)
{
    EXPECT_STREQ(ip_tree_node_mib_2.pszName, "mib-2");
    EXPECT_EQ(identifierOf(ip_tree_node_mib_2), (Identifier{1, 3, 6, 1, 2, 1}));
    EXPECT_EQ(ip_tree_node_mib_2.pstNextLeaf, &ip_tree_node_ipForwarding);
}

TEST(TreeWalk, GroupsAreIpIcmpAndTrafficStats)
{
    std::vector<const MibTreeNode *> groups;
    for (const MibTreeNode *node : allNodes()) {
        if (node->ulKind == MIB_NODE_GROUP) {
            groups.push_back(node);
        }
    }
    EXPECT_EQ(groups, (std::vector{&ip_tree_node_ip, &ip_tree_node_ipTrafficStats, &ip_tree_node_icmp}));
}

TEST(TreeWalk, GapsInTheNumberingStayGaps)
{
    EXPECT_EQ(ip_tree_node_ipAddrTable.pstNextSibling, &ip_tree_node_ipNetToMediaTable); // no 21
    EXPECT_EQ(ip_tree_node_ipRoutingDiscards.pstNextSibling->ulSubId, 25);               // no 24
    EXPECT_EQ(ip_tree_node_ipv6InterfaceIdentifier.pstNextSibling, &ip_tree_node_ipv6InterfaceEnableStatus);
    EXPECT_EQ(ip_tree_node_ipv6InterfaceEnableStatus.ulSubId, 5);
    EXPECT_EQ(ip_tree_node_ipSystemStatsIPVersion.pstNextSibling, &ip_tree_node_ipSystemStatsInReceives);
    EXPECT_EQ(ip_tree_node_ipSystemStatsInReceives.ulSubId, 3);
    EXPECT_EQ(ip_tree_node_ipIfStatsIPVersion.pstNextSibling, &ip_tree_node_ipIfStatsIfIndex);
    EXPECT_EQ(ip_tree_node_ipIfStatsHCOutRequests.ulSubId, 21);
    EXPECT_EQ(ip_tree_node_ipIfStatsOutForwDatagrams.ulSubId, 23); // no 22, which the system-wide table has
    EXPECT_EQ(ip_tree_node_ipSystemStatsOutNoRoutes.ulSubId, 22);
}

} // namespace
