// SPDX-License-Identifier: BSD-3-Clause
// How fast links are. Their drivers know it, and some of them ask the hardware, which takes its time: so it is asked
// once after each announcement of a link, and a link whose speed changes goes down and up again.
#pragma once

#include "core/rtnetlink.h"
#include "links/link_table.h"

#include <unordered_map>

namespace ipmib::platform
{

class LinkSpeeds
{
  public:
    // The socket is one of the links' network namespace, and outlives it.
    explicit LinkSpeeds(Rtnetlink &socket) : socket_(socket) {}
    // Bits a second; 0 when the driver does not know.
    std::uint64_t of(const Link &link);
    // A link that has gone for good.
    void forget(std::uint32_t ifIndex) { known_.erase(ifIndex); }

  private:
    struct Known {
        std::uint64_t version = 0; // of the link
        std::uint64_t speed = 0;
    };

    std::uint64_t ask(const char *name) const;

    Rtnetlink &socket_;
    std::unordered_map<std::uint32_t, Known> known_;
};

} // namespace ipmib::platform
