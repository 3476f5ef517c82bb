// SPDX-License-Identifier: BSD-3-Clause
// The services of a loaded platform library, by name.
#pragma once

#include "host/shared_library.h"

#include <ipmib/platform.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::portcheck
{

// The one that services by virtual router are asked for.
inline constexpr std::uint32_t defaultVrf = 0;

struct Services {
#define IPMIB_SERVICE(name, ...) decltype(&::name) name = nullptr;
#include <ipmib/services.def>
#undef IPMIB_SERVICE

    // Finds every service; returns the names of those that the library lacks.
    std::vector<std::string> bind(const host::SharedLibrary &library);
};

} // namespace ipmib::portcheck
