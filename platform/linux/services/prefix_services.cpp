// SPDX-License-Identifier: BSD-3-Clause
// IPv6 prefixes of interfaces. Not followed yet: there are none.
#include "services/service.h"

using namespace ipmib::platform;

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t, int32_t, FullPrefixRecord *)
{
    return noMore;
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t, int32_t, FullPrefixRecord *)
{
    return noMore;
}
