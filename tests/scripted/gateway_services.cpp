// SPDX-License-Identifier: BSD-3-Clause
// Scripted services: default routers. Class 2 holds the link-local ones, class 14 the others.
#include "state.h"

#include <tuple>

using namespace ipmib::scripted;

namespace
{

constexpr std::uint32_t linkLocalClass = 2;

// The order of the list: by address, then by interface.
template <typename Record>
std::tuple<std::array<std::uint8_t, 16>, std::uint32_t> place(const Record &record)
{
    std::array<std::uint8_t, 16> bytes;
    std::memcpy(bytes.data(), record.address, bytes.size());
    return {bytes, ipmib_be32_get(record.if_index)};
}

std::uint32_t classOf(const GatewayRecord &gateway)
{
    return gateway.address[0] == 0xFE && (gateway.address[1] & 0xC0) == 0x80 ? linkLocalClass : 14;
}

std::string keyText(const GatewayKey &key)
{
    return number(ipmib_be32_get(key.if_index)) + " " + addressText(key.address);
}

void expectZeroWord(const char *service, const GatewayKey &key)
{
    if (ipmib_be32_get(key.zero) != 0) {
        complain(std::string(service) + ": the last word of the key is not 0");
    }
}

std::uint32_t answerNext(const char *service, std::uint32_t gatewayClass, const GatewayKey *key, GatewayRecord *record)
{
    expectCleared(service, record, sizeof *record);
    const GatewayRecord *next = nullptr;
    for (const GatewayRecord &candidate : world().gateways) {
        if (classOf(candidate) == gatewayClass && (key == nullptr || place(candidate) > place(*key)) &&
            (next == nullptr || place(candidate) < place(*next))) {
            next = &candidate;
        }
    }
    return answer(service, next, record);
}

std::uint32_t answerExact(const char *service, const GatewayKey &key, GatewayRecord *record)
{
    note([&] { return std::string(service) + "(" + keyText(key) + ")"; });
    expectZeroWord(service, key);
    expectCleared(service, record, sizeof *record);
    const GatewayRecord *found = nullptr;
    for (const GatewayRecord &candidate : world().gateways) {
        if (place(candidate) == place(key)) {
            found = &candidate;
        }
    }
    return answer(service, found, record);
}

} // namespace

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t vrf, uint32_t gateway_class, GatewayRecord *gateway)
{
    note([&] { return "IP6Mib_GetFirstGatewayInVrf(" + number(vrf) + ", " + number(gateway_class) + ")"; });
    return answerNext("IP6Mib_GetFirstGatewayInVrf", gateway_class, nullptr, gateway);
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t vrf, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *gateway)
{
    note([&] {
        return "IP6Mib_GetNextGatewayInVrf(" + number(vrf) + ", " + number(gateway_class) + ", " + keyText(*key) + ")";
    });
    expectZeroWord("IP6Mib_GetNextGatewayInVrf", *key);
    return answerNext("IP6Mib_GetNextGatewayInVrf", gateway_class, key, gateway);
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return answerExact("IP6Mib_GetGatewayByKey", *key, gateway);
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return answerExact("IP6ADDR_DRVK_GetGatewayByKey", *key, gateway);
}
