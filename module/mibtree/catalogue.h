// SPDX-License-Identifier: BSD-3-Clause
// ip_mib.def as constants of the compiler: what it says about each node, and what follows from the order of its lines.
// Nothing of this reaches the library; a table's handler uses it to prove that its columns are those of the tree.
#pragma once

#include <ipmib/message.h>
#include <ipmib/mib_tree.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace ipmib::mibtree
{

// The nodes by descriptor, depth-first.
enum class Node : std::uint16_t {
#define NODE(parent, subId, name, ...) name,
#include "mibtree/ip_mib.def"
    none
};
inline constexpr std::size_t nodeCount = static_cast<std::size_t>(Node::none);

enum class Form : std::uint8_t { identifier, table, entry, leaf };

// What stands in the syntax column.
struct Syntax {
    Form form = Form::leaf;
    std::uint32_t type = 0;
    std::uint32_t rangeCount = 0;
    std::uint32_t labelCount = 0;
    std::array<MibRangeItem, 2> ranges{};
    std::array<MibEnumItem, 8> labels{};

    constexpr Syntax operator()(MibRangeItem range) const
    {
        Syntax restricted = *this;
        restricted.ranges[restricted.rangeCount++] = range;
        return restricted;
    }
    constexpr Syntax operator()(MibRangeItem range, MibRangeItem otherRange) const
    {
        return (*this)(range)(otherRange);
    }
};

// The words of the syntax column.
namespace syntax
{

inline constexpr Syntax Identifier{Form::identifier};
inline constexpr Syntax Table{Form::table};
inline constexpr Syntax Entry{Form::entry};
inline constexpr Syntax INTEGER{Form::leaf, MIB_TYPE_INTEGER};
inline constexpr Syntax Integer32{Form::leaf, MIB_TYPE_INTEGER32};
inline constexpr Syntax Unsigned32{Form::leaf, MIB_TYPE_UNSIGNED32};
inline constexpr Syntax Counter32{Form::leaf, MIB_TYPE_COUNTER32};
inline constexpr Syntax Counter64{Form::leaf, MIB_TYPE_COUNTER64};
inline constexpr Syntax TimeTicks{Form::leaf, MIB_TYPE_TIMETICKS};
inline constexpr Syntax OctetString{Form::leaf, MIB_TYPE_OCTETS};
inline constexpr Syntax ObjectIdentifier{Form::leaf, MIB_TYPE_OID};
inline constexpr Syntax IpAddress{Form::leaf, MIB_TYPE_IPADDRESS};

constexpr Syntax Enumeration(std::initializer_list<MibEnumItem> labels)
{
    Syntax enumeration{Form::leaf, MIB_TYPE_ENUM};
    for (const MibEnumItem &label : labels) {
        enumeration.labels[enumeration.labelCount++] = label;
    }
    return enumeration;
}

#define SYNTAX(name, ...) inline constexpr Syntax name = __VA_ARGS__;
#include "mibtree/ip_mib.def"

} // namespace syntax

// One line of the catalogue.
struct Line {
    Node parent;
    std::uint32_t subId;
    const char *symbol; // the descriptor as an identifier
    Syntax syntax;
    std::uint32_t access;
    std::uint32_t status;
    std::uint32_t paramId;
    const char *defVal;
};

inline constexpr std::array<Line, nodeCount> lines = [] {
    using namespace syntax;
    return std::array<Line, nodeCount>{{
#define NODE(parent, subId, name, syntax, access, status, paramId, defVal)                                             \
    {Node::parent, subId, #name, syntax, MIB_ACCESS_##access, MIB_STATUS_##status, paramId, defVal},
#include "mibtree/ip_mib.def"
    }};
}();

// The INDEX clause of one entry.
struct Index {
    Node entry;
    std::uint32_t count;
    std::array<Node, 4> columns;
};

// The nodes by their names alone.
namespace node
{
#define NODE(parent, subId, name, ...) inline constexpr Node name = Node::name;
#include "mibtree/ip_mib.def"
} // namespace node

inline constexpr auto indexes = [] {
    using namespace node;
    constexpr auto index = [](Node entry, auto... columns) { return Index{entry, sizeof...(columns), {columns...}}; };
    return std::array{
#define INDEX(entry, ...) index(entry, __VA_ARGS__),
#include "mibtree/ip_mib.def"
    };
}();

constexpr std::size_t placeOf(Node node)
{
    return static_cast<std::size_t>(node);
}

constexpr Node nodeAt(std::size_t place)
{
    return static_cast<Node>(place);
}

constexpr const Line &lineOf(Node node)
{
    return lines[placeOf(node)];
}

constexpr bool isLeaf(Node node)
{
    return lineOf(node).syntax.form == Form::leaf;
}

// The first node behind a place that a condition holds for, or none.
template <class Condition>
constexpr Node firstFrom(std::size_t place, Condition condition)
{
    while (place < nodeCount && !condition(nodeAt(place))) {
        ++place;
    }
    return nodeAt(place);
}

// Children stand behind their parent and ascend, so that the first one found is the lowest.
constexpr Node firstChildOf(Node node)
{
    return firstFrom(placeOf(node) + 1, [node](Node other) { return lineOf(other).parent == node; });
}

constexpr Node nextSiblingOf(Node node)
{
    return firstFrom(placeOf(node) + 1, [node](Node other) { return lineOf(other).parent == lineOf(node).parent; });
}

constexpr bool isWithin(Node node, Node ancestor)
{
    while (node != ancestor && node != Node::none) {
        node = lineOf(node).parent;
    }
    return node == ancestor;
}

// Lines stand in the order of identifiers, so that the next leaf found is the following one.
constexpr Node nextLeafOf(Node node)
{
    const Node leaf = firstFrom(placeOf(node) + 1, isLeaf);
    return leaf == Node::none || isLeaf(node) || isWithin(leaf, node) ? leaf : Node::none;
}

constexpr std::uint32_t kindOf(Node node)
{
    switch (lineOf(node).syntax.form) {
    case Form::table:
        return MIB_NODE_TABLE;
    case Form::entry:
        return MIB_NODE_ENTRY;
    case Form::leaf:
        return lineOf(lineOf(node).parent).syntax.form == Form::entry ? MIB_NODE_COLUMN : MIB_NODE_SCALAR;
    case Form::identifier:
        break;
    }
    const Node member = firstFrom(placeOf(node) + 1, [node](Node other) {
        return lineOf(other).parent == node && lineOf(other).syntax.form != Form::identifier;
    });
    return member == Node::none ? MIB_NODE_PLAIN : MIB_NODE_GROUP;
}

// The descriptor as the MIB spells it: the hyphen of one name is all that an identifier cannot hold.
constexpr const char *descriptorOf(Node node)
{
    return node == Node::mib_2 ? "mib-2" : lineOf(node).symbol;
}

// Whether the items of a syntax stand in ascending order.
constexpr bool itemsAscend(const Syntax &syntax)
{
    for (std::size_t i = 0; i < syntax.rangeCount; ++i) {
        if (syntax.ranges[i].lLow > syntax.ranges[i].lHigh ||
            (i != 0 && syntax.ranges[i].lLow <= syntax.ranges[i - 1].lHigh)) {
            return false;
        }
    }
    for (std::size_t i = 1; i < syntax.labelCount; ++i) {
        if (syntax.labels[i].lValue <= syntax.labels[i - 1].lValue) {
            return false;
        }
    }
    return true;
}

// --- What a handler has to answer: for its static_asserts and constants, not for use at run time. ---

// The object behind a parameter id, or none.
constexpr Node servedNode(std::uint32_t table, std::uint32_t column)
{
    const std::uint32_t paramId = ip_ParamId(table, column);
    return firstFrom(0, [paramId](Node node) { return lineOf(node).paramId == paramId; });
}

// How many columns of a table the module serves. They are numbered from 1 without a gap.
constexpr std::uint32_t servedColumns(std::uint32_t table)
{
    std::uint32_t count = 0;
    while (servedNode(table, count + 1) != Node::none) {
        ++count;
    }
    return count;
}

// How many columns make up the index of a served table. They are its first columns, in the order of the INDEX clause.
constexpr std::uint32_t indexColumns(std::uint32_t table)
{
    for (const Index &index : indexes) {
        if (index.entry == lineOf(servedNode(table, 1)).parent) {
            return index.count;
        }
    }
    return 0;
}

// The value type (VT_*) that a column's syntax asks for.
constexpr std::uint32_t valueType(std::uint32_t table, std::uint32_t column)
{
    switch (lineOf(servedNode(table, column)).syntax.type) {
    case MIB_TYPE_UNSIGNED32:
        return VT_UNSIGNED32;
    case MIB_TYPE_COUNTER32:
        return VT_COUNTER32;
    case MIB_TYPE_COUNTER64:
        return VT_COUNTER64;
    case MIB_TYPE_TIMETICKS:
        return VT_TIMETICKS;
    case MIB_TYPE_OCTETS:
        return VT_OCTETS;
    case MIB_TYPE_OID:
        return VT_OID;
    default:
        return VT_INTEGER;
    }
}

} // namespace ipmib::mibtree
