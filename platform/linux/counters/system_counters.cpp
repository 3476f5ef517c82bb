// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 and ICMPv6 counters of this network namespace, read once for a packet of requests.
#include "counters/system_counters.h"

namespace ipmib::platform
{

const SystemCounters::Values *SystemCounters::read()
{
    if (!fresh_) {
        static char text[64 * 1024]; // 512 message types at most, of some 40 characters each
        const std::string_view content = file_.read(text, sizeof text);
        if (content.empty()) {
            return nullptr;
        }
        ++kernelReads_;
        parseSnmp6(content, values_.ip6, values_.icmp6);
        fresh_ = true;
    }
    return &values_;
}

} // namespace ipmib::platform
