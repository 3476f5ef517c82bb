// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefix, the pointer that prefix lengths of addresses are read from.
#include "index_key.h"
#include "rules.h"

namespace ipmib::agentcheck
{
namespace
{

const Name nowhere{0, 0};

struct Address {
    std::uint32_t type;
    std::vector<std::uint8_t> octets;
    std::uint32_t ifIndex;
};

// Of the row that the pointer stands in; empty while the row is not as it should be, which other rules tell.
std::optional<Address> addressOf(Check &check, const host::Object &column, const Name &name)
{
    const host::OidView instance = instanceOf(name, column);
    const auto key = readIndex(*column.node, instance);
    const auto ifIndex = check.now(extended(nameOf(check.objects.named("ipAddressIfIndex")), instance));
    if (!key || !ifIndex) {
        return std::nullopt;
    }
    const auto octets = key->octets("ipAddressAddr");
    const std::uint32_t type = key->number("ipAddressAddrType");
    if (lengthOf(type) != octets.size() || octets.empty()) {
        return std::nullopt;
    }
    return Address{type, {octets.begin(), octets.end()}, static_cast<std::uint32_t>(ifIndex->number)};
}

// Whether the row of the prefix table, which may have a zone or not, is of this address.
bool holds(const IndexKey &prefix, const Address &address)
{
    const auto octets = prefix.octets("ipAddressPrefixPrefix");
    const bool isIpv6 = address.octets.size() >= 16;
    const std::size_t size = isIpv6 ? 16 : 4;
    const std::size_t length = prefix.number("ipAddressPrefixLength");
    return prefix.number("ipAddressPrefixIfIndex") == address.ifIndex && (octets.size() >= 16) == isIpv6 &&
           octets.size() >= size && length <= size * 8 && isSameInBits(octets, address.octets, length);
}

// At a point-to-point link the prefix of an address may be the one address of the other end.
bool isPeer(Check &check, const IndexKey &prefix, const Address &address)
{
    const auto octets = prefix.octets("ipAddressPrefixPrefix");
    if (prefix.number("ipAddressPrefixIfIndex") != address.ifIndex || octets.size() != address.octets.size() ||
        prefix.number("ipAddressPrefixLength") != octets.size() * 8) {
        return false;
    }
    std::vector<host::SubId> own = {address.type, static_cast<host::SubId>(octets.size())};
    own.insert(own.end(), octets.begin(), octets.end());
    return !check.now(extended(nameOf(check.objects.named("ipAddressIfIndex")), own));
}

std::optional<Fault> faultOfTarget(Check &check, const Name &target, const Address &address)
{
    const host::Object &first = check.objects.named("ipAddressPrefixOrigin");
    const std::string where = "points at " + check.objects.text(target);
    if (!host::isWithin(target, first.oid.view())) {
        return Fault{Rule::pointer, where};
    }
    if (!check.now(target)) {
        return Fault{Rule::pointer, where + ", which is not there"};
    }
    const auto prefix = readIndex(*first.node, instanceOf(target, first));
    if (!prefix || !(holds(*prefix, address) || isPeer(check, *prefix, address))) {
        return Fault{Rule::pointerRow, where + ", of an address on interface " + std::to_string(address.ifIndex)};
    }
    return std::nullopt;
}

// Of an address without a pointer.
std::optional<Fault> faultOfNone(Check &check, const Address &address)
{
    const host::Object &first = check.objects.named("ipAddressPrefixOrigin");
    for (const auto &[row, value] : check.walked("ipAddressPrefixTable").values) {
        const auto prefix =
            host::isWithin(row, first.oid.view()) ? readIndex(*first.node, instanceOf(row, first)) : std::nullopt;
        if (prefix && holds(*prefix, address) && check.now(row)) {
            return Fault{Rule::pointerMissing, "is 0.0, and there is " + check.objects.text(row)};
        }
    }
    return std::nullopt;
}

void checkPointer(Check &check, const host::Object &column, const Name &name)
{
    doubt(check, name, [=, &check]() -> std::optional<Fault> {
        const auto pointer = check.now(name);
        const auto address = addressOf(check, column, name);
        if (!pointer || pointer->tag != Tag::objectId || !address) {
            return std::nullopt;
        }
        return pointer->objectId == nowhere ? faultOfNone(check, *address)
                                            : faultOfTarget(check, pointer->objectId, *address);
    });
}

} // namespace

void checkPointers(Check &check)
{
    const host::Object &pointers = check.objects.named("ipAddressPrefix");
    for (const auto &[name, value] : check.walked("ipAddressTable").values) {
        if (host::isWithin(name, pointers.oid.view())) {
            checkPointer(check, pointers, name);
        }
    }
}

} // namespace ipmib::agentcheck
