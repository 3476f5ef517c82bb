// SPDX-License-Identifier: BSD-3-Clause
// ifRcvAddressTable: the link-layer addresses for which an interface takes frames.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ifRcvAddressEntry[] = {1, 3, 6, 1, 2, 1, 31, 1, 4, 1};

constexpr std::size_t longest = sizeof(IpmibReceiveAddress::address);
constexpr std::size_t octetsPlace = 2; // behind the interface and the length

constexpr std::array<host::SubIdRange, octetsPlace + longest> receiveAddressShape()
{
    std::array<host::SubIdRange, octetsPlace + longest> shape;
    shape.fill(host::anyOctet);
    shape[0] = host::anyIfIndex;
    shape[1] = host::lengthUpTo(longest);
    return shape;
}

class ReceiveAddressRows
{
  public:
    using Row = IpmibReceiveAddress;
    using Index = std::array<host::SubId, octetsPlace + longest>;
    static constexpr Index::size_type places = octetsPlace + longest;
    static constexpr std::array<host::SubIdRange, places> shape = receiveAddressShape();

    explicit ReceiveAddressRows(const IpmibIpHooks &ip) : ip_(ip) {}

    void start() const { follow(ip_, IPMIB_FOLLOW_RECEIVE_ADDRESSES); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        const Octets octets = octetsAt(index);
        return ip_.find_receive_address(index[0], octets.data(), index[1], &row) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        const Octets octets = octetsAt(index);
        return ip_.next_receive_address(index[0], octets.data(), index[1], &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        Index index{row.if_index, row.size};
        std::copy_n(row.address, std::min<std::size_t>(row.size, longest), index.begin() + octetsPlace);
        return index;
    }

  private:
    using Octets = std::array<std::uint8_t, longest>;

    static Octets octetsAt(const Index &index)
    {
        Octets octets;
        std::ranges::transform(index.begin() + octetsPlace, index.end(), octets.begin(),
                               [](host::SubId id) { return static_cast<std::uint8_t>(id); });
        return octets;
    }

    static constexpr host::RowColumn<Row> list[] = {
        {2, [](const Row &) { return integer(rowActive); }},   // ifRcvAddressStatus
        {3, [](const Row &row) { return integer(row.type); }}, // ifRcvAddressType
    };

    const IpmibIpHooks &ip_;
};

} // namespace

SourcePointer ifRcvAddressTable(const IpmibIpHooks &ip)
{
    if (ip.find_receive_address == nullptr || ip.next_receive_address == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<ReceiveAddressRows>>(ifRcvAddressEntry, ReceiveAddressRows(ip));
}

} // namespace ipmib::tables
