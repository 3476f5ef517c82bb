// SPDX-License-Identifier: BSD-3-Clause
// Writes instances with their values, one in a line.
#pragma once

#include "colour.h"
#include "local_device.h"
#include "options.h"

#include "host/resolver.h"

namespace ipmib::cli
{

class InstanceWriter
{
  public:
    InstanceWriter(const LocalDevice &device, const Options &options)
        : device_(device), palette_(Palette::ofStandardOutput(options)), json_(options.json)
    {
    }

    void add(host::OidView name, const host::Value &value);
    void finish();

  private:
    const LocalDevice &device_;
    Palette palette_;
    bool json_;
    bool any_ = false;
};

} // namespace ipmib::cli
