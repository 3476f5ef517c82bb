// SPDX-License-Identifier: BSD-3-Clause
// Turns object identifiers into requests to a module, and its replies into typed values.
//
// The resolver owns lexicographic truth: whatever a module answers, a get-next never yields an identifier that is not
// greater than the one asked, never loops, and never skips a row that the module can give.
#pragma once

#include "source.h"

#include <ipmib/message.h>
#include <ipmib/mib_tree.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ipmib::host
{

class Resolver : public Source
{
  public:
    using Log = void (*)(int priority, const char *line); // priorities as in syslog

    // Serves the tree rooted here by asking this callback. The tree must stay valid as long as the resolver.
    Resolver(const MibTreeNode &root, MorCallback callback, Log log);
    ~Resolver() override;

    // A part of the tree that the module serves: the entry of a table, or a scalar.
    struct Region {
        Oid root;
        const MibTreeNode *node;
    };
    // All regions, ascending.
    const std::vector<Region> &regions() const;

    std::vector<Oid> objects() const override;
    void select(std::size_t instance) override;
    void forget(std::size_t instance) override;
    // Columns of one row share one request to the module, and so one snapshot.
    void get(std::span<Variable> variables) override;
    bool lowestBehind(OidView asked, Oid &lowest) override;
    void getNext(std::span<Variable> variables, OidView region) override;

    // How many requests the module has been sent, for measurements.
    std::uint64_t requestCount() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::host
