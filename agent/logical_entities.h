// SPDX-License-Identifier: BSD-3-Clause
// entLogicalTable (ENTITY-MIB, RFC 6933): one row for each context, by which managers find the devices that an agent
// shows beside its own.
#pragma once

#include "host/catalogue.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ipmib::agent
{

struct LogicalEntity {
    std::string context;
    std::string description;
    std::vector<std::uint8_t> address = {}; // with its port, of its own; empty without one
};

class LogicalEntities
{
  public:
    LogicalEntities();
    ~LogicalEntities();
    LogicalEntities(const LogicalEntities &) = delete;
    LogicalEntities &operator=(const LogicalEntities &) = delete;

    // By a number that is the row's index; 1 is the smallest.
    void set(std::uint32_t index, LogicalEntity entity) { entities_[index] = std::move(entity); }
    void remove(std::uint32_t index) { entities_.erase(index); }

    const host::ServedTable &table() const { return table_; }

  private:
    std::map<std::uint32_t, LogicalEntity> entities_;
    std::unique_ptr<host::Source> source_;
    host::ServedTable table_;
};

} // namespace ipmib::agent
