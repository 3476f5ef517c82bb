// SPDX-License-Identifier: BSD-3-Clause
// The MIBs of own tables that no module describes.
#pragma once

#include "host/mib_description.h"

namespace ipmib::tables
{

// Of the nodes below mib-2, which is the root.
class Descriptions
{
  public:
    Descriptions();
    const MibTreeNode &root() const { return mib_.root(); }

  private:
    host::MibDescription mib_;
};

} // namespace ipmib::tables
