// SPDX-License-Identifier: BSD-3-Clause
// What the tree says about its objects: syntaxes, defaults, indexes, status and parameter ids.
#include "mibtree/nodes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{

std::vector<const MibTreeNode *> leafChain()
{
    std::vector<const MibTreeNode *> leaves;
    for (const MibTreeNode *leaf = ip_tree_node_iso.pstNextLeaf; leaf != nullptr && leaves.size() < 1000;
         leaf = leaf->pstNextLeaf) {
        leaves.push_back(leaf);
    }
    return leaves;
}

using Labels = std::vector<std::pair<std::string, std::int32_t>>;
using Ranges = std::vector<std::pair<std::int32_t, std::int32_t>>;

Labels labelsOf(const MibTreeNode &node)
{
    const MibRestriction &restriction = *node.pstSyntax->pstRestrict;
    EXPECT_EQ(restriction.ulRestrictKind, MIB_RESTRICT_ENUM);
    EXPECT_EQ(restriction.pstRanges, nullptr);
    const auto *items = static_cast<const MibEnumItem *>(restriction.pstEnums->pItems);
    Labels labels;
    for (std::uint32_t i = 0; i < restriction.ulCount; ++i) {
        labels.emplace_back(items[i].pszLabel, items[i].lValue);
    }
    return labels;
}

Ranges rangesOf(const MibTreeNode &node)
{
    const MibRestriction &restriction = *node.pstSyntax->pstRestrict;
    EXPECT_EQ(restriction.ulRestrictKind, MIB_RESTRICT_RANGE);
    EXPECT_EQ(restriction.pstEnums, nullptr);
    const auto *items = static_cast<const MibRangeItem *>(restriction.pstRanges->pItems);
    Ranges ranges;
    for (std::uint32_t i = 0; i < restriction.ulCount; ++i) {
        ranges.emplace_back(items[i].lLow, items[i].lHigh);
    }
    return ranges;
}

TEST(Tree, RecordsHaveSeventeenFieldsInNaturalAlignment)
{
    if constexpr (sizeof(void *) == 4) {
        EXPECT_EQ(sizeof(MibTreeNode), 17 * 4);
    } else {
        EXPECT_EQ(sizeof(MibTreeNode), 112);
        EXPECT_EQ(offsetof(MibTreeNode, pszDefVal), 56);
        EXPECT_EQ(offsetof(MibTreeNode, ulParamId), 80);
        EXPECT_EQ(offsetof(MibTreeNode, ulSpare4), 104);
    }
}

// --- Syntaxes ---

TEST(Tree, AddressTypesEndWithDns)
{
    const Labels types{{"unknown", 0}, {"ipv4", 1}, {"ipv6", 2}, {"ipv4z", 3}, {"ipv6z", 4}, {"dns", 16}};
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressPrefixType), types);
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressAddrType), types);
    EXPECT_EQ(labelsOf(ip_tree_node_ipNetToPhysicalNetAddressType), types);
    EXPECT_EQ(labelsOf(ip_tree_node_ipDefaultRouterAddressType), types);
}

TEST(Tree, NegativeValuesSurvive)
{
    EXPECT_EQ(labelsOf(ip_tree_node_ipDefaultRouterPreference),
              (Labels{{"reserved", -2}, {"low", -1}, {"medium", 0}, {"high", 1}}));
}

TEST(Tree, OriginsOfAddressesAndPrefixesDiffer)
{
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressOrigin),
              (Labels{{"other", 1}, {"manual", 2}, {"dhcp", 4}, {"linklayer", 5}, {"random", 6}}));
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressPrefixOrigin),
              (Labels{{"other", 1}, {"manual", 2}, {"wellknown", 3}, {"dhcp", 4}, {"routeradv", 5}}));
}

