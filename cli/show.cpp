// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl show: a view, once.
#include "commands.h"
#include "listing.h"
#include "view.h"

#include <algorithm>
#include <iterator>

namespace ipmib::cli
{
namespace
{

const View *const views[] = {&neighboursView, &addressesView,  &prefixesView,       &routersView,
                             &interfacesView, &statisticsView, &advertisementsView, &icmpView};

const View &viewFor(const Words &words)
{
    if (words.empty()) {
        throw host::UsageError("show: show what? ipmibctl --help lists the views");
    }
    const auto view = std::ranges::find_if(views, [&words](const View *each) { return each->name == words.front(); });
    if (view == std::end(views)) {
        throw host::UsageError("show: there is no view \"" + words.front() + "\"; ipmibctl --help lists them");
    }
    const bool ofOne = *view == &statisticsView && words.size() == 2;
    if (words.size() > 1 && !ofOne) {
        throw host::UsageError("show: \"" + words.back() + "\" is too much");
    }
    return ofOne ? countersView : **view;
}

} // namespace

int show(Session &session, const Options &options, const Words &words)
{
    const View &view = viewFor(words);
    Listing listing(view.columns, options);
    session.freshState();
    view.list(session, words.back(), [&listing](Row row) { listing.add(std::move(row)); });
    listing.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
