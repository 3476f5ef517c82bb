// SPDX-License-Identifier: BSD-3-Clause
// The library's parsers get no pointer of ours, hence the one that is in force.

#include "route_limit.h"

#include "net_snmp.h"

#include <charconv>

namespace ipmib::agent
{
namespace
{

RouteLimit *inForce = nullptr;

void parseLine(const char *directive, char *line)
{
    const std::string mistake = inForce->read(line);
    if (!mistake.empty()) {
        netsnmp_config_error("%s: %s", directive, mistake.c_str());
    }
}

} // namespace

RouteLimit::RouteLimit(const char *fileType, const char *word) : fileType_(fileType), word_(word)
{
    inForce = this;
    register_config_handler(fileType_, word_, parseLine, nullptr, "NUMBER");
}

RouteLimit::~RouteLimit()
{
    unregister_config_handler(fileType_, word_);
    inForce = nullptr;
}

void RouteLimit::handTo(const IpmibPlatformHooks *platform) const
{
    if (most_ && platform != nullptr && platform->routes != nullptr) {
        platform->routes->limit(*most_);
    }
}

std::string RouteLimit::read(const std::string &line)
{
    const std::string word = line.substr(0, line.find_last_not_of(" \t\r\n") + 1);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size()) {
        return "\"" + word + "\" is not how many rows there may be";
    }
    most_ = number;
    return "";
}

} // namespace ipmib::agent
