// SPDX-License-Identifier: BSD-3-Clause
// What the agent's forwarding tables say of routes.
#include "routes/routes.h"

#include "linux_platform.h"

#include <linux/rtnetlink.h>

#include <charconv>
#include <chrono>
#include <sstream>

namespace ipmib::platform
{

std::string Routes::takeTables(const std::string &list)
{
    const std::pair<const char *, std::uint32_t> names[] = {
        {"main", RT_TABLE_MAIN}, {"local", RT_TABLE_LOCAL}, {"default", RT_TABLE_DEFAULT}};
    tables_.tables.clear();
    std::istringstream words(list);
    for (std::string word; std::getline(words, word, ',');) {
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        const auto *name =
            std::find_if(std::begin(names), std::end(names), [&](const auto &each) { return word == each.first; });
        if (word == "all") {
            tables_.all = true;
        } else if (name != std::end(names)) {
            tables_.tables.insert(name->second);
        } else if (error == std::errc() && end == word.data() + word.size() && number != 0) {
            tables_.tables.insert(number);
        } else {
            return "--route-tables: \"" + word + "\" is neither main, local, default or all nor the number of a table";
        }
    }
    return tables_.all || !tables_.tables.empty() ? "" : "--route-tables needs a list of tables, such as main,local";
}

std::string Routes::follow()
{
    if (ipv4_) {
        return "";
    }
    RouteFeed &feed4 = platform_.ipv4().routes();
    RouteFeed &feed6 = platform_.addressing().routeFeed();
    followed_[0] = {&platform_.ipv4().routeMirror(), platform_.ipv4().routeMirror().timesEnded()};
    followed_[1] = {&platform_.addressing().routeMirror(), platform_.addressing().routeMirror().timesEnded()};
    ipv4_ = std::make_unique<ForwardingTable>(AF_INET, feed4.nexthops(), tables_, limit_);
    ipv6_ = std::make_unique<ForwardingTable>(AF_INET6, feed6.nexthops(), tables_, limit_);
    if (!tidy_.open(platform_.loop(), [this] { tidy(); })) {
        return "routes: cannot create a timer";
    }
    for (ForwardingTable *const table : {ipv4_.get(), ipv6_.get()}) {
        table->onLitter([this] { tidy_.arm(0); });
    }
    ipv4_->onUncertain([this] { followed_[0].mirror->refreshSoon(); });
    ipv6_->onUncertain([this] { followed_[1].mirror->refreshSoon(); });
    if (tables_.all || tables_.tables != std::set<std::uint32_t>{RT_TABLE_MAIN}) {
        feed4.readAllTables();
    }
    feed4.add(*ipv4_);
    feed6.add(*ipv6_);
    followed_[1].mirror->readAnew();
    return platform_.followRoutes();
}

// Between packets.
void Routes::tidy()
{
    const auto end = std::chrono::steady_clock::now() + DumpQueue::longestPiece;
    bool more = true;
    while (more && std::chrono::steady_clock::now() < end) {
        more = ipv4_->tidy() || ipv6_->tidy();
    }
    if (more) {
        tidy_.arm(0);
    }
}

bool Routes::isRead(const Followed &followed) const
{
    return followed.mirror != nullptr && followed.mirror->timesEnded() > followed.endedBefore &&
           !followed.mirror->isBehind();
}

std::uint32_t Routes::areRead()
{
    return isRead(followed_[0]) && isRead(followed_[1]) ? 1 : 0;
}

// With all that has been announced when the packet began, or later.
ForwardingTable *Routes::of(std::uint32_t version)
{
    if (ipv4_ == nullptr || (version != IPMIB_IPV4 && version != IPMIB_IPV6)) {
        return nullptr;
    }
    followed_[version == IPMIB_IPV4 ? 0 : 1].mirror->readForPacket();
    return version == IPMIB_IPV4 ? ipv4_.get() : ipv6_.get();
}

std::uint64_t Routes::count(std::uint32_t version)
{
    ForwardingTable *const table = of(version);
    return table != nullptr ? table->count() : 0;
}

std::uint64_t Routes::discards()
{
    of(IPMIB_IPV4);
    of(IPMIB_IPV6);
    return limit_.discards;
}

bool Routes::find(const IpmibRouteKey &key, IpmibRoute &row)
{
    ForwardingTable *const table = of(key.version);
    return table != nullptr && table->find(key, platform_.now(), row);
}

bool Routes::next(const IpmibRouteKey &key, IpmibRoute &row)
{
    if (!ipv4_ || key.version > IPMIB_IPV6) {
        return false;
    }
    if (key.version == IPMIB_IPV6) {
        return of(IPMIB_IPV6)->next(key, platform_.now(), row);
    }
    ForwardingTable *const ipv4 = of(IPMIB_IPV4);
    const bool ofIpv4 =
        key.version == IPMIB_IPV4 ? ipv4->next(key, platform_.now(), row) : ipv4->first(platform_.now(), row);
    return ofIpv4 || of(IPMIB_IPV6)->first(platform_.now(), row);
}

bool Routes::match(std::uint32_t version, const std::uint8_t *address, IpmibRoute &row)
{
    ForwardingTable *const table = of(version);
    return table != nullptr && table->match(address, platform_.now(), row);
}

std::size_t Routes::memory() const
{
    return ipv4_ ? ipv4_->memory() + ipv6_->memory() : 0;
}

} // namespace ipmib::platform
