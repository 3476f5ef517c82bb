// SPDX-License-Identifier: BSD-3-Clause
// For tests: messages as the kernel sends them.
#pragma once

#include "addresses/packed_address.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <libmnl/libmnl.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <array>
#include <string>

namespace ipmib::platform
{

inline std::array<std::uint8_t, 16> bytesOf(const std::string &text)
{
    std::array<std::uint8_t, 16> bytes{};
    EXPECT_EQ(inet_pton(AF_INET6, text.c_str(), bytes.data()), 1) << text;
    return bytes;
}

inline PackedAddress packed(const std::string &text)
{
    return PackedAddress::of(bytesOf(text).data());
}

class TestMessage
{
  public:
    explicit TestMessage(std::uint16_t type, std::uint16_t flags = 0) : header_(mnl_nlmsg_put_header(buffer_))
    {
        header_->nlmsg_type = type;
        header_->nlmsg_flags = flags;
    }
    template <class Header>
    Header &family()
    {
        return *static_cast<Header *>(mnl_nlmsg_put_extra_header(header_, sizeof(Header)));
    }
    template <class Value>
    TestMessage &with(std::uint16_t attribute, const Value &value)
    {
        mnl_attr_put(header_, attribute, sizeof value, &value);
        return *this;
    }
    TestMessage &withAddress(std::uint16_t attribute, const std::string &text)
    {
        return with(attribute, bytesOf(text));
    }

    nlmsghdr &header() { return *header_; }
    const nlmsghdr &operator*() const { return *header_; }

  private:
    alignas(nlmsghdr) std::byte buffer_[1024] = {};
    nlmsghdr *header_;
};

struct AddressLifetimes {
    std::uint32_t preferred = 0xFFFFFFFF;
    std::uint32_t valid = 0xFFFFFFFF;
};

inline TestMessage addressMessage(std::uint16_t type, const std::string &address, unsigned length,
                                  std::uint32_t ifIndex, std::uint32_t flags = IFA_F_PERMANENT,
                                  AddressLifetimes lifetimes = {}, std::uint8_t protocol = 0)
{
    TestMessage message(type);
    auto &header = message.family<ifaddrmsg>();
    header.ifa_family = AF_INET6;
    header.ifa_prefixlen = static_cast<std::uint8_t>(length);
    header.ifa_index = ifIndex;
    message.withAddress(IFA_ADDRESS, address)
        .with(IFA_CACHEINFO, ifa_cacheinfo{lifetimes.preferred, lifetimes.valid, 1234, 5678})
        .with(IFA_FLAGS, flags);
    if (protocol != 0) {
        message.with(IFA_PROTO, protocol);
    }
    return message;
}

struct RouteFacts {
    std::uint8_t protocol = RTPROT_KERNEL;
    std::uint32_t metric = 256;
    std::int32_t expires = 0; // 1/100 s
    std::string gateway = {};
    std::uint16_t flags = 0; // of the message
    std::uint8_t type = RTN_UNICAST;
    std::uint32_t table = RT_TABLE_MAIN;
};

inline TestMessage routeMessage(std::uint16_t type, const std::string &destination, unsigned length,
                                std::uint32_t ifIndex, const RouteFacts &facts = {})
{
    TestMessage message(type, facts.flags);
    auto &header = message.family<rtmsg>();
    header.rtm_family = AF_INET6;
    header.rtm_dst_len = static_cast<std::uint8_t>(length);
    header.rtm_protocol = facts.protocol;
    header.rtm_type = facts.type;
    rta_cacheinfo times{};
    times.rta_expires = facts.expires;
    message.withAddress(RTA_DST, destination)
        .with(RTA_TABLE, facts.table)
        .with(RTA_PRIORITY, facts.metric)
        .with(RTA_OIF, ifIndex)
        .with(RTA_CACHEINFO, times);
    if (!facts.gateway.empty()) {
        message.withAddress(RTA_GATEWAY, facts.gateway);
    }
    return message;
}

inline TestMessage prefixMessage(const std::string &prefix, unsigned length, std::uint32_t ifIndex, unsigned flags,
                                 AddressLifetimes lifetimes)
{
    TestMessage message(RTM_NEWPREFIX);
    auto &header = message.family<prefixmsg>();
    header.prefix_family = AF_INET6;
    header.prefix_ifindex = static_cast<int>(ifIndex);
    header.prefix_len = static_cast<std::uint8_t>(length);
    header.prefix_flags = static_cast<std::uint8_t>(flags);
    message.withAddress(PREFIX_ADDRESS, prefix)
        .with(PREFIX_CACHEINFO, prefix_cacheinfo{lifetimes.preferred, lifetimes.valid});
    return message;
}

} // namespace ipmib::platform
