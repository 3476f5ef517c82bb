// SPDX-License-Identifier: BSD-3-Clause
// All that a process knows of objects: what is described, what of it is served, and by whom. A module's tree is
// described here, and what the product itself serves beside it; whoever serves, shows or lists tables reads it.
#pragma once

#include "oid.h"
#include "source.h"

#include <ipmib/mib_tree.h>
#include <ipmib/platform_hooks.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ipmib::host
{

// An object or a node of the tree of names.
struct Object {
    const MibTreeNode *node;
    Oid oid;
    bool isServed = false; // it is a column or scalar, and somebody answers for it
};

// A table or scalar of which something is served.
struct ServedTable {
    const char *name;         // of the table, or of the scalar; scalars of one group may all have the group's
    Oid identifier;           // of the table; of the scalar, without its instance
    Oid root;                 // what all instances lie below: the table's entry, or the scalar
    Oid inner;                // the table's entry, or the scalar's instance
    std::vector<Oid> objects; // what is served, one by one: the table's columns, or the scalar
    Source *source = nullptr;
    // Ours has every row that the agents in use have, so it takes theirs' place unless the user says otherwise. Of
    // other tables theirs stay.
    bool isSuperior = false;
    bool isOfGroup = false;

    bool isScalar() const { return identifier.size() == root.size(); }
    // What goes by its name: the table, or the scalar, or the group of scalars.
    OidView place() const { return identifier.view().first(identifier.size() - (isOfGroup ? 1 : 0)); }
};

// A line of sysORTable, which says what an agent that serves all of this can do.
struct Capability {
    Oid oid;
    const char *text;
};

class Catalogue
{
  public:
    struct Contents {
        struct Tree {
            const MibTreeNode *root;
            Oid parent; // of the root; empty when there is none
        };
        std::vector<Tree> trees = {}; // of a node that several describe, the first one's description counts
        // Which answer for what is described. What several of them have is one table of all; of an instance that
        // several have, the first one's value counts.
        std::vector<Source *> sources = {};
        std::vector<std::string_view> superior = {}; // the names of tables that are
        // Tables of which the first source's rows count only where the index begins with this number, or has no others:
        // other sources have the rest as it is, and it need not be asked for that.
        struct Rest {
            std::string_view table;
            SubId number;
        };
        std::vector<Rest> rests = {};
        // Tables of rows that the platform follows, by kinds: IPMIB_FOLLOW_x.
        struct Followed {
            std::string_view table;
            std::uint32_t rows;
        };
        std::vector<Followed> followed = {};
        // Nodes whose scalars are served under the node's name, but for those of the first source.
        std::vector<std::string_view> groups = {};
        std::vector<Capability> capabilities = {};
        const IpmibPlatformHooks *platform = nullptr; // may be null
    };

    // All that the contents point to must outlive the catalogue.
    explicit Catalogue(Contents contents);
    ~Catalogue();
    Catalogue(const Catalogue &) = delete;
    Catalogue &operator=(const Catalogue &) = delete;

    // In the order of identifiers.
    const std::vector<Object> &objects() const { return objects_; }
    // Null when there is none.
    const Object *named(std::string_view name) const;
    const Object *find(OidView oid) const;
    // The object with the longest identifier that this one begins with.
    const Object *deepest(OidView oid) const;

    // In the order of identifiers.
    const std::vector<ServedTable> &tables() const { return tables_; }
    // The table that the identifier lies below the root of; null when there is none.
    const ServedTable *tableOf(OidView oid) const;

    const std::vector<Capability> &capabilities() const { return contents_.capabilities; }
    const IpmibPlatformHooks *platform() const { return contents_.platform; }

    // From now on all tables are those of this instance of the platform; the sources are told.
    void select(std::size_t instance);
    // That instance has ended.
    void forget(std::size_t instance);
    // A packet of requests begins; the platform and all sources are told.
    void beginPacket();

  private:
    void describe(const MibTreeNode &node, Oid oid);
    void findServed();
    void addTable(const Object &above, const Object &object);
    Source *sourceOf(const ServedTable &table);
    void nameByGroup(ServedTable &scalar) const;

    Contents contents_;
    std::vector<Object> objects_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    std::vector<ServedTable> tables_;
    std::vector<std::unique_ptr<Source>> made_; // of the sources
};

// How many names they go by.
std::size_t countNames(const std::vector<const ServedTable *> &tables);

// "1.3.6"
std::string textOf(OidView identifier);

} // namespace ipmib::host
