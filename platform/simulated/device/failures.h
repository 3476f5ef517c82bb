// SPDX-License-Identifier: BSD-3-Clause
// Which services there are, what they need, and which of them fail at what time.
#pragma once

#include "scenario/schedule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::simulated
{

enum class Service {
#define IPMIB_SERVICE(name, ...) name,
#include <ipmib/services.def>
#undef IPMIB_SERVICE
    count
};

struct ServiceInfo {
    const char *name;
    enum class Part { device, ip6, ip4 } part; // what must run for it
    bool ofInterface;                          // it is asked about one interface
    std::uint32_t failure;                     // what it answers when it fails
};
const ServiceInfo &infoOf(Service service);
std::optional<Service> serviceNamed(const std::string &name);

struct Failure {
    Service service;
    std::uint32_t ifIndex; // of the interface that it fails for; 0: all
    std::uint32_t result;
    Schedule schedule;
};

class Failures
{
  public:
    bool empty() const { return failures_.empty(); }
    void add(Failure failure) { failures_.push_back(std::move(failure)); }
    // The result of a service that fails now, asked about an interface or (0) about none.
    std::optional<std::uint32_t> find(Service service, std::uint32_t ifIndex, Time time) const
    {
        return failures_.empty() ? std::nullopt : findAmong(service, ifIndex, time);
    }

  private:
    std::optional<std::uint32_t> findAmong(Service service, std::uint32_t ifIndex, Time time) const;

    std::vector<Failure> failures_; // a handful
};

} // namespace ipmib::simulated
