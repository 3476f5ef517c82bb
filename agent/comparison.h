// SPDX-License-Identifier: BSD-3-Clause
// What would be gained and what lost if a table were ours: an agent's instances, asked for as any client asks, beside
// those of this process.
#pragma once

#include "host/catalogue.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::agent
{

// Of a table, in instances.
struct Difference {
    std::size_t gained = 0;
    std::size_t lost = 0;
};

class Comparison
{
  public:
    // Whom to ask, and as whom, in the words of snmpwalk: "-v2c -c public localhost". Throws std::runtime_error when
    // they are wrong.
    explicit Comparison(const std::string &words);
    ~Comparison();
    Comparison(const Comparison &) = delete;
    Comparison &operator=(const Comparison &) = delete;

    // Throws std::runtime_error when the agent does not answer. A packet of requests has begun.
    Difference of(const host::ServedTable &table);

  private:
    using Instances = std::vector<std::vector<host::SubId>>; // ascending

    Instances instancesOfAgent(host::OidView root);
    static Instances ownInstances(const host::ServedTable &table);

    void *session_; // of the library's single-session API
    bool hasBulk_;
};

} // namespace ipmib::agent
