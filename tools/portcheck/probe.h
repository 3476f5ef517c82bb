// SPDX-License-Identifier: BSD-3-Clause
// Calls the services as the module does, one at a time: with records that are cleared before and watched behind their
// end, under the eyes of the supervisor.
#pragma once

#include "findings.h"
#include "items.h"
#include "services.h"
#include "watch.h"

#include <ipmib/platform_hooks.h>

#include <array>
#include <chrono>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace ipmib::portcheck
{

// "IF_IsValidIfIndex(3)".
std::string callText(const char *service, std::uint32_t number);

std::uint32_t swapped(std::uint32_t number);

class Probe
{
  public:
    Probe(const Services &services, const IpmibPlatformHooks *hooks, Watch &watch)
        : services_(services), hooks_(hooks), watch_(watch)
    {
    }

    // Tells the platform that a packet of requests begins: it may look at the clock and at its sources.
    void beginPacket();

    std::chrono::milliseconds clockTime{};

    void broken(Promise promise, std::string service, std::string seen)
    {
        report_.broken.push_back({promise, std::move(service), std::move(seen)});
    }
    std::size_t brokenCount() const { return report_.broken.size(); }
    std::size_t brokenCount(Promise promise) const;
    // What was told before stays.
    void forgetSince(std::size_t count)
    {
        report_.broken.erase(report_.broken.begin() + static_cast<std::ptrdiff_t>(count), report_.broken.end());
    }
    void fact(std::string text) { report_.facts.push_back(std::move(text)); }
    // A row, as --rows prints it: "prefix", and what it says.
    void row(const char *kind, const Items &items);
    Report takeReport() { return std::exchange(report_, {}); }
    void doing(std::string_view what) { watch_.step(what); }

    const Services &services() const { return services_; }

    // One call that fills a record: whether it succeeded. Whatever a failed call left in the record is cleared.
    template <typename Record, typename Call>
    bool fill(const std::string &what, Record &record, Call call)
    {
        struct {
            Record record;
            std::array<std::uint8_t, 256> behind;
        } area;
        area.record = record;
        area.behind.fill(untouched);
        doing(what);
        const bool succeeded = call(&area.record) == 0;
        for (const std::uint8_t byte : area.behind) {
            if (byte != untouched) {
                broken(Promise::keepsToRecord, what,
                       "it wrote behind the " + std::to_string(sizeof(Record)) + " bytes");
                break;
            }
        }
        record = succeeded ? area.record : Record{};
        return succeeded;
    }

    // Asks twice for one thing, right behind something else that is asked for, and then again: the answers agree, or
    // the platform gives out what it has left from the other.
    void expectSteady(const std::string &call, const std::string &who, const std::function<void()> &askOther,
                      const std::function<Items()> &ask);

    bool isValid(std::uint32_t ifIndex);
    // Whether it is a selected interface, or another one that IF_IsValidIfIndex knows, if that can be believed.
    bool isInterface(std::uint32_t ifIndex);
    void know(const std::vector<std::uint32_t> &interfaces);
    bool linkLocal(std::uint32_t ifIndex, FullAddressRecord &record);
    bool hasLinkLocalRow(std::uint32_t ifIndex);
    bool hasMainLinkLocal(std::uint32_t ifIndex);
    bool configuration(std::uint32_t ifIndex, NdIfConfigInfo &info);
    bool identifier(std::uint32_t ifIndex, std::array<std::uint8_t, 8> &identifier);
    std::uint32_t secondsSinceBoot();

  private:
    static constexpr std::uint8_t untouched = 0x5A;

    const Services &services_;
    const IpmibPlatformHooks *hooks_; // null when the platform has none
    Watch &watch_;
    Report report_;
    std::set<std::uint32_t> interfaces_; // that were selected in this chapter
};

} // namespace ipmib::portcheck
