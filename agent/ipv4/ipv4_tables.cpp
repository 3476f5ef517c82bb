// SPDX-License-Identifier: BSD-3-Clause
// The older IPv4 tables (ipAddrTable, ipNetToMediaTable) of an agent that has nobody beside it to serve them.

#include "ipv4/ipv4_tables.h"

#include "ipv4/address_rows.h"
#include "ipv4/neighbour_rows.h"
#include "row_table.h"

#include <stdexcept>

namespace ipmib::agent
{

namespace
{

constexpr host::SubId ipAddrEntry[] = {1, 3, 6, 1, 2, 1, 4, 20, 1};
constexpr host::SubId ipNetToMediaEntry[] = {1, 3, 6, 1, 2, 1, 4, 22, 1};

} // namespace

class Ipv4Tables::Served
{
  public:
    explicit Served(const IpmibPlatformHooks &platform)
        : addresses_(platform, "ipAddrTable", ipAddrEntry, AddressRows(*platform.ipv4)),
          neighbours_(platform, "ipNetToMediaTable", ipNetToMediaEntry, NeighbourRows(*platform.ipv4))
    {
    }

  private:
    RowTable<AddressRows> addresses_;
    RowTable<NeighbourRows> neighbours_;
};

Ipv4Tables::Ipv4Tables(const IpmibPlatformHooks *platform)
{
    if (platform == nullptr || platform->ipv4 == nullptr) {
        return;
    }
    char error[256] = "";
    if (platform->ipv4->follow(error, sizeof error) != 0) {
        throw std::runtime_error(error);
    }
    served_ = std::make_unique<Served>(*platform);
}

Ipv4Tables::~Ipv4Tables() = default;

} // namespace ipmib::agent
