// SPDX-License-Identifier: BSD-3-Clause
// Which hop limit ND_GetHopLimit means: the node's, or the one that the row of router advertisements being filled
// shows.
//
// The service is asked for both and has no argument. For a row of advertisements it is asked next after
// ND_GetIfConfigInfo; otherwise that service is asked for a row of IPv6 interfaces, next after IP6ADDR_DRVK_GetMainLLA.
//
// A platform has nothing but this order to go by. The contract gives the service no argument and the platform no word
// of the row, the table or the request; both rows ask of the same interface through the same services; and one value
// for both would make one of the two columns wrong wherever a router advertises a hop limit other than its own. A
// module that asks in another order gets the node's hop limit unless the last service before was ND_GetIfConfigInfo.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace ipmib::platform
{

class RowHopLimit
{
  public:
    void mainLinkLocalAsked(std::uint32_t ifIndex)
    {
        interfaceRow_ = ifIndex;
        advertised_.reset();
    }

    void configAsked(std::uint32_t ifIndex, std::optional<std::uint32_t> advertised)
    {
        const bool ofInterfaceRow = std::exchange(interfaceRow_, 0) == ifIndex;
        advertised_ = ofInterfaceRow ? std::nullopt : advertised;
    }

    // The advertised one, once; nothing when the node's is meant.
    std::optional<std::uint32_t> take() { return std::exchange(advertised_, std::nullopt); }

    void newPacket()
    {
        interfaceRow_ = 0;
        advertised_.reset();
    }

  private:
    std::uint32_t interfaceRow_ = 0; // ifIndex of a row of IPv6 interfaces that is being filled
    std::optional<std::uint32_t> advertised_;
};

} // namespace ipmib::platform
