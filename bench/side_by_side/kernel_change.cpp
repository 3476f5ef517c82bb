// SPDX-License-Identifier: BSD-3-Clause
// One class for each kind of change, and the messages that make it.
#include "kernel_change.h"

#include <arpa/inet.h>
#include <linux/neighbour.h>
#include <net/if.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace ipmib::bench
{

namespace
{

using platform::Rtnetlink;
using platform::RtnetlinkRequest;
using State = KernelChange::State;

constexpr std::uint16_t adding = NLM_F_ACK | NLM_F_CREATE | NLM_F_REPLACE;

using Address = std::array<std::uint8_t, 16>;

// 2001:db8:HIGH::LOW, in networks that nobody else here uses.
Address addressOf(unsigned high, unsigned low)
{
    return {0x20,
            0x01,
            0x0d,
            0xb8,
            std::uint8_t(high >> 8),
            std::uint8_t(high),
            0,
            0,
            0,
            0,
            0,
            0,
            std::uint8_t(low >> 24),
            std::uint8_t(low >> 16),
            std::uint8_t(low >> 8),
            std::uint8_t(low)};
}

void carryOut(Rtnetlink &kernel, RtnetlinkRequest &request, const char *what)
{
    if (kernel.ask(request, [](const nlmsghdr &) {}) != 0) {
        throw std::runtime_error(std::string(what) + ": " + kernel.error());
    }
}

Identifier instanceOf(std::initializer_list<oid> column, std::initializer_list<oid> before, const Address &address,
                      std::initializer_list<oid> behind = {})
{
    Identifier name{1, 3, 6, 1, 2, 1, 4};
    name.insert(name.end(), column);
    name.insert(name.end(), before);
    name.insert(name.end(), {2, 16}); // ipv6, length
    name.insert(name.end(), address.begin(), address.end());
    name.insert(name.end(), behind);
    return name;
}

void changeNeighbour(Rtnetlink &kernel, unsigned ifIndex, const Address &address, const std::uint8_t *linkLayer)
{
    RtnetlinkRequest request(linkLayer ? RTM_NEWNEIGH : RTM_DELNEIGH, linkLayer ? adding : NLM_F_ACK);
    ndmsg &header = request.family<ndmsg>();
    header.ndm_family = AF_INET6;
    header.ndm_ifindex = static_cast<int>(ifIndex);
    header.ndm_state = NUD_PERMANENT;
    mnl_attr_put(request.message(), NDA_DST, address.size(), address.data());
    if (linkLayer) {
        mnl_attr_put(request.message(), NDA_LLADDR, 6, linkLayer);
    }
    carryOut(kernel, request, "neighbour");
}

void changeAddress(Rtnetlink &kernel, unsigned ifIndex, const Address &address, State state)
{
    RtnetlinkRequest request(state == State::absent ? RTM_DELADDR : RTM_NEWADDR,
                             state == State::absent ? NLM_F_ACK : adding);
    ifaddrmsg &header = request.family<ifaddrmsg>();
    header.ifa_family = AF_INET6;
    header.ifa_prefixlen = 64;
    header.ifa_flags = IFA_F_NODAD;
    header.ifa_index = ifIndex;
    mnl_attr_put(request.message(), IFA_LOCAL, address.size(), address.data());
    if (state != State::absent) {
        // Endless ones: the route to the prefix of an address that ends by itself outlives the address.
        constexpr std::uint32_t endless = ~0u;
        const ifa_cacheinfo lifetimes{state == State::second ? 0 : endless, endless, 0, 0}; // 0: deprecated
        mnl_attr_put(request.message(), IFA_CACHEINFO, sizeof lifetimes, &lifetimes);
    }
    carryOut(kernel, request, "address");
}

bool isPresent(const netsnmp_variable_list &answer)
{
    return !isException(answer) && answer.type != ASN_NULL;
}

// A kind whose row is there or is not.
class ComesAndGoes : public KernelChange
{
  public:
    ComesAndGoes(Rtnetlink &kernel, unsigned ifIndex, Identifier instance)
        : kernel_(kernel), ifIndex_(ifIndex), instance_(std::move(instance))
    {
    }
    const Identifier &instance() const override { return instance_; }
    bool isRight(State state, const netsnmp_variable_list &answer) const override
    {
        return isPresent(answer) == (state != State::absent);
    }

  protected:
    Rtnetlink &kernel_;
    unsigned ifIndex_;

  private:
    Identifier instance_;
};

// Its second state has another link-layer address.
class NeighbourChange : public ComesAndGoes
{
  public:
    NeighbourChange(Rtnetlink &kernel, unsigned ifIndex) // ipNetToPhysicalPhysAddress
        : ComesAndGoes(kernel, ifIndex, instanceOf({35, 1, 4}, {ifIndex}, address))
    {
    }
    void make(State state) override
    {
        const std::uint8_t linkLayer[6] = {2, 0, 0, 0, 0, lastByte(state)};
        changeNeighbour(kernel_, ifIndex_, address, state == State::absent ? nullptr : linkLayer);
    }
    bool isRight(State state, const netsnmp_variable_list &answer) const override
    {
        return state == State::absent
                   ? !isPresent(answer)
                   : answer.type == ASN_OCTET_STR && answer.val_len == 6 && answer.val.string[5] == lastByte(state);
    }

  private:
    static std::uint8_t lastByte(State state) { return state == State::second ? 2 : 1; }
    static inline const Address address = addressOf(0xffff, 1);
};

// Its second state is deprecated.
class AddressChange : public ComesAndGoes
{
  public:
    AddressChange(Rtnetlink &kernel, unsigned ifIndex) // ipAddressStatus
        : ComesAndGoes(kernel, ifIndex, instanceOf({34, 1, 7}, {}, address))
    {
    }
    void make(State state) override { changeAddress(kernel_, ifIndex_, address, state); }
    bool isRight(State state, const netsnmp_variable_list &answer) const override
    {
        constexpr long preferred = 1;
        constexpr long deprecated = 2;
        return state == State::absent ? !isPresent(answer)
                                      : answer.type == ASN_INTEGER &&
                                            *answer.val.integer == (state == State::second ? deprecated : preferred);
    }

  private:
    static inline const Address address = addressOf(0xfffe, 1);
};

// The prefix of an address that comes and goes.
class PrefixChange : public ComesAndGoes
{
  public:
    PrefixChange(Rtnetlink &kernel, unsigned ifIndex) // ipAddressPrefixOrigin
        : ComesAndGoes(kernel, ifIndex, instanceOf({32, 1, 5}, {ifIndex}, addressOf(0xfffd, 0), {64}))
    {
    }
    void make(State state) override
    {
        changeAddress(kernel_, ifIndex_, addressOf(0xfffd, 1), state == State::second ? State::first : state);
    }
};

// A default route, as if learned: not every agent lists a configured one.
class RouteChange : public ComesAndGoes
{
  public:
    RouteChange(Rtnetlink &kernel, unsigned ifIndex) // ipDefaultRouterLifetime
        : ComesAndGoes(kernel, ifIndex, instanceOf({37, 1, 4}, {}, gateway, {ifIndex}))
    {
    }
    void make(State state) override
    {
        const bool add = state != State::absent;
        RtnetlinkRequest request(add ? RTM_NEWROUTE : RTM_DELROUTE, add ? adding : NLM_F_ACK);
        rtmsg &header = request.family<rtmsg>();
        header.rtm_family = AF_INET6;
        header.rtm_table = RT_TABLE_MAIN;
        header.rtm_protocol = RTPROT_RA;
        header.rtm_scope = RT_SCOPE_UNIVERSE;
        header.rtm_type = RTN_UNICAST;
        header.rtm_flags = RTNH_F_ONLINK;
        mnl_attr_put(request.message(), RTA_GATEWAY, gateway.size(), gateway.data());
        mnl_attr_put_u32(request.message(), RTA_OIF, ifIndex_);
        mnl_attr_put_u32(request.message(), RTA_PRIORITY, metric);
        if (add) {
            mnl_attr_put_u32(request.message(), RTA_EXPIRES, 1800);
        }
        carryOut(kernel_, request, "route");
    }

  private:
    static constexpr std::uint32_t metric = 2000; // a route with another's would take its place
    static inline const Address gateway = addressOf(0xfffc, 1);
};

// An interface on top of the given one. Its number is chosen here, so that the row is known.
class InterfaceChange : public ComesAndGoes
{
  public:
    InterfaceChange(Rtnetlink &kernel, unsigned ifIndex) // ipIfStatsInReceives of ipv6
        : ComesAndGoes(kernel, ifIndex, {1, 3, 6, 1, 2, 1, 4, 31, 3, 1, 3, 2, number})
    {
    }
    void make(State state) override
    {
        const bool add = state != State::absent;
        if (add && there_) {
            return; // it has no second state
        }
        RtnetlinkRequest request(add ? RTM_NEWLINK : RTM_DELLINK, add ? NLM_F_ACK | NLM_F_CREATE : NLM_F_ACK);
        ifinfomsg &header = request.family<ifinfomsg>();
        header.ifi_index = number;
        if (add) {
            header.ifi_flags = header.ifi_change = IFF_UP;
            mnl_attr_put_strz(request.message(), IFLA_IFNAME, "change0");
            mnl_attr_put_u32(request.message(), IFLA_LINK, ifIndex_);
            nlattr *info = mnl_attr_nest_start(request.message(), IFLA_LINKINFO);
            mnl_attr_put_str(request.message(), IFLA_INFO_KIND, "macvlan");
            mnl_attr_nest_end(request.message(), info);
        }
        carryOut(kernel_, request, "interface");
        there_ = add;
    }

  private:
    static constexpr int number = 60'000;
    bool there_ = false;
};

} // namespace

std::unique_ptr<KernelChange> kernelChange(const std::string &kind, Rtnetlink &kernel, unsigned ifIndex)
{
    if (kind == "neighbour") {
        return std::make_unique<NeighbourChange>(kernel, ifIndex);
    }
    if (kind == "address") {
        return std::make_unique<AddressChange>(kernel, ifIndex);
    }
    if (kind == "prefix") {
        return std::make_unique<PrefixChange>(kernel, ifIndex);
    }
    if (kind == "route") {
        return std::make_unique<RouteChange>(kernel, ifIndex);
    }
    if (kind == "interface") {
        return std::make_unique<InterfaceChange>(kernel, ifIndex);
    }
    return nullptr;
}

void changeNeighbours(Rtnetlink &kernel, unsigned ifIndex, unsigned number, bool add)
{
    const std::uint8_t linkLayer[6] = {2, 0, 0, 1, 0, 0};
    for (unsigned i = 0; i < number; ++i) {
        changeNeighbour(kernel, ifIndex, addressOf(0xfffb, i + 1), add ? linkLayer : nullptr);
    }
}

} // namespace ipmib::bench
