// SPDX-License-Identifier: BSD-3-Clause
// How fast links are.
#include "links/link_speed.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <climits>
#include <cstring>
#include <new>

namespace ipmib::platform
{

std::uint64_t LinkSpeeds::of(const Link &link)
{
    Known &known = known_[link.ifIndex];
    if (known.version != link.version) {
        known = {link.version, ask(link.name)};
    }
    return known.speed;
}

std::uint64_t LinkSpeeds::ask(const char *name) const
{
    // Behind the settings come three sets of link modes, whose length the kernel dictates: its first answer is that
    // length as a negative number, and the same question with the length gets the true answer.
    constexpr std::size_t modes = sizeof(std::uint32_t) * 3 * SCHAR_MAX;
    alignas(ethtool_link_settings) std::byte buffer[sizeof(ethtool_link_settings) + modes]{};
    auto &settings = *new (buffer) ethtool_link_settings{};
    ifreq request{};
    std::strncpy(request.ifr_name, name, sizeof request.ifr_name - 1);
    request.ifr_data = reinterpret_cast<char *>(buffer);
    const auto asked = [&] {
        settings.cmd = ETHTOOL_GLINKSETTINGS;
        return ioctl(socket_.descriptor(), SIOCETHTOOL, &request) == 0;
    };
    if (!asked() || settings.link_mode_masks_nwords >= 0) {
        return 0;
    }
    settings.link_mode_masks_nwords = static_cast<std::int8_t>(-settings.link_mode_masks_nwords);
    if (!asked() || settings.speed == static_cast<std::uint32_t>(SPEED_UNKNOWN)) {
        return 0;
    }
    constexpr std::uint64_t perMegabit = 1'000'000;
    return settings.speed * perMegabit;
}

} // namespace ipmib::platform
