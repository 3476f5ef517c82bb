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
consteval const MibIndexList *indexListOf()
{
    if constexpr (number == indexes.size()) {
        return nullptr;
    } else if constexpr (indexes[number].entry == node || indexes[number].entry == lineOf(node).parent) {
        return &indexList<number>;
    } else {
        return indexListOf<node, number + 1>();
    }
}

// --- Syntaxes: every object has records of its own, also where two have the same syntax. ---

template <std::size_t count, class Items>
consteval auto firstOf(const Items &items)
{
    std::array<typename Items::value_type, count> first{};
    for (std::size_t i = 0; i < count; ++i) {
        first[i] = items[i];
    }
    return first;
}

template <Node node>
constexpr auto ranges = firstOf<lineOf(node).syntax.rangeCount>(lineOf(node).syntax.ranges);
template <Node node>
constexpr auto labels = firstOf<lineOf(node).syntax.labelCount>(lineOf(node).syntax.labels);

template <Node node>
constexpr MibListRef rangeList{ranges<node>.data()};
template <Node node>
constexpr MibListRef labelList{labels<node>.data()};

template <Node node>
constexpr MibRestriction rangeRestriction{MIB_RESTRICT_RANGE, ranges<node>.size(), &rangeList<node>, nullptr};
template <Node node>
constexpr MibRestriction labelRestriction{MIB_RESTRICT_ENUM, labels<node>.size(), nullptr, &labelList<node>};

template <Node node>
consteval const MibRestriction *restrictionOf()
{
    if constexpr (lineOf(node).syntax.labelCount != 0) {
        return &labelRestriction<node>;
    } else if constexpr (lineOf(node).syntax.rangeCount != 0) {
        return &rangeRestriction<node>;
    } else {
        return nullptr;
    }
}

template <Node node>
constexpr MibSyntax syntaxRecord{lineOf(node).syntax.type, restrictionOf<node>()};

template <Node node>
consteval const MibSyntax *syntaxOf()
{
    if constexpr (isLeaf(node)) {
        return &syntaxRecord<node>;
    } else {
        return nullptr;
    }
}

template <Node node>
consteval MibTreeNode record()
{
    constexpr Line line = lineOf(node);
    return {
        .pszName = descriptorOf(node),
        .ulKind = kindOf(node),
        .pstSyntax = syntaxOf<node>(),
        .pstParent = recordOf(line.parent),
        .pstFirstChild = recordOf(firstChildOf(node)),
        .pstNextLeaf = recordOf(nextLeafOf(node)),
        .ulSpare1 = 0,
        .ulSubId = line.subId,
        .pszDefVal = line.defVal,
        .ulStatus = line.status,
        .ulAccess = line.access,
        .pstIndex = indexListOf<node>(),
        .ulParamId = line.paramId,
        .pstNextSibling = recordOf(nextSiblingOf(node)),
        .ulSpare2 = 0,
        .ulSpare3 = 0,
        .ulSpare4 = 0,
    };
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
