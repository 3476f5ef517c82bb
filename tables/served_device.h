// SPDX-License-Identifier: BSD-3-Clause
// All that is served of a device: the module's tables and the product's own, in one catalogue.
#pragma once

#include "tables/mib/descriptions.h"
#include "tables/tables.h"

#include "host/catalogue.h"
#include "host/instances.h"
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
    // Of the platform; all tables are those of the one that is selected.
    host::Instances &instances() { return instances_; }
    // The system group as devices say it of themselves; null when the platform has none that do. It is not among the
    // catalogue's tables: an agent has one of its own.
    const host::ServedTable *systemGroup() const { return systemGroup_.source == nullptr ? nullptr : &systemGroup_; }
    // Whether the instance that is selected does.
    bool hasSystemGroup() const;
    // Objects outside of all tables that the selected instance answers as they were recorded; null when it has none.
    const host::ServedTable *recordedObjects() const;
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
    SourcePointer systemSource_;
    SourcePointer recordedOverSystem_;
    SourcePointer recordedSource_;
    host::ServedTable systemGroup_;
    host::ServedTable recordedObjects_;
    host::Instances instances_{catalogue_, upTime_};
};

} // namespace ipmib::tables
