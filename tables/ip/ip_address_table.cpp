// SPDX-License-Identifier: BSD-3-Clause
// ipAddressTable: the rows of IPv4.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipAddressEntry[] = {1, 3, 6, 1, 2, 1, 4, 34, 1};

class IpAddressRows
{
  public:
    struct Row {
        IpmibIpAddress platform;
        std::array<host::SubId, 18> prefix; // the first column of its row in ipAddressPrefixTable
    };
    using Index = std::array<host::SubId, 6>;
    static constexpr host::SubIdRange shape[] = {ofIpv4,         ofIpv4Length,   host::anyOctet,
                                                 host::anyOctet, host::anyOctet, host::anyOctet};

    explicit IpAddressRows(const IpmibIpHooks &ip) : ip_(ip) {}

    void start() const { follow(ip_, IPMIB_FOLLOW_ADDRESSES); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return ip_.find_address(addressAt(index, 2), &row.platform) == 0 && addOctets(row);
    }
    bool next(const Index *behind, Row &row) const
    {
        return ip_.next_address(behind == nullptr ? 0 : addressAt(*behind, 2), &row.platform) == 0 && addOctets(row);
    }
    Index indexOf(const Row &row) const
    {
        const Ipv4Octets address = octetsOf(row.platform.address);
        return {ipv4Type, ipv4Length, address[0], address[1], address[2], address[3]};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {3, [](const Row &row) { return integer(row.platform.if_index); }}, // ipAddressIfIndex
        {4, [](const Row &row) { return integer(row.platform.type); }},     // ipAddressType
        {5, [](const Row &row) { return objectId(row.prefix); }},           // ipAddressPrefix
        {6, [](const Row &row) { return integer(row.platform.origin); }},   // ipAddressOrigin
        {7, [](const Row &row) { return integer(row.platform.status); }},   // ipAddressStatus
        {8, [](const Row &row) { return ticks(row.platform.created); }},    // ipAddressCreated
        {9, [](const Row &row) { return ticks(row.platform.changed); }},    // ipAddressLastChanged
        {10, [](const Row &) { return integer(rowActive); }},               // ipAddressRowStatus
        {11, [](const Row &) { return integer(storageVolatile); }},         // ipAddressStorageType
    };

    static bool addOctets(Row &row)
    {
        const Ipv4Octets prefix = octetsOf(row.platform.prefix);
        row.prefix = {1,
                      3,
                      6,
                      1,
                      2,
                      1,
                      4,
                      32,
                      1,
                      5,
                      row.platform.if_index,
                      ipv4Type,
                      ipv4Length,
                      prefix[0],
                      prefix[1],
                      prefix[2],
                      prefix[3],
                      row.platform.prefix_length};
        return true;
    }

    const IpmibIpHooks &ip_;
};

} // namespace

SourcePointer ipAddressTable(const IpmibIpHooks &ip)
{
    if (ip.find_address == nullptr || ip.next_address == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<IpAddressRows>>(ipAddressEntry, IpAddressRows(ip));
}

} // namespace ipmib::tables
