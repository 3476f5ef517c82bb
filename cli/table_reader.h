// SPDX-License-Identifier: BSD-3-Clause
// Reads a table row by row, several columns at a time: one row is one request to the module.
#pragma once

#include "object_tree.h"

#include "host/resolver.h"
#include "host/row_key.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ipmib::cli
{

class LocalDevice;
enum class Version;

class TableReader
{
  public:
    // All rows, or those of the version of IP that the device shows.
    enum class Rows { shown, all };

    // The entry by its name, and the names of columns, of which one that is not served has no values.
    TableReader(LocalDevice &device, std::string_view entry, std::vector<std::string_view> columns,
                Rows rows = Rows::shown);

    // The next row is the first one behind this instance, which need not be a row's, nor be complete.
    void startBehind(host::OidView instance) { instance_.assign(instance); }
    // Goes on to the next row; false behind the last one. Throws std::runtime_error when the module's answer is
    // unusable.
    bool next();

    // The row's index.
    const host::RowKey &key() const { return key_; }
    host::OidView instance() const { return instance_.view(); }
    const MibTreeNode &indexObject(std::size_t part) const { return *entry_->node->pstIndex->ppstColumns[part]; }
    // Of a column by its place in the list; null when it has no value. Good until the resolver is used again.
    const host::Value *value(std::size_t column) const;
    const MibTreeNode &object(std::size_t column) const { return *columns_[column].object->node; }

    LocalDevice &device() const { return device_; }

  private:
    bool readNext();
    Version version() const;
    std::optional<host::Oid> nearestRow() const;

    struct ReadColumn {
        const Object *object;
        int variable; // place among those that are asked for; -1 when it is not served
        host::Oid asked;
    };

    LocalDevice &device_;
    const Object *entry_;
    Rows rows_;
    host::IndexParts parts_;
    std::vector<ReadColumn> columns_;
    std::vector<host::Variable> variables_;
    host::Oid instance_;
    host::RowKey key_;
};

} // namespace ipmib::cli
