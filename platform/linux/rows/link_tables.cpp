// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of links: which run over which, and the link-layer addresses that they listen to.
#include "linux_platform.h"

#include <linux/if_ether.h>
#include <net/if.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <tuple>

namespace ipmib::platform
{

namespace
{

enum ReceiveAddressType : std::uint32_t { other = 1, isVolatile = 2 };

bool stackBefore(const IpmibStack &a, const IpmibStack &b)
{
    return std::tie(a.higher, a.lower) < std::tie(b.higher, b.lower);
}

// A shorter address is in front of a longer one.
bool receiveBefore(const IpmibReceiveAddress &a, const IpmibReceiveAddress &b)
{
    if (std::tie(a.if_index, a.size) != std::tie(b.if_index, b.size)) {
        return std::tie(a.if_index, a.size) < std::tie(b.if_index, b.size);
    }
    return std::memcmp(a.address, b.address, a.size) < 0;
}

IpmibReceiveAddress receiveKey(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size)
{
    IpmibReceiveAddress key{};
    key.if_index = ifIndex;
    key.size = static_cast<std::uint8_t>(std::min<std::size_t>(size, UINT8_MAX)); // a long one stands behind all rows
    std::copy_n(address, std::min(size, sizeof key.address), key.address);
    return key;
}

// A line of /proc/net/dev_mcast: ifIndex, name, two counts, and the address in hexadecimal digits.
bool parseMulticast(std::string_view line, IpmibReceiveAddress &row)
{
    std::string_view words[5];
    for (std::string_view &word : words) {
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        word = line.substr(0, line.find(' '));
        line.remove_prefix(word.size());
    }
    const std::string_view digits = words[4];
    row = IpmibReceiveAddress{};
    row.type = isVolatile;
    const auto index = std::from_chars(words[0].data(), words[0].data() + words[0].size(), row.if_index);
    if (index.ec != std::errc() || digits.empty() || digits.size() % 2 != 0 || digits.size() / 2 > sizeof row.address) {
        return false;
    }
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        const char *end = digits.data() + at + 2;
        const auto [stop, error] = std::from_chars(end - 2, end, row.address[row.size++], 16);
        if (error != std::errc() || stop != end) {
            return false;
        }
    }
    return true;
}

} // namespace

const std::vector<IpmibStack> &IpRows::stack()
{
    const LinkTable &links = platform_.links();
    if (stackVersion_ == links.version()) {
        return stack_;
    }
    stack_.clear();
    std::vector<std::uint32_t> highers; // those that have something below
    std::vector<std::uint32_t> lowers;  // those that have something above
    const auto relate = [&](std::uint32_t higher, std::uint32_t lower) {
        if (links.find(higher) != nullptr && links.find(lower) != nullptr) {
            stack_.push_back({higher, lower});
            highers.push_back(higher);
            lowers.push_back(lower);
        }
    };
    for (const Link *link = links.after(0); link != nullptr; link = links.after(link->ifIndex)) {
        relate(link->ifIndex, link->lower);
        relate(link->master, link->ifIndex);
    }
    std::sort(highers.begin(), highers.end());
    std::sort(lowers.begin(), lowers.end());
    for (const Link *link = links.after(0); link != nullptr; link = links.after(link->ifIndex)) {
        if (!std::binary_search(lowers.begin(), lowers.end(), link->ifIndex)) {
            stack_.push_back({0, link->ifIndex});
        }
        if (!std::binary_search(highers.begin(), highers.end(), link->ifIndex)) {
            stack_.push_back({link->ifIndex, 0});
        }
    }
    std::sort(stack_.begin(), stack_.end(), stackBefore);
    stackVersion_ = links.version();
    return stack_;
}

bool IpRows::findStack(std::uint32_t higher, std::uint32_t lower, IpmibStack &row)
{
    const std::vector<IpmibStack> &rows = stack();
    const auto found = std::lower_bound(rows.begin(), rows.end(), IpmibStack{higher, lower}, stackBefore);
    if (found == rows.end() || found->higher != higher || found->lower != lower) {
        return false;
    }
    row = *found;
    return true;
}

