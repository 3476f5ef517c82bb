// SPDX-License-Identifier: BSD-3-Clause
// Routes that come and go as fast as the kernel takes them: nobody waits for an answer. They lead to gateways on links
// bN, of which there are 256, with the addresses 10.N.0.1/16 and fd00:0:0:N::1/64.
#pragma once

#include "core/rtnetlink.h"

namespace ipmib::bench
{

class RouteChanges
{
  public:
    static constexpr unsigned interfaces = 256;

    bool open() { return socket_.open(); }
    // RTM_NEWROUTE or RTM_DELROUTE. The number of the first route, of the routes, and of different gateways.
    void ipv4(std::uint16_t type, unsigned from, unsigned count, unsigned hops);
    void ipv6(std::uint16_t type, unsigned count, unsigned hops);

  private:
    void change(std::uint16_t type, std::uint8_t family, std::uint8_t length, const void *destination,
                const void *gateway, std::size_t size);

    platform::Rtnetlink socket_;
};

} // namespace ipmib::bench
