// SPDX-License-Identifier: BSD-3-Clause
// The nexthops of a multipath route: each a header with attributes behind it.
#pragma once

#include "core/attributes.h"

#include <linux/rtnetlink.h>

namespace ipmib::platform
{

// Calls visit(header, attributes) for each one, up to the first that is cut off.
template <class Visit>
void eachNexthop(const nlattr &multipath, Visit visit)
{
    const auto *at = static_cast<const std::uint8_t *>(mnl_attr_get_payload(&multipath));
    std::size_t left = mnl_attr_get_payload_len(&multipath);
    while (left >= sizeof(rtnexthop)) {
        rtnexthop header;
        std::memcpy(&header, at, sizeof header);
        if (header.rtnh_len < sizeof header || header.rtnh_len > left) {
            return;
        }
        visit(header, Attributes<RTA_MAX>(at + sizeof header, header.rtnh_len - sizeof header));
        const std::size_t step = RTNH_ALIGN(header.rtnh_len);
        if (step > left) {
            return;
        }
        at += step;
        left -= step;
    }
}

} // namespace ipmib::platform
