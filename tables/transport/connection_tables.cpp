// SPDX-License-Identifier: BSD-3-Clause
// tcpConnectionTable, tcpListenerTable and udpEndpointTable: connections, listeners and endpoints of both versions of
// IP.

#include "tables/tables.h"
#include "tables/transport/connections.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId tcpConnectionEntry[] = {1, 3, 6, 1, 2, 1, 6, 19, 1};
constexpr host::SubId tcpListenerEntry[] = {1, 3, 6, 1, 2, 1, 6, 20, 1};
constexpr host::SubId udpEndpointEntry[] = {1, 3, 6, 1, 2, 1, 7, 7, 1};

Cell stateOf(const IpmibConnection &row)
{
    return integer(row.state);
}

Cell processOf(const IpmibConnection &row)
{
    return gauge(row.process);
}

constexpr host::RowColumn<IpmibConnection> connectionColumns[] = {
    {7, stateOf},   // tcpConnectionState
    {8, processOf}, // tcpConnectionProcess
};
constexpr host::RowColumn<IpmibConnection> listenerColumns[] = {
    {4, processOf}, // tcpListenerProcess
};
constexpr host::RowColumn<IpmibConnection> endpointColumns[] = {
    {8, processOf}, // udpEndpointProcess
};

// The rows of IPMIB_TCP_CONNECTIONS... Each end of the index has its places; behind them may stand the instance.
template <std::uint32_t table, std::size_t ends, bool hasInstance>
class Connections
{
  public:
    using Row = IpmibConnection;
    using Columns = std::span<const host::RowColumn<Row>>;
    using Index = std::array<host::SubId, ends * placesOfEnd + (hasInstance ? 1 : 0)>;
    static constexpr auto shape = [] {
        std::array<host::SubIdRange, std::tuple_size_v<Index>> all;
        for (std::size_t end = 0; end < ends; ++end) {
            shapeOfEnd(all, end * placesOfEnd);
        }
        if (hasInstance) {
            all.back() = {};
        }
        return all;
    }();

    Connections(const IpmibConnectionHooks &hooks, Columns columns) : hooks_(hooks), columns_(columns) {}

    bool areRead() const { return hooks_.are_read(table) != 0; }
    Columns columns() const { return columns_; }
    bool find(const Index &index, Row &row) const
    {
        row.key = keyOf(index);
        return hooks_.find(table, &row.key, &row) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        row.key = behind == nullptr ? IpmibConnectionKey{} : keyOf(*behind);
        return hooks_.next(table, &row.key, &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        Index index;
        putEnd(row.key.local, index, 0);
        if (ends > 1) {
            putEnd(row.key.remote, index, placesOfEnd);
        }
        if (hasInstance) {
            index.back() = row.key.instance;
        }
        return index;
    }

  private:
    static IpmibConnectionKey keyOf(const Index &index)
    {
        IpmibConnectionKey key{};
        key.local = endAt(index, 0);
        if (ends > 1) {
            key.remote = endAt(index, placesOfEnd);
        }
        if (hasInstance) {
            key.instance = index.back();
        }
        return key;
    }

    const IpmibConnectionHooks &hooks_;
    Columns columns_;
};

using TcpConnections = Connections<IPMIB_TCP_CONNECTIONS, 2, false>;
using TcpListeners = Connections<IPMIB_TCP_LISTENERS, 1, false>;
using UdpEndpoints = Connections<IPMIB_UDP_ENDPOINTS, 2, true>;

} // namespace

std::vector<SourcePointer> connectionTables(const IpmibConnectionHooks &hooks)
{
    std::vector<SourcePointer> sources;
    sources.push_back(std::make_unique<host::RowSource<TcpConnections>>(tcpConnectionEntry,
                                                                        TcpConnections(hooks, connectionColumns)));
    sources.push_back(
        std::make_unique<host::RowSource<TcpListeners>>(tcpListenerEntry, TcpListeners(hooks, listenerColumns)));
    sources.push_back(
        std::make_unique<host::RowSource<UdpEndpoints>>(udpEndpointEntry, UdpEndpoints(hooks, endpointColumns)));
    return sources;
}

} // namespace ipmib::tables
