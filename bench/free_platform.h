// SPDX-License-Identifier: BSD-3-Clause
// The settings of the platform that costs nothing.
#pragma once

#include <cstdint>

// How many prefixes each interface lists.
extern std::uint32_t freePrefixes;
