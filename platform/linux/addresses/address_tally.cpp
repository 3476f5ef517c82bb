// SPDX-License-Identifier: BSD-3-Clause
// What the addresses with a prefix say of it, counted.
#include "addresses/address_tally.h"

#include "addresses/address_message.h"

namespace ipmib::platform
{

void AddressTally::count(const Ip6Address &address, int difference)
{
    const PrefixKey prefix = address.prefix();
    switch (originOf(address)) {
    case AddressOrigin::manual:
        count(prefix, Fact::manual, {}, difference);
        break;
    case AddressOrigin::leased:
        count(prefix, Fact::leased, {}, difference);
        break;
    case AddressOrigin::autoconfigured:
    case AddressOrigin::temporary:
        count(prefix, Fact::autoconfigured, {}, difference);
        break;
    case AddressOrigin::unknown:
        break;
    }
    count(prefix, Fact::valid, address.validUntil, difference);
    count(prefix, Fact::preferred, address.preferredUntil, difference);
}

void AddressTally::count(const PrefixKey &prefix, Fact fact, Deadline until, int difference)
{
    Row row{prefix, fact, until, 0};
    if (const Row *known = rows_.find(row)) {
        row.addresses = known->addresses;
    }
    row.addresses += static_cast<std::uint32_t>(difference);
    if (row.addresses == 0) {
        rows_.erase(row);
    } else {
        rows_.put(row);
    }
}

const AddressTally::Row *AddressTally::latest(const PrefixKey &prefix, Fact fact) const
{
    const Row *row = rows_.atOrAfter(Row{prefix, fact, Deadline::never(), 0});
    return row != nullptr && row->prefix == prefix && row->fact == fact ? row : nullptr;
}

AddressTally::Sum AddressTally::of(const PrefixKey &prefix) const
{
    const Row *valid = latest(prefix, Fact::valid);
    if (valid == nullptr) {
        return {};
    }
    const auto isAny = [&](Fact fact) { return latest(prefix, fact) != nullptr; };
    return {.any = true,
            .manual = isAny(Fact::manual),
            .leased = isAny(Fact::leased),
            .autoconfigured = isAny(Fact::autoconfigured),
            .validUntil = valid->until,
            .preferredUntil = latest(prefix, Fact::preferred)->until};
}

} // namespace ipmib::platform
