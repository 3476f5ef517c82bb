// SPDX-License-Identifier: BSD-3-Clause
// What a check found: promises that the platform broke, and facts about what was looked at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::portcheck
{

enum class Promise : std::uint8_t {
#define PROMISE(name, promised, breaks) name,
#include "promises.def"
#undef PROMISE
    count
};

struct PromiseText {
    const char *name;
    const char *promised;
    const char *breaks;
};
const PromiseText &textOf(Promise promise);

struct Finding {
    Promise promise;
    std::string service;
    std::string seen;
};

struct Report {
    std::vector<Finding> broken;
    std::vector<std::string> facts;
    std::vector<std::string> rows; // "prefix if_index=2 prefix=2001:db8:: length=64 ..."

    bool breaks(Promise promise) const;
    // For people.
    std::string text() const;
};

} // namespace ipmib::portcheck
