// SPDX-License-Identifier: BSD-3-Clause
// A device in this process: its platform, the module, and the tables through which every value comes.
#include "local_device.h"

#include "near_names.h"
#include "table_reader.h"

#include "support/printable.h"

#include <ipmib/platform.h>

#include <dlfcn.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <stdexcept>

namespace ipmib::cli
{

LocalDevice::LocalDevice(const host::PluginOptions &options) : plugin_(options), device_(plugin_) {}

std::vector<host::Instances::Context> LocalDevice::contexts()
{
    const IpmibPlatformHooks *platform = plugin_.platform();
    if (device_.instances().canBeMany() && platform->instances->follow_contexts != nullptr) {
        char error[512] = "";
        if (platform->instances->follow_contexts("all", error, sizeof error) != 0) {
            error[sizeof error - 1] = '\0';
            throw std::runtime_error(error);
        }
    }
    return device_.instances().contexts();
}

void LocalDevice::select(const std::string &context)
{
    if (context.empty()) {
        return;
    }
    for (const host::Instances::Context &each : contexts()) {
        if (each.name == context) {
            device_.instances().select(device_.instances().create(each.argument));
            return;
        }
    }
    throw std::runtime_error("there is no context \"" + context + "\"; ipmibctl show contexts lists them");
}

void LocalDevice::freshState()
{
    device_.catalogue().beginPacket();
}

// Rows that take a while to be read are waited for.
void LocalDevice::begin(host::Source &source)
{
    constexpr int step = 10; // milliseconds
    source.start();
    while (!source.areRead() && wait(step)) {
    }
}

void LocalDevice::get(std::span<host::Variable> variables)
{
    for (host::Variable &variable : variables) {
        variable.status = host::Status::noSuchObject;
    }
    store_.clear(); // what a source has answered is good until it is asked again, and tables share theirs
    for (const host::ServedTable &table : tree().tables()) {
        std::vector<host::Variable> asked;
        std::vector<host::Variable *> whose;
        for (host::Variable &variable : variables) {
            if (host::isWithin(variable.asked, table.root.view())) {
                asked.push_back(variable);
                whose.push_back(&variable);
            }
        }
        if (asked.empty()) {
            continue;
        }
        begin(*table.source);
        table.source->get(asked);
        for (std::size_t i = 0; i < asked.size(); ++i) {
            *whose[i] = asked[i];
            whose[i]->value = host::kept(asked[i].value, store_);
        }
    }
}

void LocalDevice::getNext(std::span<host::Variable> variables, host::OidView region)
{
    const host::ServedTable *table = tree().tableOf(region);
    if (table == nullptr) {
        for (host::Variable &variable : variables) {
            variable.status = host::Status::endOfRegion;
        }
        return;
    }
    begin(*table->source);
    table->source->getNext(variables, region);
}

bool LocalDevice::wait(int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    const IpmibPlatformHooks *platform = plugin_.platform();
    const int descriptor = platform != nullptr && platform->descriptor != nullptr ? platform->descriptor() : -1;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0) {
            return true;
        }
        pollfd work{descriptor, POLLIN, 0}; // a negative descriptor is never ready
        const int ready = poll(&work, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) {
            return false;
        }
        if (ready > 0) {
            platform->dispatch();
        }
    }
}

std::vector<const host::ServedTable *> LocalDevice::allServed()
{
    std::vector<const host::ServedTable *> all;
    for (const host::ServedTable &table : tree().tables()) {
        begin(*table.source);
        all.push_back(&table);
    }
    if (device_.hasSystemGroup()) {
        all.push_back(device_.systemGroup());
    }
    if (const host::ServedTable *recorded = device_.recordedObjects()) {
        all.push_back(recorded);
    }
    return all;
}

void LocalDevice::reload()
{
    if (plugin_.platform() != nullptr && plugin_.platform()->reload != nullptr) {
        plugin_.platform()->reload();
    }
}

const IpmibRouteHooks *LocalDevice::routes()
{
    const IpmibPlatformHooks *platform = plugin_.platform();
    const Object *number = tree().named("inetCidrRouteNumber");
    const host::ServedTable *table = number == nullptr ? nullptr : tree().tableOf(number->oid.view());
    if (platform == nullptr || table == nullptr) {
        return nullptr;
    }
    begin(*table->source);
    return platform->routes;
}

std::uint32_t LocalDevice::uptime() const
{
    // The platform's symbols are global, as the module needs them.
    using Service = decltype(&TIME_GetSystemBootTime);
    const auto service = reinterpret_cast<Service>(dlsym(RTLD_DEFAULT, "TIME_GetSystemBootTime"));
    std::uint32_t seconds = 0;
    std::uint32_t other = 0;
    if (service != nullptr) {
        service(&seconds, &other);
    }
    return seconds;
}

std::uint32_t LocalDevice::linkLocalPrefixLength(std::uint32_t ifIndex) const
{
    const IpmibPlatformHooks *platform = plugin_.platform();
    const bool knows =
        platform != nullptr && platform->ip != nullptr && platform->ip->link_local_prefix_length != nullptr;
    return knows ? platform->ip->link_local_prefix_length(ifIndex) : 0;
}

std::string LocalDevice::interfaceName(std::uint32_t ifIndex) const
{
    const IpmibPlatformHooks *platform = plugin_.platform();
    const char *name =
        platform != nullptr && platform->interface_name != nullptr ? platform->interface_name(ifIndex) : nullptr;
    return name == nullptr ? std::to_string(ifIndex) : support::printable(name);
}

std::uint32_t LocalDevice::interfaceIndex(std::string_view name)
{
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error == std::errc() && end == name.data() + name.size()) {
        return number;
    }
    const std::string shown = support::printable(name);
    for (const std::uint32_t ifIndex : interfaceIndexes()) {
        if (interfaceName(ifIndex) == shown) {
            return ifIndex;
        }
    }
    throw std::runtime_error("no interface is called " + std::string(name) + didYouMean(shown, interfaceNames()));
}

std::vector<std::string> LocalDevice::interfaceNames()
{
    std::vector<std::string> names;
    for (const std::uint32_t ifIndex : interfaceIndexes()) {
        names.push_back(interfaceName(ifIndex));
    }
    return names;
}

std::vector<std::uint32_t> LocalDevice::interfaceIndexes()
{
    // A platform that leaves interface tables to somebody else has them in the traffic of IP alone.
    const host::Object *own = tree().named("ifIndex");
    const bool hasOwn = own != nullptr && own->isServed;
    TableReader interfaces(*this, hasOwn ? "ifEntry" : "ipIfStatsEntry", {hasOwn ? "ifIndex" : "ipIfStatsHCInReceives"},
                           TableReader::Rows::all);
    std::vector<std::uint32_t> indexes;
    while (interfaces.next()) {
        const std::uint32_t ifIndex = interfaces.key().number(hasOwn ? 0 : 1);
        if (std::ranges::find(indexes, ifIndex) == indexes.end()) {
            indexes.push_back(ifIndex);
        }
    }
    return indexes;
}

} // namespace ipmib::cli
