// SPDX-License-Identifier: BSD-3-Clause
// ipDefaultRouterTable: the default routers of the IPv6 stack, those with global addresses before the link-local ones.
#include "addr/address.h"
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"

#include <ipmib/platform.h>

#include <cstddef>

namespace ipmib
{

namespace
{

struct DefaultRouterRow {
    std::uint32_t if_index;
    std::uint32_t address_type;
    std::uint8_t address[addressSize];
    IpmibBe32 zone;
    std::uint32_t address_length;
    std::uint32_t lifetime; // seconds
    std::int32_t preference;
};

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(DefaultRouterRow, address_type)), // ipDefaultRouterAddressType
    octetsOf(offsetof(DefaultRouterRow, address), offsetof(DefaultRouterRow, address_length)), // ipDefaultRouterAddress
    number(VT_INTEGER, offsetof(DefaultRouterRow, if_index)),                                  // ipDefaultRouterIfIndex
    number(VT_UNSIGNED32, offsetof(DefaultRouterRow, lifetime)), // ipDefaultRouterLifetime
    number(VT_INTEGER, offsetof(DefaultRouterRow, preference)),  // ipDefaultRouterPreference
};
constexpr Table ipDefaultRouter = describedTable<tableIpDefaultRouter, columns>;

constexpr std::uint32_t defaultVrf = 0;
constexpr std::uint32_t globalClass = 14;
constexpr std::uint32_t linkLocalClass = 2;

// Router preference by the two bits of an advertisement: medium, high, reserved, low.
std::int32_t preferenceOf(const GatewayRecord &gateway)
{
    constexpr std::int32_t byBits[] = {0, 1, -2, -1};
    return byBits[(ipmib_be32_get(gateway.flags) >> 27) & 3];
}

// What is left of the lifetime, and 1 when it has run out: a router that is still listed is never reported with 0.
std::uint32_t remainingLifetime(const GatewayRecord &gateway)
{
    std::uint32_t now = 0;
    std::uint32_t unused = 0;
    TIME_GetSystemBootTime(&now, &unused);
    const std::uint32_t elapsed = now - ipmib_be32_get(gateway.learned_at_s);
    const std::uint32_t lifetime = ipmib_be32_get(gateway.lifetime_s);
    return elapsed < lifetime ? lifetime - elapsed : 1;
}

void ip_DefaultRouter_GatewayToRow(const GatewayRecord &gateway, DefaultRouterRow *row)
{
    row->if_index = ipmib_be32_get(gateway.if_index);
    setAddress(row, gateway.address, row->if_index);
    row->preference = preferenceOf(gateway);
    row->lifetime = remainingLifetime(gateway);
}

// A request's index.
struct RouterIndex : CountedIndex {
    std::uint32_t type = 0;
    AddressKey key;
    std::uint32_t octet_length = 0;
    std::uint32_t if_index = 0;

    static constexpr std::uint32_t allParts = 3;

    explicit RouterIndex(MorRequest *request)
    {
        type = count(readIndexPartUnlessEmpty(request, ipDefaultRouter.parameterId(0)));
        if (MorPara *const address = MOR_GetParaFromMsgByMOR(request, 0, ipDefaultRouter.parameterId(1))) {
            octet_length = MOR_GetParaLen(address);
            if (key.replaceMisfit(type, octet_length) == AddressKey::Fit::exact) {
                key.copyFromOrDigit(address);
            }
            ++parts;
        }
        if_index = count(readIndexPartUnlessEmpty(request, ipDefaultRouter.parameterId(2)));
    }

    GatewayKey gatewayKey() const
    {
        GatewayKey result{};
        result.if_index = ipmib_be32(if_index);
        std::memcpy(result.address, key.bytes, addressSize);
        return result;
    }
};

