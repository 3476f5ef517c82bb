// SPDX-License-Identifier: BSD-3-Clause
// A message to the kernel's packet filter, whose attributes are put one behind the other. Numbers are in network order.
#pragma once

#include <libmnl/libmnl.h>

#include <endian.h>

#include <cstddef>
#include <cstdint>

namespace ipmib::platform
{

class NftMessage
{
  public:
    explicit NftMessage(nlmsghdr *header) : header_(header) {}

    void put(std::uint16_t attribute, std::uint32_t number) { mnl_attr_put_u32(header_, attribute, htobe32(number)); }
    void put(std::uint16_t attribute, const char *text) { mnl_attr_put_strz(header_, attribute, text); }
    void put(std::uint16_t attribute, const void *octets, std::size_t size)
    {
        mnl_attr_put(header_, attribute, size, octets);
    }
    // An attribute of those that `fill` puts.
    template <class Fill>
    void nest(std::uint16_t attribute, Fill fill)
    {
        nlattr *const begun = mnl_attr_nest_start(header_, attribute);
        fill();
        mnl_attr_nest_end(header_, begun);
    }

  private:
    nlmsghdr *header_;
};

} // namespace ipmib::platform