TEST(Tree, OneObjectHasTwoRanges)
{
    EXPECT_EQ(rangesOf(ip_tree_node_ipv6RouterAdvertDefaultLifetime), (Ranges{{0, 0}, {4, 9000}}));
    for (const MibTreeNode *leaf : leafChain()) {
        const MibRestriction *restriction = leaf->pstSyntax->pstRestrict;
        if (restriction != nullptr && restriction->ulRestrictKind == MIB_RESTRICT_RANGE &&
            leaf != &ip_tree_node_ipv6RouterAdvertDefaultLifetime) {
            EXPECT_EQ(restriction->ulCount, 1) << leaf->pszName;
        }
    }
}

TEST(Tree, RangesHaveTheBoundsOfTheMib)
{
    EXPECT_EQ(rangesOf(ip_tree_node_ipv6InterfaceReasmMaxSize), (Ranges{{1500, 65535}}));
    EXPECT_EQ(rangesOf(ip_tree_node_ipAddressPrefixLength), (Ranges{{0, 2040}}));
    EXPECT_EQ(rangesOf(ip_tree_node_ipAddressSpinLock), (Ranges{{0, 2147483647}}));
    EXPECT_EQ(rangesOf(ip_tree_node_ipv6InterfaceIdentifier), (Ranges{{0, 8}}));
    EXPECT_EQ(ip_tree_node_ipReasmTimeout.pstSyntax->pstRestrict, nullptr);
}

TEST(Tree, TypesFollowTheKeywordOfTheMib)
{
    EXPECT_EQ(ip_tree_node_ipNetToMediaIfIndex.pstSyntax->ulType, MIB_TYPE_INTEGER);
    EXPECT_EQ(ip_tree_node_ipNetToPhysicalIfIndex.pstSyntax->ulType, MIB_TYPE_INTEGER32);
    EXPECT_EQ(rangesOf(ip_tree_node_ipNetToMediaIfIndex), rangesOf(ip_tree_node_ipNetToPhysicalIfIndex));
    EXPECT_EQ(ip_tree_node_ipAddressPrefix.pstSyntax->ulType, MIB_TYPE_OID);
    EXPECT_EQ(ip_tree_node_ipAdEntAddr.pstSyntax->ulType, MIB_TYPE_IPADDRESS);
}

TEST(Tree, ObjectsOfEqualSyntaxHaveRecordsOfTheirOwn)
{
    std::set<const void *> records;
    std::size_t used = 0;
    for (const MibTreeNode *leaf : leafChain()) {
        records.insert(leaf->pstSyntax);
        ++used;
        if (const MibRestriction *restriction = leaf->pstSyntax->pstRestrict) {
            const MibListRef *list = restriction->pstRanges != nullptr ? restriction->pstRanges : restriction->pstEnums;
            records.insert({restriction, list, list->pItems});
            used += 3;
        }
    }
    EXPECT_EQ(records.size(), used);
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressPrefixOnLinkFlag), (Labels{{"true", 1}, {"false", 2}}));
    EXPECT_EQ(labelsOf(ip_tree_node_ipAddressPrefixAutonomousFlag), (Labels{{"true", 1}, {"false", 2}}));
}

TEST(Tree, DefaultsAreTextsAndNeverNull)
{
    EXPECT_STREQ(ip_tree_node_ipForwarding.pszDefVal, "");
    EXPECT_STREQ(ip_tree_node_iso.pszDefVal, "");
    EXPECT_STREQ(ip_tree_node_ipv4InterfaceRetransmitTime.pszDefVal, "{ 1000 }");
    EXPECT_STREQ(ip_tree_node_ipAddressPrefix.pszDefVal, "{ zeroDotZero }");
    std::size_t defaults = 0;
    for (const MibTreeNode *leaf : leafChain()) {
        ASSERT_NE(leaf->pszDefVal, nullptr) << leaf->pszName;
        defaults += leaf->pszDefVal[0] != '\0' ? 1 : 0;
    }
    EXPECT_EQ(defaults, 13);
}

// --- Indexes, status, parameter ids ---

