// SPDX-License-Identifier: BSD-3-Clause
// All that is served of a device: the module's tables and the product's own, in one catalogue.
#pragma once

#include "tables/mib/descriptions.h"
#include "tables/tables.h"

#include "host/catalogue.h"
#include "host/plugin.h"

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
    // Whoever serves the device says when sysUpTime was 0.
    host::SysUpTime &sysUpTime() { return upTime_; }

  private:
    host::SysUpTime upTime_;
    Descriptions descriptions_;
    std::vector<SourcePointer> own_;
    host::Catalogue catalogue_;
};

} // namespace ipmib::tables
