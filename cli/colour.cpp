// SPDX-License-Identifier: BSD-3-Clause
#include "colour.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace ipmib::cli
{
namespace
{

std::string_view environment(const char *name)
{
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

const char *colourOf(Tone tone)
{
    switch (tone) {
    case Tone::interface:
        return "36"; // cyan
    case Tone::linkLayer:
        return "33"; // yellow
    case Tone::ipv4:
        return "35"; // magenta
    case Tone::ipv6:
        return "34"; // blue
    case Tone::good:
        return "32"; // green
    case Tone::bad:
        return "31"; // red
    case Tone::plain:
        break;
    }
    return "";
}

bool wantsColour(const Options &options)
{
    switch (options.colour) {
    case Colour::always:
        return true;
    case Colour::never:
        return false;
    case Colour::automatic:
        break;
    }
    const bool isOff = environment("TERM") == "dumb" || (!options.colourChosen && !environment("NO_COLOR").empty());
    return !isOff && isatty(STDOUT_FILENO) == 1;
}

} // namespace

Palette Palette::ofStandardOutput(const Options &options)
{
    Palette palette;
    palette.paints_ = wantsColour(options);
    // "15;0": the number of the background stands last; 0 to 6 and 8 are dark.
    const std::string_view colours = environment("COLORFGBG");
    const std::string_view background = colours.substr(colours.rfind(';') + 1);
    palette.onDark_ = colours.size() != background.size() && background.size() == 1 &&
                      ((background[0] >= '0' && background[0] <= '6') || background[0] == '8');
    return palette;
}

std::string Palette::painted(Tone tone, const std::string &text) const
{
    if (!paints_ || tone == Tone::plain || text.empty()) {
        return text;
    }
    return std::string("\033[") + (onDark_ ? "1;" : "") + colourOf(tone) + "m" + text + "\033[0m";
}

} // namespace ipmib::cli
