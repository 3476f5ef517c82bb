// SPDX-License-Identifier: BSD-3-Clause
// What a simulated device says at this moment of its routes: each function is the one of IpmibRouteHooks that its name
// says. Those by way of an interface that is gone, or is not running, are gone as well.
#pragma once

#include "device/device.h"

#include <ipmib/platform_routes.h>

#include <string>

namespace ipmib::simulated
{

class RouteRows
{
  public:
    explicit RouteRows(Device &device) : device_(device) {}

    // Nobody has to follow what does not change by itself.
    std::string follow() { return ""; }
    std::uint32_t areRead() const { return 1; }
    void limit(std::uint64_t rows)
    {
        limit_ = rows;
        newDevice();
    }
    // The scenario has been read.
    void newDevice();

    std::uint64_t count(std::uint32_t version) const;
    std::uint64_t discards() const { return device_.routes.thrownAway(); }
    bool find(const IpmibRouteKey &key, IpmibRoute &row) const;
    bool next(const IpmibRouteKey &key, IpmibRoute &row) const;
    bool match(std::uint32_t version, const std::uint8_t *address, IpmibRoute &row) const;

  private:
    bool isThere(std::uint32_t version, std::uint32_t ifIndex) const;
    bool isThere(Routes::Place place) const;
    bool fillRow(Routes::Place place, IpmibRoute &row) const;

    Device &device_;
    std::uint64_t limit_ = UINT64_MAX;
};

} // namespace ipmib::simulated
