// SPDX-License-Identifier: BSD-3-Clause
// Reads a table row by row, several columns at a time.
#include "table_reader.h"

#include "local_device.h"
#include "text.h"

#include "host/row_key.h"

#include <algorithm>
#include <stdexcept>

namespace ipmib::cli
{
namespace
{

const Object &objectNamed(const ObjectTree &tree, std::string_view name)
{
    const Object *object = tree.named(name);
    if (object == nullptr) {
        throw std::runtime_error("the module has no object " + std::string(name));
    }
    return *object;
}

} // namespace

TableReader::TableReader(LocalDevice &device, std::string_view entry, std::vector<std::string_view> columns, Rows rows)
    : device_(device), entry_(&objectNamed(device.tree(), entry)), rows_(rows)
{
    for (const MibTreeNode *part : host::columnsOf(*entry_->node->pstIndex)) {
        parts_.push_back(*host::indexPart(*part));
    }
    for (const std::string_view name : columns) {
        const Object &object = objectNamed(device.tree(), name);
        const bool served = object.isServed;
        columns_.push_back({&object, served ? static_cast<int>(variables_.size()) : -1, object.oid});
        if (served) {
            variables_.emplace_back();
        }
    }
}

bool TableReader::next()
{
    const Version wanted = rows_ == Rows::all ? Version::both : device_.shown();
    while (readNext()) {
        const Version found = wanted == Version::both ? wanted : version();
        if (found == wanted || found == Version::both) {
            return true;
        }
    }
    return false;
}

// As the row's index says; of a table without such an index the name.
Version TableReader::version() const
{
    const auto versionOf = [](std::string_view text) {
        return text.starts_with("ipv4") ? Version::ipv4 : text.starts_with("ipv6") ? Version::ipv6 : Version::both;
    };
    for (std::size_t part = 0; part < parts_.size(); ++part) {
        const MibSyntax &syntax = *indexObject(part).pstSyntax;
        if (syntax.ulType == MIB_TYPE_ENUM) {
            return versionOf(labelText(syntax, key_.number(part)));
        }
    }
    return versionOf(entry_->node->pszName);
}

bool TableReader::readNext()
{
    const ReadColumn *first = nullptr;
    for (ReadColumn &column : columns_) {
        if (column.variable >= 0) {
            column.asked = column.object->oid;
            column.asked.append(instance_.view());
            variables_[static_cast<std::size_t>(column.variable)].asked = column.asked.view();
            first = first == nullptr ? &column : first;
        }
    }
    if (first == nullptr) {
        return false;
    }
    device_.getNext(variables_, entry_->oid.view());
    const host::Variable &leading = variables_.front();
    if (leading.status == host::Status::genErr) {
        throw std::runtime_error(std::string(first->object->node->pszName) + ": the module's answer is unusable");
    }
    const std::optional<host::Oid> row = nearestRow();
    if (!row) {
        return false;
    }
    instance_ = *row;
    return host::readKey(parts_, instance_.view(), key_);
}

// Of the rows that the columns' answers are of, the first one: a row need not have all columns.
std::optional<host::Oid> TableReader::nearestRow() const
{
    std::optional<host::Oid> nearest;
    for (const ReadColumn &column : columns_) {
        if (column.variable < 0) {
            continue;
        }
        const host::Variable &variable = variables_[static_cast<std::size_t>(column.variable)];
        const host::OidView root = column.object->oid.view();
        if (variable.status != host::Status::ok || !host::isWithin(variable.name.view(), root)) {
            continue;
        }
        const host::OidView instance = variable.name.view().subspan(root.size());
        if (!nearest || std::is_lt(host::compare(instance, nearest->view()))) {
            nearest.emplace(instance);
        }
    }
    return nearest;
}

const host::Value *TableReader::value(std::size_t place) const
{
    const ReadColumn &column = columns_[place];
    if (column.variable < 0) {
        return nullptr;
    }
    const host::Variable &variable = variables_[static_cast<std::size_t>(column.variable)];
    const host::OidView root = column.object->oid.view();
    const bool ofThisRow = variable.status == host::Status::ok && host::isWithin(variable.name.view(), root) &&
                           std::ranges::equal(variable.name.view().subspan(root.size()), instance_.view());
    return ofThisRow ? &variable.value : nullptr;
}

} // namespace ipmib::cli
