// SPDX-License-Identifier: BSD-3-Clause
// The module's requests, through its callback and through the exported families, over a platform that answers anything.
#include "fuzzed_message.h"
#include "fuzzed_platform.h"

#include <ipmib/module.h>

using namespace ipmib::fuzz;

namespace
{

bool isKnownError(std::uint32_t code)
{
    static constexpr std::uint32_t known[] = {ERR_TABLE_UNKNOWN, ERR_READ_ONLY,   ERR_END_OF_TABLE,
                                              ERR_BAD_PARAM,     ERR_NO_INSTANCE, ERR_NEXT_FAILED};
    return std::find(std::begin(known), std::end(known), code) != std::end(known);
}

using Family = std::uint32_t (*)(std::uint32_t operation, MorRequest *request, MorReply *reply);

std::uint32_t throughCallback(std::uint32_t, MorRequest *request, MorReply *reply)
{
    return IP_ConfigCallBack(request, reply);
}

void ask(Bytes &bytes, Family family, std::uint32_t table)
{
    MorRequest request = MorRequest::read(bytes);
    if (table != 0) {
        request.table = table;
    }
    MorReply reply(request);
    const std::uint32_t result = family(request.operation, &request, &reply);
    require(result == 0 || isKnownError(result), "a request is answered with 0 or an error of the message layer");
    require(reply.error == 0 || isKnownError(reply.error), "the error set is one of the message layer");
}

// The lookups, over a row that is as long as they may think it is and no longer.
template <typename Row, typename... Arguments, typename... Values>
void lookUp(std::uint32_t (*lookup)(Arguments...), Values... values)
{
    const std::vector<Row> rows(1);
    auto *const row = const_cast<Row *>(rows.data());
    lookup(values..., row);
}

void lookUpIcmp(Bytes &bytes)
{
    const std::uint32_t version = bytes.number();
    const std::uint32_t type = bytes.number();
    lookUp<IcmpStatsRow>(ip_IcmpStats_GetByIndex, version);
    lookUp<IcmpStatsRow>(ip_IcmpStats_GetNextByIndex, version);
    lookUp<IcmpStatsRow>(ip_IcmpStats_GetFirstByIndex);
    lookUp<IcmpMsgStatsRow>(ip_IcmpMsgStats_GetByIndex, version, type);
    lookUp<IcmpMsgStatsRow>(ip_IcmpMsgStats_GetNextByIndex, version, type);
    lookUp<IcmpMsgStatsRow>(ip_IcmpMsgStats_GetFirstByIndex);
    std::uint16_t suffix = 0;
    const bool isServed = ip_IcmpMsgStats_TypeToSuffix(type, &suffix) == 0;
    require(isServed == (version == 2 && ip_IcmpMsgStats_IsExistIndex(version, type) == 0) || version != 2,
            "a type is served exactly when it has a row");
}

void lookUpNeighbour(Bytes &bytes)
{
    const std::uint32_t ifIndex = bytes.number();
    const std::uint32_t type = bytes.number();
    const std::uint32_t length = bytes.number();
    std::vector<std::uint8_t> zoned(20);
    bytes.address(zoned.data());
    zoned[19] = bytes.byte();
    const std::vector<std::uint8_t> plain(zoned.begin(), zoned.begin() + 16);
    const std::vector<std::uint8_t> &exact = type == 4 ? zoned : plain;
    lookUp<IpNetToPhysicalRow>(ip_IpNetToPhysical_GetByIndex, ifIndex, type, exact.data(), length);
    lookUp<IpNetToPhysicalRow>(ip_IpNetToPhysical_GetNextByIndex, ifIndex, type, zoned.data());
    lookUp<IpNetToPhysicalRow>(ip_IpNetToPhysical_GetNext, ifIndex, type, plain.data());
    lookUp<IpNetToPhysicalRow>(ip_IpNetToPhysical_GetFirstByIndex);
}

void lookUpRouterAdvert(Bytes &bytes)
{
    const std::uint32_t ifIndex = bytes.number();
    lookUp<Ipv6RouterAdvertRow>(ip_Ipv6RouterAdvert_GetByIndex, ifIndex);
    lookUp<Ipv6RouterAdvertRow>(ip_Ipv6RouterAdvert_GetNextByIndex, ifIndex);
}

struct NamedFamily {
    Family family;
    std::uint32_t table; // as the parameter ids have it; 0: the request's own
};
constexpr NamedFamily families[] = {
    {throughCallback, 0},        {ip_IcmpStats_Proc, 10},       {ip_IcmpStats_Get, 10},
    {ip_IcmpMsgStats_Proc, 11},  {ip_IcmpMsgStats_Get, 11},     {ip_IpNetToPhysical_Proc, 7},
    {ip_IpNetToPhysical_Get, 7}, {ip_Ipv6RouterAdvert_Proc, 9}, {ip_Ipv6RouterAdvert_Get, 9},
};

void doOne(Bytes &bytes)
{
    constexpr std::uint8_t firstOther = 0xC0; // below it, what an agent does
    const std::uint8_t choice = bytes.byte();
    if (choice < firstOther) {
        ask(bytes, throughCallback, 0);
        return;
    }
    switch (choice % 4) {
    case 0: {
        const NamedFamily &named = families[bytes.below(std::size(families))];
        ask(bytes, named.family, named.table);
        break;
    }
    case 1:
        lookUpIcmp(bytes);
        break;
    case 2:
        lookUpNeighbour(bytes);
        break;
    default:
        lookUpRouterAdvert(bytes);
        break;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Bytes bytes({data, size});
    answerFrom(bytes);
    while (!bytes.empty()) {
        doOne(bytes);
        require(openIterators() == 0, "every iterator is closed");
    }
    return 0;
}
