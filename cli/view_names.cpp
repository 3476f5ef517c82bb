// SPDX-License-Identifier: BSD-3-Clause
#include "view_names.h"

#include "near_names.h"

#include "host/command_line.h"

#include <algorithm>
#include <string_view>

namespace ipmib::cli
{
namespace
{

// The other words are those of `ip`, and of the tools before it.
constexpr ViewName names[] = {
    {"neighbours", &neighboursView, "who is around, with link-layer addresses"},
    {"neighbors", &neighboursView, nullptr},
    {"neigh", &neighboursView, nullptr},
    {"n", &neighboursView, nullptr},
    {"arp", &neighboursView, nullptr, Version::ipv4},
    {"ndp", &neighboursView, nullptr, Version::ipv6},
    {"addresses", &addressesView, "the device's own addresses"},
    {"a", &addressesView, nullptr},
    {"prefixes", &prefixesView, "the prefixes on each link"},
    {"routers", &routersView, "the default routers"},
    {"routes", &routesView, "all routes, or those within a prefix"},
    {"route", &routeView, "the routes by which an address is reached"},
    {"r", &routesView, nullptr},
    {"ro", &routesView, nullptr},
    {"connections", &connectionsView, "TCP connections, listeners and UDP endpoints"},
    {"sockets", &connectionsView, nullptr},
    {"ss", &connectionsView, nullptr},
    {"interfaces", &interfacesView, "IPv4 and IPv6 on each interface"},
    {"ifs", &interfacesView, nullptr},
    {"links", &interfacesView, nullptr},
    {"statistics", &statisticsView, "traffic of the system and of each interface"},
    {"stats", &statisticsView, nullptr},
    {"advertisements", &advertisementsView, "what routers are told on each interface"},
    {"icmp", &icmpView, "messages of ICMP and ICMPv6"},
    {"contexts", &contextsView, "the devices that --context shows"},
};

constexpr std::string_view verbs[] = {"show", "list", "lst", "ls", "get"};

// By any beginning, as `ip` has it; null for what is none.
const std::string_view *verbNamed(const std::string &word)
{
    const auto found = std::ranges::find_if(verbs, [&word](std::string_view verb) { return verb.starts_with(word); });
    return found == std::end(verbs) || word.empty() ? nullptr : &*found;
}

std::string listOf(const std::vector<const View *> &views)
{
    std::string text;
    for (const View *view : views) {
        text += (text.empty() ? "" : ", ") + std::string(view->name);
    }
    return text;
}

std::string listOfAll()
{
    std::vector<const View *> views;
    for (const ViewName &name : names) {
        if (name.summary != nullptr) {
            views.push_back(name.view);
        }
    }
    return listOf(views);
}

// By one of its words, or by as much of it as the words of no other view begin with.
const ViewName &viewNamed(const std::string &command, const std::string &word)
{
    std::vector<const ViewName *> found;
    for (const ViewName &name : names) {
        if (name.word == word) {
            return name;
        }
        if (std::string_view(name.word).starts_with(word)) {
            found.push_back(&name);
        }
    }
    if (found.empty()) {
        const std::string meant = didYouMean(word, viewWords());
        throw host::UsageError(command + ": there is no view \"" + word + "\"" +
                               (meant.empty() ? ", but " + listOfAll() : meant));
    }
    std::vector<const View *> views;
    for (const ViewName *name : found) {
        if (std::ranges::find(views, name->view) == views.end()) {
            views.push_back(name->view);
        }
    }
    if (views.size() > 1) {
        throw host::UsageError(command + ": \"" + word + "\" may be " + listOf(views));
    }
    return *found.front();
}

[[noreturn]] void refuseMore(const std::string &command, const std::string &word)
{
    throw host::UsageError(command + ": \"" + word + "\" is too much");
}

} // namespace

std::span<const ViewName> viewNames()
{
    return names;
}

std::vector<std::string> viewWords()
{
    std::vector<std::string> words;
    for (const ViewName &name : names) {
        words.emplace_back(name.word);
    }
    return words;
}

bool isViewWord(const std::string &word)
{
    return !word.empty() && std::ranges::any_of(names, [&word](const ViewName &name) {
        return std::string_view(name.word).starts_with(word);
    });
}

ViewRequest parseViewRequest(const std::string &command, const std::vector<std::string> &words)
{
    if (words.empty()) {
        throw host::UsageError(command + ": " + command + " what? " + listOfAll());
    }
    const ViewName &name = viewNamed(command, words.front());
    ViewRequest request{name.view, name.version, "", ""};
    const bool hasInterface = interfaceColumn(*request.view) < request.view->columns.size();
    std::size_t place = 1;
    if (const std::string_view *verb = place < words.size() ? verbNamed(words[place]) : nullptr) {
        request.view = request.view == &routesView && *verb == "get" ? &routeView : request.view;
        ++place;
    }
    for (; place < words.size(); ++place) {
        const bool isDevice = words[place] == "dev" && place + 1 < words.size();
        place += isDevice ? 1 : 0;
        const bool isArgument = request.view->takesArgument && !isDevice;
        std::string &slot = isArgument ? request.argument : request.interface;
        if (!slot.empty() || (!isArgument && !hasInterface)) {
            refuseMore(command, words[place]);
        }
        slot = words[place];
    }
    if (request.view == &statisticsView && !request.interface.empty()) {
        request.view = &countersView;
        request.argument.swap(request.interface);
    }
    return request;
}

std::size_t interfaceColumn(const View &view)
{
    const auto column = std::ranges::find_if(
        view.columns, [](const ListingColumn &each) { return each.key == std::string_view("interface"); });
    return static_cast<std::size_t>(column - view.columns.begin());
}

} // namespace ipmib::cli
