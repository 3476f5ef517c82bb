// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl show: a view, once.
#include "commands.h"
#include "listing.h"
#include "view.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace ipmib::cli
{
namespace
{

constexpr const View *views[] = {&neighboursView, &addressesView,  &prefixesView,   &routersView,        &routesView,
                                 &routeView,      &interfacesView, &statisticsView, &advertisementsView, &icmpView};

std::string namesOf(const std::vector<const View *> &some)
{
    std::string names;
    for (const View *view : some) {
        names += (names.empty() ? "" : ", ") + std::string(view->name);
    }
    return names;
}

// By its name, or by as much of it as no other begins with.
const View &viewNamed(const std::string &word)
{
    std::vector<const View *> found;
    std::ranges::copy_if(views, std::back_inserter(found),
                         [&word](const View *view) { return std::string_view(view->name).starts_with(word); });
    if (found.empty()) {
        throw host::UsageError("show: there is no view \"" + word + "\", but " +
                               namesOf({std::begin(views), std::end(views)}));
    }
    const auto exact = std::ranges::find(found, word, &View::name);
    if (exact != found.end()) {
        return **exact;
    }
    if (found.size() > 1) {
        throw host::UsageError("show: \"" + word + "\" may be " + namesOf(found));
    }
    return *found.front();
}

// The place of the column that tells a row's interface; behind all columns when none does.
std::size_t interfaceColumn(const View &view)
{
    const auto column = std::ranges::find_if(
        view.columns, [](const Column &each) { return each.key == std::string_view("interface"); });
    return static_cast<std::size_t>(column - view.columns.begin());
}

} // namespace

int show(Session &session, const Options &options, const Words &words)
{
    if (words.empty()) {
        throw host::UsageError("show: show what? " + namesOf({std::begin(views), std::end(views)}));
    }
    const bool ofOne = words.size() > 1;
    const View &named = viewNamed(words.front());
    const View &view = &named == &statisticsView && ofOne ? countersViewOf(options.version) : named;
    const std::size_t place = interfaceColumn(view);
    if (words.size() > 2 || (ofOne && !view.takesArgument && place == view.columns.size())) {
        throw host::UsageError("show: \"" + words.back() + "\" is too much");
    }
    session.show(options.version);
    session.freshState();
    const bool filtered = ofOne && !view.takesArgument;
    const std::string interface = filtered ? session.interfaceName(session.interfaceIndex(words[1])) : "";
    Listing listing(view.columns, options);
    view.list(session, ofOne ? words[1] : "", [&](Row row) {
        if (!filtered || row[place].text == interface) {
            listing.add(std::move(row));
        }
    });
    listing.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
