// SPDX-License-Identifier: BSD-3-Clause
// The default routers: the gateways of the default routes, one row for each gateway and interface.
#pragma once

#include "routes/nexthop_table.h"
#include "routes/route_table.h"

#include <vector>

namespace ipmib::platform
{

struct Router {
    PackedAddress address;
    std::uint32_t ifIndex;
    std::uint32_t metric;
    std::uint8_t preference; // as in an advertisement: 0 medium, 1 high, 3 low
    Deadline until;          // never: configured
};

class RouterList
{
  public:
    enum class Class { global, linkLocal };

    void rebuild(const DefaultRoutes &routes, const NexthopTable &nexthops);
    // Whether an advertisement is behind one of the routes.
    bool hasLearned() const { return hasLearned_; }

    // Ascending by address and then by interface. Null for none.
    const Router *first(Class of) const;
    const Router *after(Class of, const PackedAddress &address, std::uint32_t ifIndex) const;
    const Router *find(const PackedAddress &address, std::uint32_t ifIndex) const;

  private:
    std::vector<Router> rows_;
    bool hasLearned_ = false;
};

} // namespace ipmib::platform
