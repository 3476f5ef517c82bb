// SPDX-License-Identifier: BSD-3-Clause
// Of a source's table the rows whose index begins with one number, such as a version of IP.
#pragma once

#include "source.h"

#include <vector>

namespace ipmib::host
{

class RestOfTable final : public Source
{
  public:
    // The table's entry; rows count when the first part of their index is this number, which is not 0. `isWholeIndex`:
    // there is no other part. The source outlives this one, and is told of packets by whoever owns it.
    RestOfTable(Source &source, OidView entry, SubId number, bool isWholeIndex)
        : source_(source), entry_(entry), number_(number), isWholeIndex_(isWholeIndex)
    {
    }

    std::vector<Oid> objects() const override;
    void start() override { source_.start(); }
    void get(std::span<Variable> variables) override;
    void getNext(std::span<Variable> variables, OidView region) override;
    bool lowestBehind(OidView asked, Oid &lowest) override;

  private:
    bool isOfColumn(OidView name) const { return name.size() > entry_.size() && isWithin(name, entry_.view()); }
    bool isLeftOut(OidView name) const;
    Oid inFrontOfRows(SubId column) const;
    // What to ask for in place of an identifier in front of, or among, the rows that are left out.
    Oid behindLeftOut(OidView asked) const;

    Source &source_;
    Oid entry_;
    SubId number_;
    bool isWholeIndex_;
    std::vector<Variable> asked_;
    std::vector<Oid> places_; // that are asked for
};

} // namespace ipmib::host
