// SPDX-License-Identifier: BSD-3-Clause
// What an SNMP agent would answer in a network namespace.
#include "live_agent.h"

#include "host/registry.h"

namespace ipmib::live
{

namespace
{

Cell cellOf(const host::Value &value)
{
    return {value.type,
            value.number,
            {value.octets.begin(), value.octets.end()},
            {value.objectId.begin(), value.objectId.end()}};
}

} // namespace

LiveAgent::LiveAgent(const netns::Namespace &space)
    : platform_(space), resolver_(*host::Registry::ofProcess().trees().front().root,
                                  host::Registry::ofProcess().callbacks().front().callback,
                                  [](int, const char *line) { ADD_FAILURE() << line; })
{
}

Cell LiveAgent::get(const Identifier &instance)
{
    platform_->beginPacket();
    host::Variable variable;
    variable.asked = instance;
    resolver_.get({&variable, 1});
    EXPECT_EQ(variable.status, host::Status::ok);
    return cellOf(variable.value);
}

bool LiveAgent::next(Identifier &name, const Identifier &region, Cell &cell)
{
    platform_->beginPacket();
    const Identifier asked = name;
    host::Variable variable;
    variable.asked = asked;
    resolver_.getNext({&variable, 1}, region);
    if (variable.status != host::Status::ok) {
        EXPECT_EQ(variable.status, host::Status::endOfRegion);
        return false;
    }
    cell = cellOf(variable.value);
    name.assign(variable.name.view().begin(), variable.name.view().end());
    EXPECT_TRUE(asked < name);
    return asked < name;
}

Table LiveAgent::walk(const Identifier &entry)
{
    Table table;
    Identifier name = entry;
    for (Cell cell; next(name, entry, cell);) {
        const auto column = name.begin() + static_cast<std::ptrdiff_t>(entry.size());
        table[*column][Identifier(column + 1, name.end())] = cell;
    }
    return table;
}

Table LiveAgent::walk(const Identifier &entry, const std::vector<host::SubId> &columns)
{
    Table table;
    std::vector<Identifier> asked(columns.size(), entry);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        asked[i].push_back(columns[i]);
    }
    std::vector<host::Variable> variables(columns.size());
    for (;;) {
        platform_->beginPacket();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            variables[i].asked = asked[i];
        }
        resolver_.getNext(variables, entry);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Identifier name(variables[i].name.view().begin(), variables[i].name.view().end());
            if (variables[i].status != host::Status::ok || name[entry.size()] != columns[i]) {
                EXPECT_EQ(i, 0u) << "columns end together";
                return table;
            }
            if (asked[i] >= name) {
                ADD_FAILURE() << "a walk does not ascend";
                return table;
            }
            asked[i] = name;
            const auto row = name.begin() + static_cast<std::ptrdiff_t>(entry.size()) + 1;
            table[columns[i]][Identifier(row, name.end())] = cellOf(variables[i].value);
        }
    }
}

} // namespace ipmib::live
