// SPDX-License-Identifier: BSD-3-Clause
// The JSON library for tests that are linked with ipmib_netns, which has its functions compiled.
#pragma once

#include <nlohmann/json.hpp>

extern template class nlohmann::basic_json<>;
