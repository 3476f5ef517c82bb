// SPDX-License-Identifier: BSD-3-Clause
// Reads the command line with getopt_long.
#include "options.h"

#include <charconv>
#include <sstream>
#include <string_view>

namespace ipmib::cli
{
namespace
{

enum {
    widthOption = host::firstProgramOption,
    sortOption,
    filterOption,
    intervalOption,
    countOption,
    contextOption,
    socketOption,
};

constexpr OptionText texts[] = {
    {nullptr, '4', no_argument, '4', "", "show and watch IPv4 alone"},
    {nullptr, '6', no_argument, '6', "", "show and watch IPv6 alone"},
    {"json", 'j', no_argument, 'j', "", "for programs"},
    {"color", 'c', optional_argument, 'c', "WHEN",
     "auto (the default: on a terminal, unless NO_COLOR is set), always or never;\nwithout WHEN, always"},
    {"width", 0, required_argument, widthOption, "N", "as wide as N places (default: the terminal; 0: no limit)"},
    {"sort", 0, required_argument, sortOption, "COLUMN",
     "show and watch: rows in the order of a column, the greatest numbers first"},
    {"filter", 0, required_argument, filterOption, "[COLUMN=]TEXT",
     "show and watch: only rows with this text in any column or in one;\nof several filters all have to hold"},
    {"interval", 0, required_argument, intervalOption, "S", "seconds between two looks of watch (default: 1)"},
    {"count", 0, required_argument, countOption, "N", "how often watch looks (default: until it is interrupted)"},
    {"context", 0, required_argument, contextOption, "NAME", "a device of a scenario that \"show contexts\" lists"},
    {"socket", 0, required_argument, socketOption, "PATH", "set-device: the local socket of ipmibd, see ipmibd(8)"},
    {"platform", 0, required_argument, host::platformOption, "NAME[:ARGUMENT]",
     "where the facts come from (default: linux; simulated:FILE is a device from a scenario)"},
    {"module", 0, required_argument, host::moduleOption, "PATH",
     "the module to load (default: the one that ipmibctl came with)"},
    {"help", 'h', no_argument, 'h', "", "print this and exit"},
    {"version", 'v', no_argument, 'v', "", "print the version and exit"},
};

std::vector<option> longOptions()
{
    std::vector<option> options;
    for (const OptionText &text : texts) {
        if (text.name != nullptr) {
            options.push_back({text.name, text.argument, nullptr, text.code});
        }
    }
    options.push_back({"colour", optional_argument, nullptr, 'c'}); // as this program's texts spell it
    options.push_back({nullptr, 0, nullptr, 0});
    return options;
}

template <class Number>
std::string shown(Number number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

template <class Number>
Number parseNumber(const char *option, std::string_view text, Number low, Number high)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(number >= low && number <= high)) {
        throw host::UsageError(std::string(option) + ": \"" + std::string(text) + "\" is not a number from " +
                               shown(low) + " to " + shown(high));
    }
    return number;
}

// "always" of --color=always and, as `ip` has it, of -c=always.
Colour parseColour(const char *argument)
{
    std::string_view word = argument == nullptr ? "always" : argument;
    word.remove_prefix(word.starts_with('=') ? 1 : 0);
    if (word == "auto") {
        return Colour::automatic;
    }
    if (word != "always" && word != "never") {
        throw host::UsageError("--color: \"" + std::string(word) + "\" is not auto, always or never");
    }
    return word == "always" ? Colour::always : Colour::never;
}

} // namespace

std::span<const OptionText> optionTexts()
{
    return texts;
}

Options parseOptions(int argc, char *const *argv)
{
    constexpr unsigned most = 1'000'000;
    constexpr double perSecond = 1'000;
    static const std::vector<option> known = longOptions();
    Options options;
    opterr = 0;
    optind = 0; // lets glibc start afresh
    int letter;
    while ((letter = getopt_long(argc, argv, ":hvj46c::", known.data(), nullptr)) != -1) {
        switch (letter) {
        case 'h':
            options.action = Options::Action::help;
            return options;
        case 'v':
            options.action = Options::Action::version;
            return options;
        case '4':
            options.version = Version::ipv4;
            break;
        case '6':
            options.version = Version::ipv6;
            break;
        case 'j':
            options.json = true;
            break;
        case 'c':
            options.colour = parseColour(optarg);
            options.colourChosen = true;
            break;
        case widthOption:
            options.width = parseNumber("--width", optarg, 0u, most);
            break;
        case sortOption:
            options.sort = optarg;
            break;
        case filterOption:
            options.filters.emplace_back(optarg);
            break;
        case intervalOption:
            options.intervalMs = static_cast<unsigned>(parseNumber("--interval", optarg, 0.01, 86'400.0) * perSecond);
            break;
        case contextOption:
            options.context = optarg;
            break;
        case socketOption:
            options.socket = optarg;
            break;
        case countOption:
            options.count = parseNumber("--count", optarg, 1u, most);
            break;
        default:
            host::takePluginOption(letter, argv, options.plugin);
        }
    }
    for (; optind < argc; ++optind) {
        options.words.emplace_back(argv[optind]);
    }
    return options;
}

} // namespace ipmib::cli
