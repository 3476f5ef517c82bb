// SPDX-License-Identifier: BSD-3-Clause
// The static tree: a record for each node of the catalogue, linked by the compiler.
#include "mibtree/catalogue.h"
#include "mibtree/link_invariants.h"
#include "mibtree/nodes.h"
#include "mibtree/record_invariants.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ipmib::mibtree
{
namespace
{

constexpr std::array<const MibTreeNode *, nodeCount> records{
#define NODE(parent, subId, name, ...) &ip_tree_node_##name,
#include "mibtree/ip_mib.def"
};

constexpr const MibTreeNode *recordOf(Node node)
{
    return node == Node::none ? nullptr : records[placeOf(node)];
}

// --- Index lists: the columns of all entries lie in one array, an entry's behind those of the entry before. ---

constexpr std::size_t indexColumnsBefore(std::size_t number)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < number; ++i) {
        count += indexes[i].count;
    }
    return count;
}

constexpr auto indexRecords = [] {
    std::array<const MibTreeNode *, indexColumnsBefore(indexes.size())> columns{};
    for (std::size_t number = 0; number < indexes.size(); ++number) {
        for (std::size_t i = 0; i < indexes[number].count; ++i) {
            columns[indexColumnsBefore(number) + i] = recordOf(indexes[number].columns[i]);
        }
    }
    return columns;
}();

template <std::size_t number>
constexpr MibIndexList indexList{0, indexes[number].count, indexRecords.data() + indexColumnsBefore(number)};

// The list of an entry and of its columns.
template <Node node, std::size_t number = 0>
constexpr const MibIndexList *indexListOf()
{
    if constexpr (number == indexes.size()) {
        return nullptr;
    } else if constexpr (indexes[number].entry == node || indexes[number].entry == lineOf(node).parent) {
        return &indexList<number>;
    } else {
        return indexListOf<node, number + 1>();
    }
}

// --- Syntaxes: every object has records of its own, also where two have the same syntax. Those of a kind lie in one
// array, an object's behind those of the object before. ---

constexpr std::size_t oneIfLeaf(Node node)
{
    return isLeaf(node) ? 1 : 0;
}

constexpr std::size_t labelsOf(Node node)
{
    return lineOf(node).syntax.labelCount;
}

constexpr std::size_t rangesOf(Node node)
{
    return labelsOf(node) != 0 ? 0 : lineOf(node).syntax.rangeCount;
}

constexpr std::size_t oneIfRestricted(Node node)
{
    return labelsOf(node) + rangesOf(node) != 0 ? 1 : 0;
}

using Count = std::size_t (*)(Node);

constexpr std::size_t countBefore(Node node, Count count)
{
    std::size_t sum = 0;
    for (std::size_t place = 0; place < placeOf(node); ++place) {
        sum += count(nodeAt(place));
    }
    return sum;
}

// As many records as the count says: make(node, i) for the i-th of each node.
template <class Record, std::size_t size, class Make>
constexpr std::array<Record, size> recordsOf(Count count, Make make)
{
    std::array<Record, size> made{};
    std::size_t filled = 0;
    for (std::size_t place = 0; place < nodeCount; ++place) {
        for (std::size_t i = 0; i < count(nodeAt(place)); ++i) {
            made[filled] = make(nodeAt(place), i);
            ++filled;
        }
    }
    return made;
}

constexpr auto rangeItems = recordsOf<MibRangeItem, countBefore(Node::none, rangesOf)>(
    rangesOf, [](Node node, std::size_t i) { return lineOf(node).syntax.ranges[i]; });
constexpr auto labelItems = recordsOf<MibEnumItem, countBefore(Node::none, labelsOf)>(
    labelsOf, [](Node node, std::size_t i) { return lineOf(node).syntax.labels[i]; });

constexpr std::size_t restrictionCount = countBefore(Node::none, oneIfRestricted);

constexpr auto lists = recordsOf<MibListRef, restrictionCount>(oneIfRestricted, [](Node node, std::size_t) {
    return labelsOf(node) != 0 ? MibListRef{labelItems.data() + countBefore(node, labelsOf)}
                               : MibListRef{rangeItems.data() + countBefore(node, rangesOf)};
});

constexpr auto restrictions = recordsOf<MibRestriction, restrictionCount>(oneIfRestricted, [](Node node, std::size_t) {
    const MibListRef *list = lists.data() + countBefore(node, oneIfRestricted);
    const auto labels = static_cast<std::uint32_t>(labelsOf(node));
    return labels != 0 ? MibRestriction{MIB_RESTRICT_ENUM, labels, nullptr, list}
                       : MibRestriction{MIB_RESTRICT_RANGE, static_cast<std::uint32_t>(rangesOf(node)), list, nullptr};
});

