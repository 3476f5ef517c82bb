// SPDX-License-Identifier: BSD-3-Clause
// What several tests ask for.
#pragma once

#include <cstdint>
#include <string>

namespace ipmib::e2e
{

inline const std::string mib2 = "1.3.6.1.2.1";
inline const std::string sysName = "1.3.6.1.2.1.1.5.0";
inline const std::string ifDescr = "1.3.6.1.2.1.2.2.1.2";
inline const std::string hopLimit = "1.3.6.1.2.1.4.26.0";
inline const std::string hopLimitRow = ".1.3.6.1.2.1.4.26.0 = INTEGER: 64\n";
inline const std::string ipAddressIfIndex = "1.3.6.1.2.1.4.34.1.3";
inline const std::string vacmContextName = "1.3.6.1.6.3.16.1.1.1.1";

// A GET of hopLimit with the community "public", version 2c.
inline constexpr std::uint8_t getHopLimit[] = {0x30, 0x26, 0x02, 0x01, 0x01, 0x04, 0x06, 'p',  'u',  'b',
                                               'l',  'i',  'c',  0xA0, 0x19, 0x02, 0x01, 0x07, 0x02, 0x01,
                                               0x00, 0x02, 0x01, 0x00, 0x30, 0x0E, 0x30, 0x0C, 0x06, 0x08,
                                               0x2B, 0x06, 0x01, 0x02, 0x01, 0x04, 0x1A, 0x00, 0x05, 0x00};

} // namespace ipmib::e2e