// Whether the index can name a row: an address stands under the type, length and zone that rows have.
bool canName(const RouterIndex &index)
{
    if (index.parts < RouterIndex::allParts) {
        return false;
    }
    switch (index.type) {
    case typeIpv6:
        return index.octet_length == addressSize && !isLinkLocal(index.key.bytes);
    case typeIpv6z:
        return index.octet_length == zonedSize && isLinkLocal(index.key.bytes) && index.key.zone() == index.if_index;
    default:
        return true; // the platform decides
    }
}

std::uint32_t getGateway(const RouterIndex &index, GatewayRecord *gateway)
{
    const GatewayKey key = index.gatewayKey();
    return canName(index) ? IP6Mib_GetGatewayByKey(&key, gateway) : RC_NOT_FOUND;
}

bool findFirst(std::uint32_t gatewayClass, GatewayRecord *gateway)
{
    *gateway = {};
    return IP6Mib_GetFirstGatewayInVrf(defaultVrf, gatewayClass, gateway) == 0;
}

std::uint32_t getFirstGateway(GatewayRecord *gateway)
{
    return findFirst(globalClass, gateway) || findFirst(linkLocalClass, gateway) ? 0 : RC_NO_MORE;
}

bool findNext(std::uint32_t gatewayClass, const GatewayKey &key, GatewayRecord *gateway)
{
    *gateway = {};
    return IP6Mib_GetNextGatewayInVrf(defaultVrf, gatewayClass, &key, gateway) == 0;
}

// The same router address on the key's interface, when the key's zone lies before that interface.
bool findInLaterZone(const RouterIndex &index, const GatewayKey &key, GatewayRecord *gateway)
{
    *gateway = {};
    return IP6ADDR_DRVK_GetGatewayByKey(&key, gateway) == 0 && (ipmib_be32_get(gateway->lead) >> 16) == 0 &&
           index.key.zone() < index.if_index;
}

std::uint32_t getNextGateway(const RouterIndex &index, GatewayRecord *gateway)
{
    const GatewayKey start{};
    const GatewayKey key = index.gatewayKey();
    bool found = false;
    switch (index.type) {
    case 0:
    case typeIpv4:
        found = findNext(globalClass, start, gateway) || findNext(linkLocalClass, start, gateway);
        break;
    case typeIpv6:
        found = findNext(globalClass, key, gateway) || findNext(linkLocalClass, start, gateway);
        break;
    case typeIpv4z:
        found = findNext(linkLocalClass, start, gateway);
        break;
    case typeIpv6z:
        found = findInLaterZone(index, key, gateway) || findNext(linkLocalClass, key, gateway);
        break;
    default:
        break;
    }
    return found ? 0 : RC_NOT_FOUND;
}

// This table's own walk. It does not stop at a foreign parameter: it answers all the others, and an index column behind
// the foreign one makes it forgotten. The error's position is the number of parameters.
std::uint32_t walkToTheEnd(const DefaultRouterRow &row, MorRequest *request, MorReply *reply)
{
    std::uint32_t pending = 0;
    Parameters parameters(request);
    for (; parameters; parameters.next()) {
        const std::uint32_t place = ipDefaultRouter.placeOf(parameters.id());
        if (place >= ipDefaultRouter.columnCount) {
            pending = ERR_BAD_PARAM;
        } else if (place < ipDefaultRouter.indexCount) {
            pending = 0;
        } else {
            appendColumn(ipDefaultRouter, place, &row, reply);
        }
    }
    return pending == 0 ? 0 : refuse(reply, pending, parameters.position());
}

} // namespace

std::uint32_t ip_DefaultRouter_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const RouterIndex index(request);
    GatewayRecord gateway{};
    const std::uint32_t result = operation == OP_GET ? getGateway(index, &gateway)
                                 : index.parts == 0  ? getFirstGateway(&gateway)
                                                     : getNextGateway(index, &gateway);
    if (result != 0) {
        return refuse(reply, lookupError(operation, result));
    }
    DefaultRouterRow row{};
    ip_DefaultRouter_GatewayToRow(gateway, &row);
    if (operation != OP_GET) {
        appendIndex(ipDefaultRouter, &row, reply);
    }
    return walkToTheEnd(row, request, reply);
}

} // namespace ipmib
