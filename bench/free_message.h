// SPDX-License-Identifier: BSD-3-Clause
// Messages for benchmarks: a request is built once and sent many times, a reply only counts what is appended.
#pragma once

#include <ipmib/message.h>

#include <cstdint>

struct MorPara {
    std::uint32_t id;
    std::uint32_t number;
    const std::uint8_t *octets;
    std::uint32_t length;
};

struct MorRequest {
    std::uint32_t table;
    std::uint32_t operation;
    std::uint32_t count;
    std::uint32_t place;
    MorPara parameters[64];
};

struct MorReply {
    std::uint32_t appended;
    std::uint32_t error;
};

class FreeRequest
{
  public:
    FreeRequest(std::uint32_t table, std::uint32_t operation) : request_{table, operation, 0, 0, {}} {}

    void addNumber(std::uint32_t column, std::uint32_t value) { add({id(column), value, nullptr, 4}); }
    void addOctets(std::uint32_t column, const std::uint8_t *octets, std::uint32_t length)
    {
        add({id(column), 0, octets, length});
    }
    void addColumn(std::uint32_t column) { add({id(column), 0, nullptr, 0}); }
    MorRequest *handle() { return &request_; }

  private:
    std::uint32_t id(std::uint32_t column) const { return ip_ParamId(request_.table, column); }
    void add(const MorPara &parameter) { request_.parameters[request_.count++] = parameter; }

    MorRequest request_;
};

class FreeReply
{
  public:
    void clear() { reply_ = {}; }
    MorReply *handle() { return &reply_; }

  private:
    MorReply reply_{};
};
