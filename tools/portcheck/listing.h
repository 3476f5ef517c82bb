// SPDX-License-Identifier: BSD-3-Clause
// An ordered list of rows that a platform gives out one after another, and the promises that hold for each such list.
#pragma once

#include "key.h"
#include "probe.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace ipmib::portcheck
{

// Longer lists are looked at this far.
inline constexpr std::size_t longestListing = 20000;

template <typename Row>
struct Listing {
    std::string what; // "prefixes of interface 3"
    std::string firstCall;
    std::string nextCall;
    Promise ascend;
    Promise move;
    Promise begin;
    Promise follow;
    Key start;                        // what the walk begins behind
    std::function<bool(Row &)> first; // empty where a list has no such call
    std::function<bool(const Key &, Row &)> next;
    std::function<Key(const Row &)> keyOf;
    std::function<std::string(const Key &)> text;
    std::function<void(const Row &)> look; // at each row by itself
};

template <typename Row>
bool nextOf(const Listing<Row> &listing, Probe &probe, const Key &key, Row &row)
{
    probe.doing(listing.nextCall + " behind " + listing.text(key) + ", " + listing.what);
    return listing.next(key, row);
}

// Walks the list from its start to its end, or to where it stops ascending.
template <typename Row>
std::vector<Row> rowsOf(const Listing<Row> &listing, Probe &probe)
{
    std::vector<Row> rows;
    Key key = listing.start;
    Row row;
    while (rows.size() < longestListing && nextOf(listing, probe, key, row)) {
        listing.look(row);
        const Key found = listing.keyOf(row);
        if (found == key) {
            probe.broken(listing.move, listing.nextCall,
                         listing.what + ": behind " + listing.text(key) + " comes " + listing.text(found) + " again");
            break;
        }
        if (found < key) {
            probe.broken(listing.ascend, listing.nextCall,
                         listing.what + ": " + listing.text(found) + " comes behind " + listing.text(key));
            break;
        }
        rows.push_back(row);
        key = found;
    }
    return rows;
}

template <typename Row>
void checkFirst(const Listing<Row> &listing, const std::vector<Row> &rows, Probe &probe)
{
    if (!listing.first) {
        return;
    }
    probe.doing(listing.firstCall + ", " + listing.what);
    Row row;
    const bool found = listing.first(row);
    // What equals the start has no other call that finds it.
    if (found && listing.keyOf(row) == listing.start) {
        return;
    }
    if (found != !rows.empty() || (found && !(listing.keyOf(row) == listing.keyOf(rows.front())))) {
        probe.broken(listing.begin, listing.firstCall,
                     listing.what + ": the first is " + (found ? listing.text(listing.keyOf(row)) : "none") +
                         ", but behind " + listing.text(listing.start) + " comes " +
                         (rows.empty() ? "none" : listing.text(listing.keyOf(rows.front()))));
    }
}

Key justBefore(Key key);
Key justAfter(Key key);

// Asks for what follows keys that no row has.
template <typename Row>
void checkBetween(const Listing<Row> &listing, const std::vector<Row> &rows, Probe &probe)
{
    constexpr std::size_t probed = 200;
    if (rows.size() == longestListing) {
        return; // what is behind the last one is not known
    }
    const std::size_t step = rows.size() / probed + 1;
    for (std::size_t i = 0; i < rows.size(); i += step) {
        for (const Key &key : {justBefore(listing.keyOf(rows[i])), justAfter(listing.keyOf(rows[i]))}) {
            if (key < listing.start) {
                continue;
            }
            const auto expected =
                std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return key < listing.keyOf(row); });
            Row row;
            const bool found = nextOf(listing, probe, key, row);
            if (found != (expected != rows.end()) || (found && !(listing.keyOf(row) == listing.keyOf(*expected)))) {
                probe.broken(listing.follow, listing.nextCall,
                             listing.what + ": behind " + listing.text(key) + " comes " +
                                 (found ? listing.text(listing.keyOf(row)) : "none") + " in place of " +
                                 (expected == rows.end() ? "none" : listing.text(listing.keyOf(*expected))));
                return;
            }
        }
    }
}

// The list with all that holds for every list checked.
template <typename Row>
std::vector<Row> checkedRowsOf(const Listing<Row> &listing, Probe &probe)
{
    const std::size_t before = probe.brokenCount();
    std::vector<Row> rows = rowsOf(listing, probe);
    checkFirst(listing, rows, probe);
    if (probe.brokenCount() == before) { // else the rows are no measure
        checkBetween(listing, rows, probe);
    }
    return rows;
}

} // namespace ipmib::portcheck
