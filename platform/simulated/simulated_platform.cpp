// SPDX-License-Identifier: BSD-3-Clause
// A simulated device, and the clock by which it lives.
#include "simulated_platform.h"

#include "core/hooks.h"
#include "core/log.h"
#include "scenario/change.h"
#include "scenario/read.h"

#include <ipmib/contract_note.h>

#include <nlohmann/json.hpp>

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
    originals_ = {};
    hasFailures_ = !device_.failures.empty() || !device_.ip6Down.never() || !device_.ip4Down.never();
}

std::string SimulatedPlatform::start()
{
    try {
        Scenario scenario = readScenario(path_);
        *fleet_ = std::move(scenario.fleet);
        if (!stopped_) {
            wakeUps_->open();
        }
        begin(std::move(scenario.device));
    } catch (const ScenarioError &error) {
        return error.what();
    }
    return "";
}

void SimulatedPlatform::begin(Device device)
{
    take(std::move(device));
    start_ = std::chrono::steady_clock::now();
    newTimes();
    beginPacket();
}

std::string SimulatedPlatform::startAnother(const std::string &name, SimulatedPlatform &another) const
{
    const auto place = fleet_->find(name);
    if (!place) {
        return path_ + " has no device \"" + name + "\"";
    }
    another.path_ = path_;
    another.fleet_ = fleet_;
    another.wakeUps_ = wakeUps_;
    another.name_ = name;
    another.stopped_ = stopped_;
    try {
        another.begin(fleet_->make(*place));
    } catch (const ScenarioError &error) {
        return path_ + ": " + error.what();
    }
    return "";
}

bool SimulatedPlatform::findContext(std::size_t place, IpmibContext &context) const
{
    if (place >= fleet_->size()) {
        return false;
    }
    context.name = context.argument = fleet_->name(place).c_str();
    return true;
}

const char *SimulatedPlatform::contextAddress(std::size_t place) const
{
    return place < fleet_->size() ? fleet_->address(place).c_str() : "";
}

std::string SimulatedPlatform::followContexts(const char *argument)
{
    return argument == std::string_view("all")
               ? ""
               : "platform simulated has the contexts of its scenario, not \"" + std::string(argument) + "\"";
}

bool SimulatedPlatform::findSystem(IpmibSystem &system) const
{
    const SystemGroup &own = device_.system;
    if (!own.isThere && name_.empty()) {
        return false;
    }
    system = {own.description.c_str(),
              own.contact.c_str(),
              own.name.empty() ? name_.c_str() : own.name.c_str(),
              own.location.c_str(),
              own.objectId.data(),
              own.objectId.size(),
              own.services};
    return true;
}

Time SimulatedPlatform::elapsed() const
{
    using std::chrono::milliseconds;
    const auto elapsed = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start_);
    return stopped_.value_or(static_cast<Time>(elapsed.count()));
}

Time SimulatedPlatform::lastBoot() const
{
    const Time time = elapsed();
    const Schedule &reboots = device_.reboots;
    Time last = reboots.lastChange(time);
    if (last != 0 && reboots.covers(time)) {
        last = reboots.lastChange(last - 1);
    }
    return std::max(last, rebootsTo_ <= time ? rebootsTo_ : 0);
}

// Everything begins anew, as it would with another start.
void SimulatedPlatform::bootWhenDue()
{
    const Time last = lastBoot();
    if (last == bootedAt_) {
        return;
    }
    bootedAt_ = last;
    ++reboots_;
    device_.uptimeS = 0;
    originals_.applyTo(device_);
    originals_ = {};
    newTimes();
}

// Also for the clock of the links, which wakes up when a reboot ends.
void SimulatedPlatform::newTimes()
{
    const Time time = elapsed();
    std::optional<Time> next = device_.reboots.nextChange(time);
    if (next && !device_.reboots.covers(time)) {
        next = device_.reboots.nextChange(*next);
    }
    if (rebootsTo_ > time) {
        next = std::min(next.value_or(rebootsTo_), rebootsTo_);
    }
    linkClock_.wakeUpAt(next ? std::optional(*next - bootedAt_) : std::nullopt);
    linkClock_.beginAt(now());
}

void SimulatedPlatform::nextAnswer(IpmibAnswerFaults &faults)
{
    const Time time = elapsed();
    const bool isAway = device_.reboots.covers(time) || (time >= rebootsFrom_ && time < rebootsTo_);
    faults = device_.faults.empty() ? IpmibAnswerFaults{} : device_.faults.next(time);
    faults.kinds |= isAway ? std::uint32_t{IPMIB_FAULT_SILENCE} : 0u;
}

std::string SimulatedPlatform::change(const char *text, std::size_t length, int takesEffect)
{
    try {
        const Json json = readJson({text, length});
        beginPacket();
        const Change change = Change::read(Value(json), device_, elapsed());
        if (takesEffect == 0) {
            return "";
        }
        const LinkClock::States before = linkClock_.states();
        change.keepOriginals(device_, originals_);
        change.applyTo(device_);
        linkClock_.tellChangesSince(before);
        if (change.reboot()) {
            rebootsFrom_ = elapsed();
            rebootsTo_ = rebootsFrom_ + *change.reboot();
        }
        beginPacket();
        newTimes();
        return "";
    } catch (const ScenarioError &error) {
        return error.what();
    }
}

void SimulatedPlatform::beginPacket()
{
    bootWhenDue();
    device_.setTime(now());
    if (uptimeBeganMs_) {
        const auto sinceStart = static_cast<std::int64_t>(*uptimeBeganMs_ - startMs() + stopped_.value_or(0));
        device_.setUptimeBegan(std::int64_t{device_.uptimeS} * 1'000 + sinceStart);
    }
    rowHopLimit_.newPacket();
    linkClock_.run(device_.time());
}

void SimulatedPlatform::wakeUp()
{
    bootWhenDue();
    linkClock_.wakeUp(now());
}

void SimulatedPlatform::wakeUpAt(std::optional<Time> time)
{
    const auto moment = [&] { return start_ + std::chrono::milliseconds(std::uint64_t{bootedAt_} + *time); };
    wakeUps_->set(*this, time ? std::optional(moment()) : std::nullopt);
}

void SimulatedPlatform::uptimeBegan(std::uint64_t monotonicMs)
{
    uptimeBeganMs_ = monotonicMs;
    beginPacket();
}

std::uint64_t SimulatedPlatform::startMs() const
{
    using std::chrono::milliseconds;
    return static_cast<std::uint64_t>(std::chrono::duration_cast<milliseconds>(start_.time_since_epoch()).count()) +
           bootedAt_;
}

void SimulatedPlatform::reload()
{
    try {
        if (name_.empty()) {
            Scenario scenario = readScenario(path_);
            *fleet_ = std::move(scenario.fleet);
            ++fleetVersion_;
            take(std::move(scenario.device));
        } else if (const auto place = fleet_->find(name_)) { // the file's own device has read it
            take(fleet_->make(*place));
        }
        device_.uptimeS = reboots_ == 0 ? device_.uptimeS : 0;
        routes_.newDevice();
        newTimes();
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
