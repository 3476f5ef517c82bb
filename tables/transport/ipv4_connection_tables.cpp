// SPDX-License-Identifier: BSD-3-Clause
// tcpConnTable and udpTable: what is IPv4 of the connections, listeners and endpoints. Who listens to both versions of
// IP listens to all addresses of this one.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"
#include "tables/transport/connections.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId tcpConnEntry[] = {1, 3, 6, 1, 2, 1, 6, 13, 1};
constexpr host::SubId udpEntry[] = {1, 3, 6, 1, 2, 1, 7, 5, 1};

// An address and a port, which stand in an index behind one another.
struct Ipv4End {
    Ipv4Octets address{};
    std::uint32_t port = 0;

    friend bool operator==(const Ipv4End &, const Ipv4End &) = default;
    friend bool operator<(const Ipv4End &a, const Ipv4End &b)
    {
        const int order = std::memcmp(a.address.data(), b.address.data(), a.address.size());
        return order != 0 ? order < 0 : a.port < b.port;
    }
};

template <std::size_t N>
Ipv4End ipv4EndAt(const std::array<host::SubId, N> &index, std::size_t place)
{
    return {octetsOf(addressAt(index, place)), index[place + ipv4Length]};
}

Ipv4End ipv4EndOf(const IpmibEnd &end)
{
    Ipv4End ipv4;
    if (end.type == IPMIB_END_IPV4) {
        std::copy_n(end.octets, ipv4.address.size(), ipv4.address.begin());
    }
    ipv4.port = end.port;
    return ipv4;
}

IpmibEnd endOf(const Ipv4End &ipv4)
{
    IpmibEnd end{IPMIB_END_IPV4, ipv4Length, {}, ipv4.port};
    std::ranges::copy(ipv4.address, end.octets);
    return end;
}

// Behind all rows that share their local end with the key.
IpmibConnectionKey behindLocal(IpmibConnectionKey key)
{
    key.remote = {IPMIB_END_IPV6Z, sizeof key.remote.octets, {}, UINT16_MAX};
    std::ranges::fill(key.remote.octets, UINT8_MAX);
    key.instance = UINT32_MAX;
    return key;
}

// The first row behind the key, when its local end is of this type.
bool nextOf(const IpmibConnectionHooks &hooks, std::uint32_t table, const IpmibConnectionKey &key, std::uint32_t type,
            IpmibConnection &row)
{
    return hooks.next(table, &key, &row) == 0 && row.key.local.type == type;
}

// In front of all rows with a local end of IPv4.
IpmibConnectionKey beginOfIpv4()
{
    IpmibConnectionKey key{};
    key.local.type = IPMIB_END_IPV4;
    return key;
}

// The first local end of IPv4 behind this one, or of all; those of both versions count as 0.0.0.0.
bool nextLocal(const IpmibConnectionHooks &hooks, std::uint32_t table, const Ipv4End *behind, IpmibConnection &row)
{
    IpmibConnectionKey key = beginOfIpv4();
    if (behind != nullptr) {
        key.local = endOf(*behind);
        key = behindLocal(key);
    }
    IpmibConnection ofIpv4;
    const bool isThere = nextOf(hooks, table, key, IPMIB_END_IPV4, ofIpv4);
    if (behind == nullptr || behind->address == Ipv4Octets{}) {
        key = {};
        key.local.port = behind == nullptr ? 0 : behind->port;
        if (nextOf(hooks, table, behind == nullptr ? key : behindLocal(key), IPMIB_END_ANY, row) &&
            (!isThere || ipv4EndOf(row.key.local) < ipv4EndOf(ofIpv4.key.local))) {
            return true;
        }
    }
    row = ofIpv4;
    return isThere;
}

class TcpConnRows
{
  public:
    struct Row {
        Ipv4End local;
        Ipv4End remote;
        std::uint32_t state;
    };
    using Index = std::array<host::SubId, 10>;
    static constexpr host::SubIdRange shape[] = {host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet,
                                                 anyPort,        host::anyOctet, host::anyOctet, host::anyOctet,
                                                 host::anyOctet, anyPort};

    explicit TcpConnRows(const IpmibConnectionHooks &hooks) : hooks_(hooks) {}