bool IpRows::stackAfter(std::uint32_t higher, std::uint32_t lower, IpmibStack &row)
{
    const std::vector<IpmibStack> &rows = stack();
    const auto found = std::upper_bound(rows.begin(), rows.end(), IpmibStack{higher, lower}, stackBefore);
    if (found == rows.end()) {
        return false;
    }
    row = *found;
    return true;
}

std::uint32_t IpRows::stackChanged()
{
    return platform_.uptime().atMs(platform_.links().stackChangedMs());
}

// The kernel does not announce which groups a link has joined. They are read for a packet; where that takes long, not
// for each one.
const std::vector<IpmibReceiveAddress> &IpRows::receiveAddresses()
{
    constexpr std::uint64_t restRatio = 20;
    const std::uint64_t begin = monotonicMilliseconds();
    if (receiveAddressesFresh_ || begin < nextReadMs_) {
        return receiveAddresses_;
    }
    std::vector<IpmibReceiveAddress> &rows = receiveAddresses_;
    rows.clear();
    const LinkTable &links = platform_.links();
    for (const Link *link = links.after(0); link != nullptr; link = links.after(link->ifIndex)) {
        const auto isZero = [](std::uint8_t octet) { return octet == 0; };
        if (std::all_of(link->address, link->address + link->addressSize, isZero)) {
            continue; // the loopback interface, and tunnels from everywhere
        }
        IpmibReceiveAddress row{link->ifIndex, other, link->addressSize, {}};
        std::memcpy(row.address, link->address, link->addressSize);
        rows.push_back(row);
        if ((link->flags & IFF_BROADCAST) != 0 && link->addressSize == ETH_ALEN) {
            std::memset(row.address, 0xFF, ETH_ALEN);
            rows.push_back(row);
        }
    }
    std::string text;
    if (multicastAddresses_.readAll(text)) {
        std::string_view left = text;
        while (!left.empty()) {
            const std::string_view line = left.substr(0, left.find('\n'));
            left.remove_prefix(std::min(line.size() + 1, left.size()));
            IpmibReceiveAddress row;
            if (parseMulticast(line, row) && links.find(row.if_index) != nullptr) {
                rows.push_back(row);
            }
        }
    }
    std::sort(rows.begin(), rows.end(), receiveBefore);
    const auto same = [](const IpmibReceiveAddress &a, const IpmibReceiveAddress &b) {
        return !receiveBefore(a, b) && !receiveBefore(b, a);
    };
    rows.erase(std::unique(rows.begin(), rows.end(), same), rows.end());
    receiveAddressesFresh_ = true;
    nextReadMs_ = begin + (monotonicMilliseconds() - begin) * restRatio;
    return rows;
}

bool IpRows::findReceiveAddress(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                                IpmibReceiveAddress &row)
{
    if (!followsReceiveAddresses_) {
        return false;
    }
    const std::vector<IpmibReceiveAddress> &rows = receiveAddresses();
    const IpmibReceiveAddress key = receiveKey(ifIndex, address, size);
    const auto found = std::lower_bound(rows.begin(), rows.end(), key, receiveBefore);
    if (found == rows.end() || receiveBefore(key, *found)) {
        return false;
    }
    row = *found;
    return true;
}

bool IpRows::receiveAddressAfter(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                                 IpmibReceiveAddress &row)
{
    if (!followsReceiveAddresses_) {
        return false;
    }
    const std::vector<IpmibReceiveAddress> &rows = receiveAddresses();
    const auto found = std::upper_bound(rows.begin(), rows.end(), receiveKey(ifIndex, address, size), receiveBefore);
    if (found == rows.end()) {
        return false;
    }
    row = *found;
    return true;
}

} // namespace ipmib::platform
