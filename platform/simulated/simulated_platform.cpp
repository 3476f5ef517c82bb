// SPDX-License-Identifier: BSD-3-Clause
// The one simulated platform of a process: a device, and the clock by which it lives.
#include "simulated_platform.h"

#include "core/hooks.h"
#include "core/log.h"
#include "scenario/read.h"

#include <ipmib/contract_note.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace ipmib::simulated
{
namespace
{

std::optional<Time> parseSeconds(std::string_view text)
{
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    constexpr double longest = 1e9;
    if (error != std::errc() || end != text.data() + text.size() || !(seconds >= 0) || !(seconds <= longest)) {
        return std::nullopt;
    }
    return static_cast<Time>(seconds * 1'000);
}

} // namespace

std::string SimulatedPlatform::takeArgument(const char *argument)
{
    path_ = argument;
    return path_.empty() ? "platform simulated needs a scenario: --platform simulated:FILE" : "";
}

std::string SimulatedPlatform::takeOption(const IpmibPlatformOption &option)
{
    if (option.name != std::string_view("at")) {
        return std::string("there is no option --") + option.name + "; that of platform simulated is --at=SECONDS";
    }
    stopped_ = parseSeconds(option.value);
    return stopped_ ? "" : std::string("--at needs the seconds since the device's start, not \"") + option.value + "\"";
}

void SimulatedPlatform::take(Device device)
{
    device_ = std::move(device);
    hasFailures_ = !device_.failures.empty() || !device_.ip6Down.never() || !device_.ip4Down.never();
}

std::string SimulatedPlatform::start()
{
    try {
        take(readScenario(path_));
    } catch (const ScenarioError &error) {
        return error.what();
    }
    start_ = std::chrono::steady_clock::now();
    beginPacket();
    const bool anyChanges = std::ranges::any_of(device_.interfaces(),
                                                [](const Interface &interface) { return !interface.outages.never(); });
    if (!stopped_ && anyChanges) {
        linkClock_.open();
    }
    return "";
}

Time SimulatedPlatform::now() const
{
    using std::chrono::milliseconds;
    const auto elapsed = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start_);
    return stopped_.value_or(static_cast<Time>(elapsed.count()));
}

void SimulatedPlatform::beginPacket()
{
    device_.setTime(now());
    if (uptimeBeganMs_) {
        const auto sinceStart = static_cast<std::int64_t>(*uptimeBeganMs_ - startMs() + stopped_.value_or(0));
        device_.setUptimeBegan(std::int64_t{device_.uptimeS} * 1'000 + sinceStart);
    }
    rowHopLimit_.newPacket();
    linkClock_.run(device_.time());
}

void SimulatedPlatform::uptimeBegan(std::uint64_t monotonicMs)
{
    uptimeBeganMs_ = monotonicMs;
    beginPacket();
}

std::uint64_t SimulatedPlatform::startMs() const
{
    using std::chrono::milliseconds;
    return static_cast<std::uint64_t>(std::chrono::duration_cast<milliseconds>(start_.time_since_epoch()).count());
}

void SimulatedPlatform::reload()
{
    try {
        take(readScenario(path_));
        routes_.newDevice();
        linkClock_.beginAt(now());
        beginPacket();
    } catch (const ScenarioError &error) {
        platform::logError("simulated: %s; the device stays as it was", error.what());
    }
}

const char *SimulatedPlatform::interfaceName(std::uint32_t ifIndex) const
{
    const Interface *interface = device_.find(ifIndex);
    return interface == nullptr ? nullptr : interface->name.c_str();
}

std::uint64_t SimulatedPlatform::onMonotonicClock(Time time) const
{
    const std::uint64_t moment = startMs() + time;
    const Time standing = stopped_.value_or(0); // so long ago the device of a stopped clock began
    return time == 0 || moment <= standing ? 0 : moment - standing;
}

bool SimulatedPlatform::describe(const Interface *interface, IpmibInterface &row) const
{
    if (interface == nullptr) {
        return false;
    }
    row = interface->row(device_.time());
    row.changed_ms = onMonotonicClock(interface->outages.lastChange(device_.time()));
    return true;
}

bool SimulatedPlatform::traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic) const
{
    const Interface *interface = device_.find(ifIndex);
    if (interface == nullptr) {
        return false;
    }
    traffic = interface->traffic(device_.time());
    return true;
}

std::uint32_t SimulatedPlatform::interfaceCount() const
{
    const auto &all = device_.interfaces();
    return static_cast<std::uint32_t>(std::count_if(
        all.begin(), all.end(), [this](const Interface &interface) { return interface.exists(device_.time()); }));
}

std::uint64_t SimulatedPlatform::interfacesChangedMs() const
{
    Time last = 0;
    for (const Interface &interface : device_.interfaces()) {
        last = std::max(last, interface.outagesRemove ? interface.outages.lastChange(device_.time()) : 0);
    }
    return onMonotonicClock(last);
}

} // namespace ipmib::simulated

IPMIB_CONTRACT_NOTE;

// What the host calls to drive the platform.
extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks =
    ipmib::platform::Hooks<ipmib::simulated::SimulatedPlatform>::record();
