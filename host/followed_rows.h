// SPDX-License-Identifier: BSD-3-Clause
// A table of rows that the platform follows while they change: tells when a question for them had better wait until the
// platform has caught up with the changes.
#pragma once

#include "source.h"

#include <ipmib/platform_hooks.h>

namespace ipmib::host
{

class FollowedRows final : public Source
{
  public:
    using AreCurrent = decltype(IpmibPlatformHooks::are_current);
    // Rows of these kinds, IPMIB_FOLLOW_x. The source outlives this one, and is told of packets by whoever owns it.
    FollowedRows(Source &source, AreCurrent areCurrent, std::uint32_t rows)
        : source_(source), areCurrent_(areCurrent), rows_(rows)
    {
    }

    std::vector<Oid> objects() const override { return source_.objects(); }
    void start() override { source_.start(); }
    bool areRead() const override { return areCurrent_(rows_) != 0 && source_.areRead(); }
    void get(std::span<Variable> variables) override { source_.get(variables); }
    void getNext(std::span<Variable> variables, OidView region) override { source_.getNext(variables, region); }
    bool lowestBehind(OidView asked, Oid &lowest) override { return source_.lowestBehind(asked, lowest); }

  private:
    Source &source_;
    AreCurrent areCurrent_;
    std::uint32_t rows_;
};

} // namespace ipmib::host
