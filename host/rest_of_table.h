// SPDX-License-Identifier: BSD-3-Clause
// A source's table without its first rows: those whose index begins with a number below some other.
#pragma once

#include "source.h"

#include <vector>

namespace ipmib::host
{

class RestOfTable final : public Source
{
  public:
    // The table's entry; rows count when the first part of their index is no less than `from`. Of its index there is
    // more than this part. The source outlives this one, and is told of packets by whoever owns it.
    RestOfTable(Source &source, OidView entry, SubId from) : source_(source), entry_(entry), from_(from) {}

    std::vector<Oid> objects() const override;
    void start() override { source_.start(); }
    void get(std::span<Variable> variables) override;
    void getNext(std::span<Variable> variables, OidView region) override;

  private:
    bool isLeftOut(OidView instance) const;
    // What to ask for in place of an identifier in front of, or among, the rows that are left out.
    Oid behindLeftOut(OidView asked) const;

    Source &source_;
    Oid entry_;
    SubId from_;
    std::vector<Variable> asked_;
    std::vector<Oid> places_; // that are asked for
};

} // namespace ipmib::host
