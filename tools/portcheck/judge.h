// SPDX-License-Identifier: BSD-3-Clause
// Judges the fields of one record, each by a rule of its own: a verdict names the field, its value, and whether the
// bytes of the value are the right ones in the wrong order.
#pragma once

#include "probe.h"

#include <functional>

namespace ipmib::portcheck
{

// Whether seconds since boot are rather those since 1970: from 2008 to 2039.
inline bool looksSince1970(std::uint32_t seconds)
{
    return seconds > 1200000000 && seconds < 2200000000;
}

class Judge
{
  public:
    // `who`: the row, as a person names it.
    Judge(Probe &probe, std::string call, std::string who) : probe_(probe), call_(std::move(call)), who_(std::move(who))
    {
    }

    // The rule in words says what the field is: "0 to 4".
    void field(Promise promise, const char *name, std::uint32_t value, const std::function<bool(std::uint32_t)> &fits,
               const std::string &rule);
    // A number of which small ones alone have a meaning, and others are allowed: codes, flags. It is wrong when it
    // would be small in the other byte order.
    void code(Promise promise, const char *name, std::uint32_t value);
    // A second since boot.
    void time(Promise promise, const char *name, std::uint32_t value, std::uint32_t now);
    // A prefix's lifetime, seconds: any number, so that of two byte orders the one is right that people write.
    void lifetime(Promise promise, const char *name, std::uint32_t value);
    // A link-local address: some systems write its interface into its third and fourth byte while they keep it.
    void linkLocal(const std::uint8_t *address, std::uint32_t ifIndex);

  private:
    void tell(Promise promise, const char *name, std::uint32_t value, const std::string &rule, bool isSwapped);

    Probe &probe_;
    std::string call_;
    std::string who_;
};

} // namespace ipmib::portcheck