constexpr auto syntaxes = recordsOf<MibSyntax, countBefore(Node::none, oneIfLeaf)>(oneIfLeaf, [](Node node,
                                                                                                 std::size_t) {
    return MibSyntax{lineOf(node).syntax.type,
                     oneIfRestricted(node) == 0 ? nullptr : restrictions.data() + countBefore(node, oneIfRestricted)};
});

template <Node node>
constexpr MibTreeNode record()
{
    constexpr Line line = lineOf(node);
    MibTreeNode made{};
    made.pszName = descriptorOf(node);
    made.ulKind = kindOf(node);
    made.pstSyntax = isLeaf(node) ? syntaxes.data() + countBefore(node, oneIfLeaf) : nullptr;
    made.pstParent = recordOf(line.parent);
    made.pstFirstChild = recordOf(firstChildOf(node));
    made.pstNextLeaf = recordOf(nextLeafOf(node));
    made.ulSubId = line.subId;
    made.pszDefVal = line.defVal;
    made.ulStatus = line.status;
    made.ulAccess = line.access;
    made.pstIndex = indexListOf<node>();
    made.ulParamId = line.paramId;
    made.pstNextSibling = recordOf(nextSiblingOf(node));
    return made;
}

} // namespace
} // namespace ipmib::mibtree

// constexpr rather than constinit, so that the checks below can read the very records that the agent reads.
#define NODE(parent, subId, name, ...)                                                                                 \
    constexpr MibTreeNode ip_tree_node_##name = ipmib::mibtree::record<ipmib::mibtree::Node::name>();
#include "mibtree/ip_mib.def"

// --- What holds for every tree of this format, and the numbers of this one. ---

namespace ipmib::mibtree
{

using namespace invariant;

static_assert(nodeCount == 279, "the tree holds 279 nodes");
static_assert(countIf(records, isLeaf) == 232, "232 of the nodes are leaves: columns or scalars");
static_assert(countIf(records, isIdentifier) == 19, "19 of the nodes are identifier nodes");
static_assert(countKind(records, MIB_NODE_TABLE) == 14, "the tree holds 14 tables");
static_assert(countKind(records, MIB_NODE_ENTRY) == 14, "the tree holds 14 entries");
static_assert(countKind(records, MIB_NODE_COLUMN) == 179, "the tree holds 179 columns");
static_assert(countKind(records, MIB_NODE_SCALAR) == 53, "the tree holds 53 scalars");
static_assert(countKind(records, MIB_NODE_PLAIN) == 16, "16 identifier nodes have neither table nor scalar below them");
static_assert(countKind(records, MIB_NODE_GROUP) == 3, "3 identifier nodes have a table or a scalar below them");

static_assert(reachesEachOnce(records), "child and sibling links from the root reach every node once, depth-first");
static_assert(all(records, isParentOfItsChildren), "the parent of every child is the node it hangs under");
static_assert(all(records, childrenAscend), "the children of a node strictly ascend by sub-identifier");
static_assert(all(records, standsInPlace), "a table has one child, its entry 1; entries hold columns; leaves nothing");
static_assert(all(records, isGroupWithMembers), "a group is an identifier node with a table or scalar right below it");
static_assert(leavesAreChained(records), "the leaf chain visits every leaf once, in the order of identifiers");
static_assert(all(records, hasSyntaxIfLeaf), "exactly the columns and scalars have a syntax");
static_assert(all(records, isRestrictedAsTyped), "enumerations carry labels, INTEGER and octet strings ranges");
static_assert(syntaxesAreOwn(records), "no two objects share a syntax, restriction or list record");
static_assert(all(records, hasIndexOfItsEntry), "an entry and its columns share one index list; nobody else has one");
static_assert(all(records, indexesOwnColumns), "an index list names one to four columns of its own entry");
static_assert(indexesAdjoin(records), "the index columns of all entries lie one after another in one array");
static_assert(all(records, carriesParamIdIfLeaf), "only columns and scalars carry a parameter id, each of this module");
static_assert(paramIdsNumberTables(records), "parameter ids number the served objects of one entry or group from 1");
static_assert(all(records, indexParamIdsLead), "the index columns of a served table are its first columns, in order");
static_assert(all(records, codesAreKnown), "status, access and kind codes are those that the agent knows and agree");
static_assert(all(records, sparesAreZero), "spare fields are zero");
static_assert(all(records, textsAreThere), "names hold no underscore, and a default is braced or the empty text");
static_assert(firstFrom(0, [](Node node) { return !itemsAscend(lineOf(node).syntax); }) == Node::none,
              "the labels and the ranges of every syntax ascend");
static_assert(recordOf(Node::icmpMsgStatsOutPkts)->pstNextLeaf == nullptr, "icmpMsgStatsOutPkts is the last leaf");

} // namespace ipmib::mibtree
