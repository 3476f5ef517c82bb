// SPDX-License-Identifier: BSD-3-Clause
// All that is served of a device: the module's tables and the product's own, in one catalogue.
#pragma once

#include "tables/mib/descriptions.h"
#include "tables/tables.h"

#include "host/catalogue.h"
#include "host/plugin.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace ipmib::tables
{

class ServedDevice
{
  public:
    // The plug-in outlives it.
    explicit ServedDevice(host::Plugin &plugin);

    host::Catalogue &catalogue() { return catalogue_; }
    const host::Catalogue &catalogue() const { return catalogue_; }
    // The time since boot, or since the boot of a device with a clock of its own, unless whoever serves it says when
    // sysUpTime was 0.
    host::SysUpTime &sysUpTime() { return upTime_; }
    // Whoever serves it sends notifications of links that go up and down, if the platform tells of them, or does not
    // any more.
    void notifiesOfLinks(bool notifies);
    // Of a device with a clock of its own.
    std::optional<std::uint64_t> ownUpTimeMs() const;

  private:
    host::SysUpTime upTime_;
    bool notifiesOfLinks_ = false;
    Descriptions descriptions_;
    std::vector<SourcePointer> own_;
    host::Catalogue catalogue_;
};

} // namespace ipmib::tables
