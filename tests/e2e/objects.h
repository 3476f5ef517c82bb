// SPDX-License-Identifier: BSD-3-Clause
// Objects that several tests ask for.
#pragma once

#include <cstdint>
#include <string>

namespace ipmib::e2e
{

inline const std::string sysName = "1.3.6.1.2.1.1.5.0";
inline const std::string ifDescr = "1.3.6.1.2.1.2.2.1.2";
inline const std::string hopLimit = "1.3.6.1.2.1.4.26.0";
inline const std::string hopLimitRow = ".1.3.6.1.2.1.4.26.0 = INTEGER: 64\n";
inline const std::string ipAddressIfIndex = "1.3.6.1.2.1.4.34.1.3";
inline const std::string vacmContextName = "1.3.6.1.6.3.16.1.1.1.1";

} // namespace ipmib::e2e
