// SPDX-License-Identifier: BSD-3-Clause
#include "route_limit.h"

#include <charconv>

namespace ipmib::agent
{
RouteLimit::RouteLimit(const char *fileType, const char *word) : line_(*this, fileType, word, "NUMBER") {}

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
