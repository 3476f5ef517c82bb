// SPDX-License-Identifier: BSD-3-Clause
// What can be listed: the columns of a listing, and where its rows come from.
#pragma once

#include "cell.h"
#include "options.h"

#include <span>
#include <string>
#include <string_view>

namespace ipmib::cli
{

class LocalDevice;

enum class Align { left, right };

// What a column is to its row, for whoever follows rows from one look to the next.
enum class Role {
    fact,
    key,  // tells the rows apart, together with the others of its kind
    time, // passes by itself
};

struct ListingColumn {
    const char *heading;
    const char *key; // for programs
    Align align = Align::left;
    int rank = 0; // where there is no room for all columns, those of the highest rank are left out first
    Role role = Role::fact;
    const char *ageKey = nullptr; // for programs: of the cells' ages, when they have such
};

struct View {
    const char *name; // to be read in plain text
    std::span<const ListingColumn> columns;
    // The argument is empty, or names what the listing is of.
    void (*list)(LocalDevice &device, const std::string &argument, const Sink &sink);
    bool takesArgument = false;
};

extern const View neighboursView;
extern const View addressesView;
extern const View prefixesView;
extern const View routersView;
extern const View routesView;      // all, or those within a prefix
extern const View routeView;       // those by which an address is reached; without an address like routes
extern const View connectionsView; // all, those of a protocol, or those with a port
extern const View interfacesView;
extern const View advertisementsView;
extern const View statisticsView; // one row for each version and interface
extern const View countersView;   // one row for each counter: of the system, or of the interface that is named
extern const View ipv4CountersView;
extern const View ipv6CountersView;
extern const View icmpView;
extern const View contextsView;

inline const View &countersViewOf(Version version)
{
    return version == Version::ipv4 ? ipv4CountersView : version == Version::ipv6 ? ipv6CountersView : countersView;
}

} // namespace ipmib::cli
