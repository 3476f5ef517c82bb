// SPDX-License-Identifier: BSD-3-Clause
// A MIB described line by line, in the records in which modules describe theirs; what nobody's module describes is
// written like this. A line says what its line in the MIB text says.
#pragma once

#include <ipmib/mib_tree.h>

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ipmib::host
{

// What stands in the syntax column.
struct SyntaxText {
    std::uint32_t kind; // MIB_NODE_*; MIB_NODE_COLUMN stands for scalars too
    std::uint32_t type = 0;
    std::vector<MibRangeItem> ranges = {};
    std::vector<MibEnumItem> labels = {};

    // With ranges of the value, or of the length of octets.
    SyntaxText operator()(MibRangeItem range) const { return {kind, type, {range}, {}}; }
};

namespace mib
{

inline const SyntaxText Identifier{MIB_NODE_PLAIN};
inline const SyntaxText Table{MIB_NODE_TABLE};
inline const SyntaxText Entry{MIB_NODE_ENTRY};
inline const SyntaxText INTEGER{MIB_NODE_COLUMN, MIB_TYPE_INTEGER};
inline const SyntaxText Integer32{MIB_NODE_COLUMN, MIB_TYPE_INTEGER32};
inline const SyntaxText Unsigned32{MIB_NODE_COLUMN, MIB_TYPE_UNSIGNED32};
inline const SyntaxText Counter32{MIB_NODE_COLUMN, MIB_TYPE_COUNTER32};
inline const SyntaxText Counter64{MIB_NODE_COLUMN, MIB_TYPE_COUNTER64};
inline const SyntaxText TimeTicks{MIB_NODE_COLUMN, MIB_TYPE_TIMETICKS};
inline const SyntaxText OctetString{MIB_NODE_COLUMN, MIB_TYPE_OCTETS};
inline const SyntaxText ObjectIdentifier{MIB_NODE_COLUMN, MIB_TYPE_OID};
inline const SyntaxText IpAddress{MIB_NODE_COLUMN, MIB_TYPE_IPADDRESS};

inline SyntaxText Enumeration(std::initializer_list<MibEnumItem> labels)
{
    return {MIB_NODE_COLUMN, MIB_TYPE_ENUM, {}, labels};
}

} // namespace mib

class MibDescription
{
  public:
    // Of the node that all the others lie below. Names must outlive the description.
    MibDescription(const char *rootName, std::uint32_t subId);
    MibDescription(const MibDescription &) = delete;
    MibDescription &operator=(const MibDescription &) = delete;

    const MibTreeNode &root() const { return nodes_.front(); }

    // A node behind its elder siblings. Throws std::logic_error when there is no such parent.
    void add(std::string_view parent, std::uint32_t subId, const char *name, const SyntaxText &syntax,
             std::uint32_t access, std::uint32_t status);
    // The columns that are the index of an entry, in their order; they and the columns of the entry are there already.
    void index(std::string_view entry, std::initializer_list<std::string_view> columns);

  private:
    MibTreeNode &named(std::string_view name);
    const MibSyntax &syntax(const SyntaxText &text);
    void link(MibTreeNode &parent, MibTreeNode &node);

    std::deque<MibTreeNode> nodes_;
    std::unordered_map<std::string_view, MibTreeNode *> byName_;
    std::deque<MibSyntax> syntaxes_;
    std::deque<MibRestriction> restrictions_;
    std::deque<MibListRef> lists_;
    std::deque<std::vector<MibRangeItem>> ranges_;
    std::deque<std::vector<MibEnumItem>> labels_;
    std::deque<MibIndexList> indexes_;
    std::deque<std::vector<const MibTreeNode *>> indexColumns_;
};

} // namespace ipmib::host
