// SPDX-License-Identifier: BSD-3-Clause
// Changes of the kernel's state that a manager can see, each with the question that shows it.
#pragma once

#include "core/rtnetlink.h"
#include "snmp_session.h"

#include <memory>
#include <string>

namespace ipmib::bench
{

// Something that comes and goes, and may stand in two ways.
class KernelChange
{
  public:
    enum class State { absent, first, second };

    virtual ~KernelChange() = default;
    // Returns when the kernel has made the change. Throws std::runtime_error when it refuses.
    virtual void make(State state) = 0;
    // The instance that a manager asks for, and whether the answer is that of the state.
    virtual const Identifier &instance() const = 0;
    virtual bool isRight(State state, const netsnmp_variable_list &answer) const = 0;
};

// neighbour, address, prefix, route or interface; null for another name. What changes lies on the interface.
std::unique_ptr<KernelChange> kernelChange(const std::string &kind, platform::Rtnetlink &kernel, unsigned ifIndex);

// Adds so many neighbours, or removes them.
void changeNeighbours(platform::Rtnetlink &kernel, unsigned ifIndex, unsigned number, bool add);

} // namespace ipmib::bench
