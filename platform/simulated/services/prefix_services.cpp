// SPDX-License-Identifier: BSD-3-Clause
// IPv6 prefixes of interfaces.
#include "services/call.h"

#include <algorithm>

using namespace ipmib::simulated;

namespace
{

// The lifetimes are what is left now, and so they were learned now.
uint32_t fillPrefix(const Device &device, const Prefix *prefix, FullPrefixRecord *record)
{
    if (prefix == nullptr) {
        return noMore;
    }
    *record = FullPrefixRecord{};
    record->if_index = ipmib_be32(prefix->ifIndex);
    prefix->prefix.copyTo(record->prefix);
    record->length = ipmib_be32(prefix->length);
    record->origin = ipmib_be32(prefix->origin);
    record->valid_s = ipmib_be32(prefix->valid.left(device.elapsedS()));
    record->preferred_s = ipmib_be32(prefix->preferred.left(device.elapsedS()));
    record->flags = prefix->flags;
    record->learned_at_s = ipmib_be32(device.secondsSinceBoot());
    return success;
}

} // namespace

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t, FullPrefixRecord *record)
{
    const Call call(Service::IP6CFG_GetFirstFullPrefix, if_index);
    return call ? fillPrefix(call.device(), call.device().firstPrefix(if_index), record) : call.result();
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t, FullPrefixRecord *record)
{
    const Call call(Service::IP6CFG_GetNextFullPrefix, if_index);
    if (!call) {
        return call.result();
    }
    const uint32_t length = std::min(ipmib_be32_get(record->length), ipmib::platform::beyondEveryLength);
    const PrefixKey key{if_index, PackedAddress::of(record->prefix), static_cast<uint8_t>(length)};
    return fillPrefix(call.device(), call.device().prefixAfter(key), record);
}
