// SPDX-License-Identifier: BSD-3-Clause
// Which sources there are, in which order, and what is known of their tables beside other agents.
#include "tables/served_device.h"

#include "host/recorded_over.h"

namespace ipmib::tables
{
namespace
{

const host::Oid mib2Parent{1, 3, 6, 1, 2};

class Sources
{
  public:
    void add(SourcePointer source)
    {
        if (source != nullptr) {
            sources_.push_back(std::move(source));
        }
    }
    void add(std::vector<SourcePointer> sources)
    {
        for (SourcePointer &source : sources) {
            add(std::move(source));
        }
    }
    std::vector<SourcePointer> take() { return std::move(sources_); }

  private:
    std::vector<SourcePointer> sources_;
};

std::vector<SourcePointer> ownTables(const IpmibPlatformHooks *platform, const host::SysUpTime &upTime,
                                     const bool &notifiesOfLinks)
{
    Sources sources;
    if (platform != nullptr && platform->interfaces != nullptr) {
        const IpmibInterfaceHooks &interfaces = *platform->interfaces;
        sources.add(interfaceScalars(interfaces));
        sources.add(ifTable(interfaces, upTime));
        sources.add(ifXTable(interfaces, upTime, notifiesOfLinks));
        sources.add(ifTableLastChange(interfaces, upTime));
        if (platform->ip != nullptr) {
            sources.add(ipIfStatsTable(*platform->ip, interfaces));
        }
    }
    if (platform != nullptr && platform->ipv4 != nullptr) {
        sources.add(ipAddrTable(*platform->ipv4));
        sources.add(ipNetToMediaTable(*platform->ipv4));
    }
    if (platform != nullptr && platform->ip != nullptr) {
        const IpmibIpHooks &ip = *platform->ip;
        sources.add(ifStackTable(ip));
        sources.add(ifStackLastChange(ip));
        sources.add(ifRcvAddressTable(ip));
        sources.add(ipInterfaceTables(ip));
        sources.add(ipSystemStatsTable(ip));
        sources.add(ipAddressPrefixTable(ip));
        sources.add(ipAddressTable(ip));
        sources.add(ipNetToPhysicalTable(ip));
        sources.add(ipDefaultRouterTable(ip));
        sources.add(icmpTables(ip));
        sources.add(ipScalars(ip));
        sources.add(icmpScalars(ip));
        sources.add(tcpScalars(ip));
        sources.add(udpScalars(ip));
    }
    if (platform != nullptr && platform->routes != nullptr) {
        const IpmibRouteHooks &routes = *platform->routes;
        sources.add(forwardingScalars(routes));
        sources.add(inetCidrRouteTable(routes));
        sources.add(ipCidrRouteTable(routes));
        sources.add(ipRouteTable(routes));
    }
    if (platform != nullptr && platform->connections != nullptr) {
        sources.add(connectionTables(*platform->connections));
        sources.add(tcpConnTable(*platform->connections));
        sources.add(udpTable(*platform->connections));
    }
    return sources.take();
}

// Beside net-snmp's agent, which has rows of both versions of IP.
std::vector<std::string_view> superiorTables(const IpmibPlatformHooks *platform)
{
    std::vector<std::string_view> names = {"ipv6InterfaceTable", "ipv6RouterAdvertTable"};
    if (platform != nullptr && platform->ipv4 != nullptr) {
        names.insert(names.end(), {"ipAddrTable", "ipNetToMediaTable"});
    }
    if (platform != nullptr && platform->ip != nullptr) {
        names.insert(names.end(), {"ipv4InterfaceTable", "ipSystemStatsTable", "ipIfStatsTable", "ipAddressPrefixTable",
                                   "ipAddressTable", "ipNetToPhysicalTable", "ipv6ScopeZoneIndexTable",
                                   "ipDefaultRouterTable", "icmpStatsTable", "icmpMsgStatsTable"});
    }
    return names;
}

// Whatever the source of a row is: modules ask the platform, too.
const std::vector<host::Catalogue::Contents::Followed> followedTables = {
    {"ipAddrTable", IPMIB_FOLLOW_ADDRESSES},           {"ipAddressTable", IPMIB_FOLLOW_ADDRESSES},
    {"ipAddressPrefixTable", IPMIB_FOLLOW_ADDRESSES},  {"ipv4InterfaceTable", IPMIB_FOLLOW_ADDRESSES},
    {"ipv6InterfaceTable", IPMIB_FOLLOW_ADDRESSES},    {"ipv6ScopeZoneIndexTable", IPMIB_FOLLOW_ADDRESSES},
    {"ipDefaultRouterTable", IPMIB_FOLLOW_ROUTERS},    {"ipNetToMediaTable", IPMIB_FOLLOW_NEIGHBOURS},
    {"ipNetToPhysicalTable", IPMIB_FOLLOW_NEIGHBOURS},
};

bool isCountedByInterface(const IpmibPlatformHooks *platform)
{
    return platform != nullptr && platform->interfaces != nullptr && platform->ip != nullptr &&
           platform->ip->interface_counters != nullptr;
}

host::Catalogue::Contents contentsOf(host::Plugin &plugin, const Descriptions &descriptions,
                                     const std::vector<SourcePointer> &own)
{
    host::Catalogue::Contents contents;
    contents.trees = {{&plugin.tree(), {}}, {&descriptions.root(), mib2Parent}};
    contents.sources = {&plugin.resolver()};
    for (const SourcePointer &source : own) {
        contents.sources.push_back(source.get());
    }
    contents.groups = {"ip", "ipForward", "icmp", "tcp", "udp"};
    contents.platform = plugin.platform();
    contents.superior = superiorTables(contents.platform);
    contents.followed = followedTables;
    if (isCountedByInterface(contents.platform)) {
        // modules have rows of IPv4 with zeros where nobody counts
        contents.rests.push_back({"ipIfStatsTable", IPMIB_IPV6});
    }
    if (contents.platform != nullptr && contents.platform->ip != nullptr) {
        // modules have rows of IPv6 alone
        contents.rests.insert(
            contents.rests.end(),
            {{"ipSystemStatsTable", IPMIB_IPV6}, {"icmpStatsTable", IPMIB_IPV6}, {"icmpMsgStatsTable", IPMIB_IPV6}});
    }
    if (contents.platform != nullptr && contents.platform->interfaces != nullptr) {
        contents.capabilities = {{host::Oid{1, 3, 6, 1, 2, 1, 31}, "The MIB module to describe network interfaces"}};
    }
    return contents;
}

} // namespace

ServedDevice::ServedDevice(host::Plugin &plugin)
    : upTime_(plugin.platform() == nullptr ? nullptr : plugin.platform()->uptime_began),
      own_(ownTables(plugin.platform(), upTime_, notifiesOfLinks_)), catalogue_(contentsOf(plugin, descriptions_, own_))
{
    if (plugin.platform() != nullptr && (systemSource_ = tables::systemGroup(*plugin.platform(), upTime_)) != nullptr) {
        const host::Oid node{1, 3, 6, 1, 2, 1, 1};
        systemGroup_ = {"system", node, node, node, systemSource_->objects(), systemSource_.get()};
    }
    if (plugin.platform() != nullptr && plugin.platform()->recorded != nullptr) {
        const IpmibRecordedHooks &recorded = *plugin.platform()->recorded;
        if (systemSource_ != nullptr) {
            recordedOverSystem_ = std::make_unique<host::RecordedOver>(systemSource_.get(), recorded);
            systemGroup_.source = recordedOverSystem_.get();
        }
        const host::Oid node{1, 3, 6, 1};
        recordedSource_ = std::make_unique<host::RecordedOver>(nullptr, recorded);
        recordedObjects_ = {"recorded objects", node, node, node, {}, recordedSource_.get()};
    }
    if (const auto own = ownUpTimeMs()) {
        upTime_.isDevices(*own);
    }
}

void ServedDevice::notifiesOfLinks(bool notifies)
{
    const IpmibPlatformHooks *platform = catalogue_.platform();
    notifiesOfLinks_ = notifies && platform != nullptr && platform->on_link_change != nullptr;
}

std::optional<std::uint64_t> ServedDevice::ownUpTimeMs() const
{
    const IpmibPlatformHooks *platform = catalogue_.platform();
    if (platform == nullptr || platform->uptime_ms == nullptr) {
        return std::nullopt;
    }
    return platform->uptime_ms();
}

const host::ServedTable *ServedDevice::recordedObjects() const
{
    const bool hasAny = recordedSource_ != nullptr && catalogue_.platform()->recorded->any() != 0;
    return hasAny ? &recordedObjects_ : nullptr;
}

bool ServedDevice::hasSystemGroup() const
{
    IpmibSystem system{};
    return systemGroup() != nullptr && catalogue_.platform()->system(&system) == 0;
}

} // namespace ipmib::tables
