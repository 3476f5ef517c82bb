// SPDX-License-Identifier: BSD-3-Clause
// The devices that one scenario file describes beside its own: each a scenario, or many variations of one.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace ipmib::simulated
{

class Fleet
{
  public:
    // The member `devices` of a scenario in this folder, in which further files are named. Makes the first device of
    // each entry, to see that it can be made. Throws ScenarioError.
    void read(const Value &devices, const std::string &folder);

    std::size_t size() const { return devices_.size(); }
    const std::string &name(std::size_t place) const { return devices_[place].name; }
    // Where it listens for itself; may be empty.
    const std::string &address(std::size_t place) const { return devices_[place].address; }
    std::optional<std::size_t> find(const std::string &name) const;
    // Throws ScenarioError with the device's name in front.
    Device make(std::size_t place) const;

  private:
    struct Entry {
        std::shared_ptr<const Json> scenario;
        std::string where; // "devices[2].scenario", or a file's name
        bool varies;       // it has a count
    };
    struct Member {
        std::string name;
        std::size_t entry;
        std::uint32_t number; // {n}
        std::string address = {};
    };

    void readEntry(const Value &value, const std::string &folder);

    std::vector<Entry> entries_;
    std::vector<Member> devices_;
    std::unordered_map<std::string, std::size_t> byName_;
};

// The text with `{n}`, `{n+K}`, `{n/K}` and `{n%K}` replaced by what they stand for; a brace that begins none of them
// is a brace. Throws ScenarioError.
std::string varied(const std::string &text, std::uint32_t n);

} // namespace ipmib::simulated
