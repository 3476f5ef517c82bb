// SPDX-License-Identifier: BSD-3-Clause
// Communities are not shown: they would be secrets, and the context's name says what is needed (RFC 6933, 3).

#include "logical_entities.h"

#include "net_snmp.h"

#include "host/row_source.h"
#include "tables/values.h"

#include <array>
#include <utility>

namespace ipmib::agent
{
namespace
{

using tables::Cell;

constexpr host::SubId tableNode[] = {1, 3, 6, 1, 2, 1, 47, 1, 2, 1};
constexpr host::SubId entryNode[] = {1, 3, 6, 1, 2, 1, 47, 1, 2, 1, 1};
constexpr host::SubId mib2[] = {1, 3, 6, 1, 2, 1};
constexpr host::SubId udpOverIpv4[] = {1, 3, 6, 1, 6, 1, 1};
constexpr host::SubId udpOverIpv6[] = {1, 3, 6, 1, 2, 1, 100, 1, 2};
constexpr host::SubId nowhere[] = {0, 0};
constexpr std::size_t ipv4Size = 4 + 2; // with the port

struct Row {
    std::uint32_t index = 0;
    const LogicalEntity *entity = nullptr;
    std::array<std::uint8_t, 32> engine{}; // an engine's identifier has no more
    std::size_t engineSize = 0;
};

Cell textOf(const std::string &text)
{
    return tables::octets(text.data(), text.size());
}

Cell domainOf(const LogicalEntity &entity)
{
    const auto none = std::span<const host::SubId>(nowhere);
    const auto domain = entity.address.size() == ipv4Size ? std::span<const host::SubId>(udpOverIpv4) : udpOverIpv6;
    return tables::objectId(entity.address.empty() ? none : domain);
}

constexpr host::RowColumn<Row> columnsOfRows[] = {
    {2, [](const Row &row) { return textOf(row.entity->description); }}, // Descr
    {3, [](const Row &) { return tables::objectId(mib2); }},             // Type
    {4, [](const Row &) { return textOf(""); }},                         // Community
    {5,
     [](const Row &row) { return tables::octets(row.entity->address.data(), row.entity->address.size()); }}, // TAddress
    {6, [](const Row &row) { return domainOf(*row.entity); }},                                               // TDomain
    {7, [](const Row &row) { return tables::octets(row.engine.data(), row.engineSize); }}, // ContextEngineID
    {8, [](const Row &row) { return textOf(row.entity->context); }},                       // ContextName
};

class Rows
{
  public:
    using Row = agent::Row;
    using Index = std::array<host::SubId, 1>;
    static constexpr host::SubIdRange shape[] = {{1, INT32_MAX}};

    explicit Rows(const std::map<std::uint32_t, LogicalEntity> &entities) : entities_(entities) {}

    std::span<const host::RowColumn<Row>> columns() const { return columnsOfRows; }
    bool find(const Index &index, Row &row) const { return fill(entities_.find(index[0]), row); }
    bool next(const Index *behind, Row &row) const
    {
        return fill(behind == nullptr ? entities_.begin() : entities_.upper_bound((*behind)[0]), row);
    }
    Index indexOf(const Row &row) const { return {row.index}; }

  private:
    bool fill(std::map<std::uint32_t, LogicalEntity>::const_iterator found, Row &row) const
    {
        if (found == entities_.end()) {
            return false;
        }
        row.index = found->first;
        row.entity = &found->second;
        row.engineSize = snmpv3_get_engineID(row.engine.data(), row.engine.size());
        return true;
    }

    const std::map<std::uint32_t, LogicalEntity> &entities_;
};

} // namespace

LogicalEntities::LogicalEntities()
    : source_(std::make_unique<host::RowSource<Rows>>(entryNode, Rows(entities_))), table_{"entLogicalTable",
                                                                                           host::Oid(tableNode),
                                                                                           host::Oid(entryNode),
                                                                                           host::Oid(entryNode),
                                                                                           source_->objects(),
                                                                                           source_.get()}
{
}

LogicalEntities::~LogicalEntities() = default;

} // namespace ipmib::agent
