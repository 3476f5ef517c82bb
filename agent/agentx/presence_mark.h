// SPDX-License-Identifier: BSD-3-Clause
// By which one ipmibd on this machine knows that another one is a sub-agent of the same master.
#pragma once

#include "agent/agentx/master_address.h"

namespace ipmib::agent::agentx
{

class PresenceMark
{
  public:
    // Set as long as it lives; a second one beside it changes nothing.
    explicit PresenceMark(const MasterAddress &master);
    ~PresenceMark();
    PresenceMark(const PresenceMark &) = delete;
    PresenceMark &operator=(const PresenceMark &) = delete;

    static bool isSet(const MasterAddress &master);

  private:
    int descriptor_;
};

} // namespace ipmib::agent::agentx
