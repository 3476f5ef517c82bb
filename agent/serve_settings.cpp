// SPDX-License-Identifier: BSD-3-Clause
#include "serve_settings.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace ipmib::agent
{

namespace
{

constexpr const char *everyTable = "all";

bool isAmong(const std::vector<host::ServedTable> &tables, const std::string &name)
{
    return std::ranges::any_of(tables, [&](const host::ServedTable &table) { return name == table.name; });
}

std::string listed(const std::vector<host::ServedTable> &tables)
{
    std::string names = everyTable;
    std::set<std::string> seen;
    for (const host::ServedTable &table : tables) {
        if (seen.insert(table.name).second) {
            names += std::string(", ") + table.name;
        }
    }
    return names;
}

} // namespace

ServeSettings::ServeSettings(const char *fileType, const char *word, const std::vector<host::ServedTable> *tables)
    : tables_(tables), line_(*this, fileType, word, "TABLE|all auto|take|off")
{
}

Serve ServeSettings::of(const host::ServedTable &table) const
{
    auto wish = wishes_.find(table.name);
    if (wish == wishes_.end()) {
        wish = wishes_.find(everyTable);
    }
    return wish == wishes_.end() ? Serve::automatic : wish->second;
}

std::vector<const host::ServedTable *> ServeSettings::notOff(const std::vector<host::ServedTable> &tables) const
{
    std::vector<const host::ServedTable *> kept;
    for (const host::ServedTable &table : tables) {
        if (of(table) != Serve::off) {
            kept.push_back(&table);
        }
    }
    return kept;
}

std::vector<std::string> ServeSettings::unknownNames(const std::vector<host::ServedTable> &tables) const
{
    std::vector<std::string> names;
    for (const auto &[name, wish] : wishes_) {
        if (name != everyTable && !isAmong(tables, name)) {
            names.push_back(name);
        }
    }
    return names;
}

std::string ServeSettings::read(const std::string &line)
{
    static const std::map<std::string, Serve> known = {
        {"auto", Serve::automatic}, {"take", Serve::take}, {"off", Serve::off}};
    std::istringstream words(line);
    std::string table;
    std::string wish;
    std::string rest;
    words >> table >> wish;
    if (wish.empty()) {
        return "needs a table, or \"all\", and one of auto, take, off";
    }
    const auto found = known.find(wish);
    if (found == known.end()) {
        return "\"" + wish + "\" is none of auto, take, off";
    }
    if (words >> rest) {
        return "\"" + rest + "\" is one word too many";
    }
    if (tables_ != nullptr && table != everyTable && !isAmong(*tables_, table)) {
        return "there is no table \"" + table + "\"; there are " + listed(*tables_);
    }
    wishes_[table] = found->second;
    return "";
}

} // namespace ipmib::agent
