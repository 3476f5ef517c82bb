// SPDX-License-Identifier: BSD-3-Clause
// The library's parsers get no pointer of ours, hence the one that is in force.

#include "serve_settings.h"

#include "net_snmp.h"

#include <algorithm>
#include <sstream>

namespace ipmib::agent
{

namespace
{

constexpr const char *everyTable = "all";

ServeSettings *inForce = nullptr;

void parseLine(const char *directive, char *line)
{
    const std::string mistake = inForce->read(line);
    if (!mistake.empty()) {
        netsnmp_config_error("%s: %s", directive, mistake.c_str());
    }
}

void forgetLines()
{
    inForce->forget();
}

} // namespace

ServeSettings::ServeSettings(const char *fileType, const char *word, const std::vector<ServedTable> &tables)
    : fileType_(fileType), word_(word), tables_(tables)
{
    inForce = this;
    register_config_handler(fileType_, word_, parseLine, forgetLines, "TABLE|all auto|take|off");
}

ServeSettings::~ServeSettings()
{
    unregister_config_handler(fileType_, word_);
    inForce = nullptr;
}

Serve ServeSettings::of(const ServedTable &table) const
{
    auto wish = wishes_.find(table.name);
    if (wish == wishes_.end()) {
        wish = wishes_.find(everyTable);
    }
    return wish == wishes_.end() ? Serve::automatic : wish->second;
}

std::vector<const ServedTable *> ServeSettings::notOff() const
{
    std::vector<const ServedTable *> kept;
    for (const ServedTable &table : tables_) {
        if (of(table) != Serve::off) {
            kept.push_back(&table);
        }
    }
    return kept;
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
    if (table != everyTable &&
        std::ranges::none_of(tables_, [&](const ServedTable &known_) { return table == known_.name; })) {
        std::string names;
        for (const ServedTable &one : tables_) {
            names += std::string(names.empty() ? "" : ", ") + one.name;
        }
        return "there is no table \"" + table + "\"; there are all, " + names;
    }
    wishes_[table] = found->second;
    return "";
}

} // namespace ipmib::agent