TEST(Tree, IndexListsNameColumnsInOrderOfTheIndexClause)
{
    const MibIndexList &list = *ip_tree_node_ipNetToMediaEntry.pstIndex;
    ASSERT_EQ(list.ulCount, 2);
    EXPECT_EQ(list.ppstColumns[0], &ip_tree_node_ipNetToMediaIfIndex);
    EXPECT_EQ(list.ppstColumns[1], &ip_tree_node_ipNetToMediaNetAddress); // the third column
    EXPECT_EQ(ip_tree_node_ipAddressPrefixEntry.pstIndex->ulCount, 4);
    EXPECT_EQ(ip_tree_node_ipAddressPrefixOrigin.pstIndex, ip_tree_node_ipAddressPrefixEntry.pstIndex);
    EXPECT_EQ(ip_tree_node_ipAddressPrefixTable.pstIndex, nullptr);
}

TEST(Tree, DeprecationCoversEntriesAndColumns)
{
    for (const MibTreeNode *node :
         {&ip_tree_node_ipAddrTable, &ip_tree_node_ipAddrEntry, &ip_tree_node_ipAdEntNetMask,
          &ip_tree_node_ipNetToMediaTable, &ip_tree_node_ipNetToMediaEntry, &ip_tree_node_ipNetToMediaType,
          &ip_tree_node_ipRoutingDiscards, &ip_tree_node_icmpInMsgs}) {
        EXPECT_EQ(node->ulStatus, MIB_STATUS_DEPRECATED) << node->pszName;
    }
    EXPECT_EQ(ip_tree_node_ipReasmTimeout.ulStatus, MIB_STATUS_CURRENT);
    EXPECT_EQ(ip_tree_node_ip.ulStatus, MIB_STATUS_NONE);
}

TEST(Tree, IndexColumnsOfServedTablesCarryParameterIds)
{
    EXPECT_EQ(ip_tree_node_ipNetToPhysicalNetAddress.ulAccess, MIB_ACCESS_NOT_ACCESSIBLE);
    EXPECT_EQ(ip_tree_node_ipNetToPhysicalNetAddress.ulParamId, 0x03720703);
    EXPECT_EQ(ip_tree_node_ipAdEntAddr.ulAccess, MIB_ACCESS_READ_ONLY);
    EXPECT_EQ(ip_tree_node_ipAdEntAddr.ulParamId, 0);
}

TEST(Tree, ParameterIdsCountServedColumns)
{
    EXPECT_EQ(ip_tree_node_ipv6IpForwarding.ulParamId, 0x03720101);
    EXPECT_EQ(ip_tree_node_ipv6IpDefaultHopLimit.ulParamId, 0x03720102);
    EXPECT_EQ(ip_tree_node_ipv6InterfaceEnableStatus.ulParamId, 0x03720204);
    EXPECT_EQ(ip_tree_node_ipSystemStatsInReceives.ulParamId, 0x03720302);
    EXPECT_EQ(ip_tree_node_ipIfStatsInReceives.ulParamId, 0x03720403);
}

TEST(Tree, InterfaceStatisticsWereNumberedInTwoGoes)
{
    const std::vector<const MibTreeNode *> appended{
        &ip_tree_node_ipIfStatsHCInReceives,       &ip_tree_node_ipIfStatsInOctets,
        &ip_tree_node_ipIfStatsHCInOctets,         &ip_tree_node_ipIfStatsHCOutRequests,
        &ip_tree_node_ipIfStatsHCOutForwDatagrams, &ip_tree_node_ipIfStatsOutOctets,
        &ip_tree_node_ipIfStatsHCOutOctets,        &ip_tree_node_ipIfStatsHCOutTransmits};
    for (std::size_t i = 0; i < appended.size(); ++i) {
        EXPECT_EQ(appended[i]->ulParamId, 0x03720419 + i) << appended[i]->pszName;
    }
    EXPECT_EQ(ip_tree_node_ipIfStatsOutMcastPkts.ulParamId, 0x03720418);
}

} // namespace
