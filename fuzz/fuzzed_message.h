// SPDX-License-Identifier: BSD-3-Clause
// Requests made of the fuzzer's bytes, and replies that read all that the module appends.
#pragma once

#include "bytes.h"

#include <ipmib/message.h>

struct MorPara {
    std::uint32_t id;
    std::uint32_t number;
    std::vector<std::uint8_t> bytes;
};

struct MorRequest {
    std::uint32_t table;
    std::uint32_t operation;
    std::vector<MorPara> parameters;
    std::size_t place = 0;

    static MorRequest read(ipmib::fuzz::Bytes &bytes);
};

struct MorReply {
    explicit MorReply(const MorRequest &request) : table(request.table), parameters(request.parameters.size()) {}

    std::uint32_t table;
    std::size_t parameters;
    std::uint32_t error = 0;
};
