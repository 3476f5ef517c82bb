// SPDX-License-Identifier: BSD-3-Clause
// What is shown in colour, with the colours of `ip -c`.
#pragma once

#include "options.h"

#include <string>

namespace ipmib::cli
{

// What a text is.
enum class Tone { plain, interface, linkLayer, ipv4, ipv6, good, bad };

class Palette
{
  public:
    // Paints nothing.
    Palette() = default;
    // As the options and the environment want it on standard output. NO_COLOR turns off what the options leave open;
    // COLORFGBG tells that the terminal is dark.
    static Palette ofStandardOutput(const Options &options);

    std::string painted(Tone tone, const std::string &text) const;

  private:
    bool paints_ = false;
    bool onDark_ = false;
};

} // namespace ipmib::cli
