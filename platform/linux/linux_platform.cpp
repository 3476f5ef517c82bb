// SPDX-License-Identifier: BSD-3-Clause
// The Linux platform in one network namespace: every mirror, reader and timer, from start to stop.
#include "linux_platform.h"

#include "core/hooks.h"
#include "core/log.h"
#include "core/uptime.h"
#include "links/interface_row.h"

#include <ipmib/contract_note.h>

#include <sys/utsname.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string_view>

namespace ipmib::platform
{

namespace
{
constexpr std::uint32_t routerServices = 4; // sysServices of what works on the layer of IP
constexpr std::uint32_t usualHopLimit = 64; // of a kernel without IPv6, and of every kernel that nobody configured
} // namespace

std::string LinuxPlatform::takeArgument(const char *argument)
{
    return *argument == '\0' ? "" : "platform linux takes no argument, not \"" + std::string(argument) + "\"";
}

std::string LinuxPlatform::takeOption(const IpmibPlatformOption &option)
{
    const std::string_view name = option.name;
    const std::string_view value = option.value;
    if (name == "radvd-conf") {
        settings_.radvdConf = value;
        return value.empty() ? "--radvd-conf needs the name of a file" : "";
    }
    if (name == "route-tables") {
        settings_.routeTables = value;
        return routes_.takeTables(settings_.routeTables);
    }
    for (const auto &[known, setting] :
         {std::pair("ipv4-accounting", &Settings::ipv4Accounting), {"router-anycast", &Settings::routerAnycast}}) {
        if (name == known) {
            settings_.*setting = true;
            return value.empty() ? ""
                                 : "--" + std::string(known) + " takes no value, not \"" + std::string(value) + "\"";
        }
    }
    return "there is no option --" + std::string(name) +
           "; those of platform linux are --ipv4-accounting, --radvd-conf=FILE, --route-tables=LIST and "
           "--router-anycast";
}

std::string LinuxPlatform::start(const Settings &settings)
{
    now_ = secondsSinceBoot();
    receiveBuffer_ = settings.receiveBuffer;
    routerAnycast_ = settings.routerAnycast;
    if (!loop_.open()) {
        return std::string("cannot create an epoll instance: ") + std::strerror(errno);
    }
    for (DumpQueue *dumps : {&dumps_, &routeDumps_}) {
        if (const std::string error = dumps->start(loop_); !error.empty()) {
            return error;
        }
    }
    if (!requests_.open()) {
        return "cannot open a netlink socket: " + requests_.error();
    }
    links_.onDown([this](std::uint32_t ifIndex) {
        if (links_.find(ifIndex) == nullptr) {
            forgetLink(ifIndex);
        }
        addressing_.linkDown(ifIndex);
    });
    for (Mirror *mirror : {&linkMirror_}) {
        if (const std::string error = mirror->start(loop_, settings.receiveBuffer); !error.empty()) {
            return error;
        }
    }
    if (const std::string error = addressing_.start(loop_, settings.receiveBuffer); !error.empty()) {
        return error;
    }
    if (const std::string error = neighbours_.start(loop_, settings.receiveBuffer); !error.empty()) {
        return error;
    }
    radvd_.start(loop_, settings.radvdConf);
    if (!settings.ipv4Accounting && ownNamespace() != nullptr) {
        // It was said at the start.
    } else if (!settings.ipv4Accounting) {
        logInfo("ipv4: traffic is not counted by interface (the kernel does not; --ipv4-accounting does)");
    } else if (const std::string error = ipv4Accounting_.start(); !error.empty()) {
        return error;
    }
    hopLimitFile_.open(); // and keep it
    if (!systemCounters_.available()) {
        logWarning("ipv6: the kernel has no IPv6 in this network namespace, its tables stay empty");
    }
    return "";
}

LinuxPlatform::~LinuxPlatform()
{
    if (parent_ != nullptr) {
        parent_->forget(loop_.descriptor());
    }
}

std::string LinuxPlatform::startAnother(const std::string &argument, LinuxPlatform &another)
{
    std::istringstream words(argument);
    std::string kind;
    std::string which;
    words >> kind >> which;
    if (kind != "netns" || which.empty()) {
        return "platform linux shows \"netns NAME\", \"netns PATH\" or \"netns PID\", not \"" + argument + "\"";
    }
    if (std::string error = another.namespace_.open(helper_, which); !error.empty()) {
        return error;
    }
    another.name_ = which.substr(which.find_last_of('/') + 1);
    Settings settings = settings_;
    settings.radvdConf = "/etc/netns/" + another.name_ + "/radvd.conf"; // where `ip netns exec` would show it
    if (!settings.routeTables.empty()) {
        another.routes_.takeTables(settings.routeTables);
    }
    const ChosenNamespace chosen(&another.namespace_);
    if (std::string error = another.start(settings); !error.empty()) {
        return "network namespace " + which + ": " + error;
    }
    if (!loop_.watch(another.loop_.descriptor(), PlatformLoop::Work::background, [&another] { another.dispatch(); })) {
        return std::string("cannot watch a network namespace: ") + std::strerror(errno);
    }
    another.parent_ = &loop_;
    return "";
}

bool LinuxPlatform::findContext(std::size_t place, IpmibContext &context) const
{
    if (place >= namespaces_.all().size()) {
        return false;
    }
    const NamedNamespaces::Named &named = namespaces_.all()[place];
    context = {named.name.c_str(), named.argument.c_str()};
    return true;
}

std::string LinuxPlatform::followContexts(const char *argument)
{
    if (argument != std::string_view("netns all") && argument != std::string_view("all")) {
        return "platform linux knows \"netns all\", not \"" + std::string(argument) + "\"";
    }
    if (const std::string error = helper_.follow(); !error.empty()) {
        return error;
    }
    return namespaces_.follow(loop_);
}

bool LinuxPlatform::findSystem(IpmibSystem &system) const
{
    if (ownNamespace() == nullptr) {
        return false;
    }
    static const std::uint32_t linuxAgent[] = {1, 3, 6, 1, 4, 1, 8072, 3, 2, 10}; // as the library says of itself
    static const std::string description = [] {
        utsname names{};
        uname(&names);
        return std::string(names.sysname) + " " + names.nodename + " " + names.release + " " + names.version + " " +
               names.machine;
    }();
    system = {description.c_str(), "", name_.c_str(), "", linuxAgent, std::size(linuxAgent), routerServices};
    return true;
}

// The host has begun to work, and will answer strangers: what namespaces there may be was said before.
void LinuxPlatform::dispatch()
{
    helper_.settle(settings_.ipv4Accounting);
    const ChosenNamespace chosen(ownNamespace());
    loop_.run();
    ip_.noteChanges();
}

void LinuxPlatform::beginPacket()
{
    loop_.runAnnouncements();
    ip_.noteChanges();
    now_ = secondsSinceBoot();
    addressing_.newPacket();
    ip6Links_.newPacket();
    linkTraffic_.newPacket();
    systemCounters_.newPacket();
    ipv4Counters_.newPacket();
    rowHopLimit_.newPacket();
    ip_.newPacket();
    ipv4Accounting_.checkRoomFor(links_.size());
}

std::uint32_t LinuxPlatform::areCurrent(std::uint32_t rows) const
{
    const auto wants = [rows](std::uint32_t any) { return (rows & any) != 0; };
    const bool areBehind =
        (wants(IPMIB_FOLLOW_ADDRESSES) && (addressing_.addressesAreBehind() || ipv4_.addressesAreBehind())) ||
        // Whether a prefix is on the link is told by the routes.
        (wants(IPMIB_FOLLOW_ADDRESSES | IPMIB_FOLLOW_ROUTERS) &&
         (addressing_.routesAreBehind() || ipv4_.routesAreBehind())) ||
        (wants(IPMIB_FOLLOW_NEIGHBOURS) && (neighbours_.mirror().isBehind() || ipv4_.neighbours().mirror().isBehind()));
    return areBehind ? 0 : 1;
}

void LinuxPlatform::reload()
{
    radvd_.reload();
}

void LinuxPlatform::onLinkChange(IpmibLinkChanged changed, void *context)
{
    if (changed == nullptr) {
        links_.onChange({});
        return;
    }
    links_.onChange([changed, context](const Link *before, const Link *now) {
        IpmibLinkChange change{};
        change.if_index = before == nullptr ? now->ifIndex : before->ifIndex;
        change.before = before == nullptr ? 0 : operStatus(*before);
        change.oper_status = now == nullptr ? 0 : operStatus(*now);
        change.admin_status = now != nullptr && (now->flags & IFF_UP) != 0 ? IPMIB_ADMIN_UP : IPMIB_ADMIN_DOWN;
        if (change.before != change.oper_status) {
            changed(context, &change);
        }
    });
}

const char *LinuxPlatform::interfaceName(std::uint32_t ifIndex) const
{
    const Link *link = links_.find(ifIndex);
    return link == nullptr ? nullptr : link->name;
}

bool LinuxPlatform::findInterface(std::uint32_t ifIndex, IpmibInterface &interface)
{
    return describe(links_.find(ifIndex), interface);
}

bool LinuxPlatform::interfaceAfter(std::uint32_t ifIndex, IpmibInterface &interface)
{
    return describe(links_.after(ifIndex), interface);
}

bool LinuxPlatform::describe(const Link *link, IpmibInterface &interface)
{
    if (link == nullptr) {
        return false;
    }
    platform::describe(*link, interface);
    interface.speed = linkSpeeds_.of(*link);
    return true;
}

bool LinuxPlatform::traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic)
{
    const IpmibInterfaceTraffic *read = links_.find(ifIndex) == nullptr ? nullptr : linkTraffic_.read(ifIndex);
    if (read == nullptr) {
        return false;
    }
    traffic = *read;
    return true;
}

void LinuxPlatform::forgetLink(std::uint32_t ifIndex)
{
    ip6Links_.forget(ifIndex);
    linkTraffic_.forget(ifIndex);
    linkSpeeds_.forget(ifIndex);
    ipv4Accounting_.linkRemoved(ifIndex);
}

const Ip6Link *LinuxPlatform::ip6Link(std::uint32_t ifIndex)
{
    if (links_.find(ifIndex) == nullptr) {
        return nullptr;
    }
    const Ip6Link *link = ip6Links_.read(ifIndex);
    return link != nullptr && link->present ? link : nullptr;
}

std::uint32_t LinuxPlatform::hopLimit()
{
    return hopLimitFile_.readNumber().value_or(usualHopLimit);
}

} // namespace ipmib::platform

IPMIB_CONTRACT_NOTE;

// What the host calls to drive the platform.
extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks =
    ipmib::platform::Hooks<ipmib::platform::LinuxPlatform>::record();