    bool areRead() const { return hooks_.are_read(IPMIB_TCP_CONNECTIONS) != 0; }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        const Ipv4End local = ipv4EndAt(index, 0);
        const Ipv4End remote = ipv4EndAt(index, remotePlace);
        IpmibConnection found;
        if (remote == Ipv4End{}) {
            IpmibConnectionKey key{};
            key.local = endOf(local);
            const bool isThere = hooks_.find(IPMIB_TCP_LISTENERS, &key, &found) == 0;
            key.local = {IPMIB_END_ANY, 0, {}, local.port};
            if (isThere || (local.address == Ipv4Octets{} && hooks_.find(IPMIB_TCP_LISTENERS, &key, &found) == 0)) {
                row = {local, remote, IPMIB_TCP_LISTEN};
                return true;
            }
        }
        const IpmibConnectionKey key{endOf(local), endOf(remote), 0};
        if (hooks_.find(IPMIB_TCP_CONNECTIONS, &key, &found) != 0) {
            return false;
        }
        row = {local, remote, found.state};
        return true;
    }
    bool next(const Index *behind, Row &row) const
    {
        IpmibConnectionKey key = beginOfIpv4();
        Ipv4End local;
        if (behind != nullptr) {
            local = ipv4EndAt(*behind, 0);
            key = {endOf(local), endOf(ipv4EndAt(*behind, remotePlace)), 0};
        }
        IpmibConnection connection;
        IpmibConnection listener;
        const bool isThere = nextOf(hooks_, IPMIB_TCP_CONNECTIONS, key, IPMIB_END_IPV4, connection);
        // Of a local end the listener comes first: its remote one is 0.0.0.0 and port 0.
        if (nextLocal(hooks_, IPMIB_TCP_LISTENERS, behind == nullptr ? nullptr : &local, listener) &&
            (!isThere || !(ipv4EndOf(connection.key.local) < ipv4EndOf(listener.key.local)))) {
            row = {ipv4EndOf(listener.key.local), {}, IPMIB_TCP_LISTEN};
            return true;
        }
        if (isThere) {
            row = {ipv4EndOf(connection.key.local), ipv4EndOf(connection.key.remote), connection.state};
        }
        return isThere;
    }
    Index indexOf(const Row &row) const
    {
        Index index;
        std::ranges::copy(row.local.address, index.begin());
        index[remotePlace - 1] = row.local.port;
        std::ranges::copy(row.remote.address, index.begin() + remotePlace);
        index.back() = row.remote.port;
        return index;
    }

  private:
    static constexpr std::size_t remotePlace = ipv4Length + 1;
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return integer(row.state); }},            // tcpConnState
        {2, [](const Row &row) { return ipAddress(row.local.address); }},  // tcpConnLocalAddress
        {3, [](const Row &row) { return integer(row.local.port); }},       // tcpConnLocalPort
        {4, [](const Row &row) { return ipAddress(row.remote.address); }}, // tcpConnRemAddress
        {5, [](const Row &row) { return integer(row.remote.port); }},      // tcpConnRemPort
    };

    const IpmibConnectionHooks &hooks_;
};

class UdpRows
{
  public:
    using Row = Ipv4End;
    using Index = std::array<host::SubId, 5>;
    static constexpr host::SubIdRange shape[] = {host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet,
                                                 anyPort};

    explicit UdpRows(const IpmibConnectionHooks &hooks) : hooks_(hooks) {}

    bool areRead() const { return hooks_.are_read(IPMIB_UDP_ENDPOINTS) != 0; }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        row = ipv4EndAt(index, 0);
        IpmibConnectionKey key{};
        IpmibConnection found;
        key.local = endOf(row);
        if (hooks_.next(IPMIB_UDP_ENDPOINTS, &key, &found) == 0 && found.key.local.type == IPMIB_END_IPV4 &&
            ipv4EndOf(found.key.local) == row) {
            return true;
        }
        key.local = {IPMIB_END_ANY, 0, {}, row.port};
        return row.address == Ipv4Octets{} && hooks_.next(IPMIB_UDP_ENDPOINTS, &key, &found) == 0 &&
               found.key.local.type == IPMIB_END_ANY && found.key.local.port == row.port;
    }
    bool next(const Index *behind, Row &row) const
    {
        const Ipv4End local = behind == nullptr ? Ipv4End{} : ipv4EndAt(*behind, 0);
        IpmibConnection found;
        if (!nextLocal(hooks_, IPMIB_UDP_ENDPOINTS, behind == nullptr ? nullptr : &local, found)) {
            return false;
        }
        row = ipv4EndOf(found.key.local);
        return true;
    }
    Index indexOf(const Row &row) const
    {
        return {row.address[0], row.address[1], row.address[2], row.address[3], row.port};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return ipAddress(row.address); }}, // udpLocalAddress
        {2, [](const Row &row) { return integer(row.port); }},      // udpLocalPort
    };

    const IpmibConnectionHooks &hooks_;
};

} // namespace

SourcePointer tcpConnTable(const IpmibConnectionHooks &hooks)
{
    return std::make_unique<host::RowSource<TcpConnRows>>(tcpConnEntry, TcpConnRows(hooks));
}

SourcePointer udpTable(const IpmibConnectionHooks &hooks)
{
    return std::make_unique<host::RowSource<UdpRows>>(udpEntry, UdpRows(hooks));
}

} // namespace ipmib::tables
