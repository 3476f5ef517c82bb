// SPDX-License-Identifier: BSD-3-Clause
// IPv6 prefixes of interfaces.
#include "services/service.h"

#include <algorithm>

using namespace ipmib::platform;

namespace
{

uint32_t originCode(PrefixOrigin origin)
{
    switch (origin) {
    case PrefixOrigin::manual:
        return prefixOriginManual;
    case PrefixOrigin::wellKnown:
        return prefixOriginWellKnown;
    case PrefixOrigin::leased:
        return prefixOriginDhcp;
    case PrefixOrigin::advertised:
        return prefixOriginRouter;
    case PrefixOrigin::other:
        break;
    }
    return prefixOriginOther;
}

// The lifetimes are what is left now, and so they were learned now: nothing has passed since then that a reader would
// take off, in particular not from one without an end.
uint32_t fillPrefix(const LinuxPlatform &platform, uint32_t ifIndex, const Prefix *prefix, FullPrefixRecord *record)
{
    if (prefix == nullptr || prefix->ifIndex != ifIndex) {
        return noMore;
    }
    const uint32_t now = platform.now();
    *record = FullPrefixRecord{};
    record->if_index = ipmib_be32(ifIndex);
    prefix->prefix.copyTo(record->prefix);
    record->length = ipmib_be32(prefix->length);
    record->origin = ipmib_be32(originCode(prefix->origin));
    record->valid_s = ipmib_be32(prefix->validUntil.left(now));
    record->preferred_s = ipmib_be32(prefix->preferredUntil.left(now));
    record->flags =
        static_cast<uint8_t>((prefix->onLink ? prefixFlagOnLink : 0) | (prefix->autonomous ? prefixFlagAutonomous : 0));
    record->learned_at_s = ipmib_be32(now);
    return success;
}

} // namespace

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t, FullPrefixRecord *record)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return noMore;
    }
    const PrefixTable &prefixes = platform->addressing().prefixes();
    return fillPrefix(*platform, if_index, prefixes.atOrAfter(PrefixKey{if_index, {}, 0}), record);
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t, FullPrefixRecord *record)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return noMore;
    }
    const auto length = static_cast<uint8_t>(std::min(ipmib_be32_get(record->length), beyondEveryLength));
    const PrefixKey key{if_index, PackedAddress::of(record->prefix), length};
    return fillPrefix(*platform, if_index, platform->addressing().prefixes().after(key), record);
}
