// SPDX-License-Identifier: BSD-3-Clause
// For tests: what the services say of neighbours, and what the kernel's own tool says, in one form.
#pragma once

#include "netns/namespace.h"
#include "test_platform.h"

#include <ipmib/platform.h>

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <optional>
#include <string>

namespace ipmib::platform
{

// One neighbour as text, so that two lists can be compared and read.
struct ShownNeighbour {
    std::string linkLayer;
    std::uint32_t type = 0;
    std::uint32_t state = 0;
    bool operator==(const ShownNeighbour &) const = default;
};
void PrintTo(const ShownNeighbour &row, std::ostream *out);

using AddressBytes = std::array<std::uint8_t, 16>;
using ShownNeighbours = std::map<std::pair<std::uint32_t, std::string>, ShownNeighbour>; // by ifIndex and address

AddressBytes addressOf(const std::string &text);
std::string linkLayerText(const std::uint8_t *bytes);
NeighbourEntry keyOf(std::uint32_t ifIndex, const AddressBytes &address);

// What a walk of next calls yields; fails when it is not in order.
ShownNeighbours walked();
// What `ip -6 -j neigh` says, with the meaning of its words in the table.
ShownNeighbours listed(const netns::Namespace &space);

// Commands of `ip -batch` for neighbours with the numbers from `first` on, every fourth link-local, in turn on each of
// the devices. Every address has the one link-layer address that ends as it does, so that a wrong row shows.
std::string batchOf(int first, int count, const std::string &command, const std::vector<std::string> &devices);
void runBatch(const netns::Namespace &space, const std::string &batch);

// A namespace with the connected interfaces eth0 and peer0.
class NeighboursNetns : public testing::Test
{
  protected:
    void SetUp() override;

    // No neighbour on the device leaves its state while a test looks at it; on eth0 that is so from the start.
    void holdStates(const std::string &device) const;
    void neigh(const std::string &command) { space_->run("ip -6 neigh " + command); }
    std::uint32_t indexOf(const std::string &device) const;
    // The row of an address on a device by exact lookup; empty when there is none.
    ShownNeighbour get(const std::string &address, const std::string &device = "eth0") const;
    // Lets a reading of the table that is under way come to its end.
    static void settle(PlatformInside &platform);

    std::optional<netns::Namespace> space_;
};

} // namespace ipmib::platform
