// SPDX-License-Identifier: BSD-3-Clause
// Serves a plug-in's objects inside an agent that is built on the net-snmp library, whichever agent that is.
#pragma once

#include "host/plugin.h"

#include <memory>

namespace ipmib::agent
{

class Frontend
{
  public:
    // Registers every region that the module serves, and the platform's descriptor with the library's wait. The plug-in
    // must outlive the front end. Throws std::runtime_error when the library refuses a registration.
    explicit Frontend(host::Plugin &plugin);
    ~Frontend();
    Frontend(const Frontend &) = delete;
    Frontend &operator=(const Frontend &) = delete;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::agent
