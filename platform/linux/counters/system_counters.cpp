// SPDX-License-Identifier: BSD-3-Clause
// The counters of IPv6, of ICMPv6 and of UDP over IPv6 of this network namespace, read once for a packet of requests.
#include "counters/system_counters.h"

#include "core/log.h"

#include <cstring>
#include <utility>

namespace ipmib::platform
{

const Snmp6Counters *SystemCounters::read()
{
    if (!fresh_) {
        static char text[64 * 1024]; // 512 message types at most, of some 40 characters each
        const std::string_view content = file_.read(text, sizeof text);
        if (content.empty()) {
            if (file_.isAbsent()) {
                return nullptr;
            }
            if (!std::exchange(saidUnreadable_, true)) {
                logWarning("ipv6: cannot read the system's counters: %s, trying again with the next request",
                           std::strerror(file_.error() != 0 ? file_.error() : EIO));
            }
            return kernelReads_ != 0 ? &values_ : nullptr;
        }
        saidUnreadable_ = false;
        ++kernelReads_;
        text_.parse(content, values_);
        fresh_ = true;
    }
    return &values_;
}

} // namespace ipmib::platform
