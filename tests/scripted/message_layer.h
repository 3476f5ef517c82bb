// SPDX-License-Identifier: BSD-3-Clause
// The messages behind the handles that a module sees; no test looks at them.
#pragma once

#include "request.h"

struct MorPara {
    ipmib::scripted::Request::Parameter parameter;
};

struct MorRequest {
    std::uint32_t table;
    std::uint32_t operation;
    std::vector<MorPara> parameters;
    std::size_t place = 0; // of the parameter that was delivered last
};

struct MorReply {
    std::uint32_t table;
    ipmib::scripted::Reply reply;
};
