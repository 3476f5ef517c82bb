// SPDX-License-Identifier: BSD-3-Clause
// The system calls themselves: a library for them would be one more to install.
#include "support/capabilities.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ipmib::support
{
namespace
{

struct Sets {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct half[_LINUX_CAPABILITY_U32S_3]{};
};

} // namespace

std::uint64_t heldCapabilities()
{
    Sets sets;
    if (syscall(SYS_capget, &sets.header, sets.half) != 0) {
        return 0;
    }
    return std::uint64_t{sets.half[1].permitted} << 32 | sets.half[0].permitted;
}

bool keepCapabilities(std::uint64_t wanted)
{
    const std::uint64_t kept = heldCapabilities() & wanted;
    for (int each = 0; each <= CAP_LAST_CAP; ++each) {
        if ((wanted & capability(each)) == 0) {
            prctl(PR_CAPBSET_DROP, each, 0, 0, 0); // which takes a right of its own
            prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_LOWER, each, 0, 0);
        }
    }
    Sets sets;
    for (int i = 0; i < _LINUX_CAPABILITY_U32S_3; ++i) {
        const auto half = static_cast<std::uint32_t>(kept >> 32 * i);
        sets.half[i].permitted = sets.half[i].effective = half;
    }
    return syscall(SYS_capset, &sets.header, sets.half) == 0;
}

} // namespace ipmib::support
