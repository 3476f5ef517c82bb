// SPDX-License-Identifier: BSD-3-Clause
// Tells the log who serves what: once, and again what has changed.
#pragma once

#include "ownership.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

class OwnershipReport
{
  public:
    // How the lines begin, and the directive by which the user can change what they say.
    OwnershipReport(std::string topic, std::string directive);

    // The claims are decided, and those of the same tables each time.
    void log(const std::vector<Claim> &claims);

  private:
    void log(const Claim &claim) const;

    std::string topic_;
    std::string directive_;
    std::vector<std::string> told_; // of each table
};

} // namespace ipmib::agent
