// SPDX-License-Identifier: BSD-3-Clause
// What holds for every list of rows: it ascends, moves, ends, begins where it should, knows what follows keys that no
// row has, and says the same of a row whatever was asked before.
#include "listing.h"

#include <algorithm>
#include <set>

namespace ipmib::portcheck
{

namespace
{

FoundRow nextOf(const Listing &listing, Probe &probe, const Key &key)
{
    probe.doing(listing.nextCall + " behind " + listing.text(key) + ", " + listing.what);
    return listing.next(key);
}

std::string textOf(const Listing &listing, const FoundRow &row)
{
    return row ? listing.text(row->key) : "none";
}

bool isSameRow(const FoundRow &left, const FoundRow &right)
{
    return left.has_value() == right.has_value() && (!left || left->key == right->key);
}

bool holds(const std::vector<ListedRow> &rows, const Key &key)
{
    return std::any_of(rows.begin(), rows.end(), [&](const ListedRow &row) { return row.key == key; });
}

void checkFirst(const Listing &listing, const std::vector<ListedRow> &rows, Probe &probe)
{
    if (!listing.first) {
        return;
    }
    probe.doing(listing.firstCall + ", " + listing.what);
    const FoundRow first = listing.first();
    // What equals the start has no other call that finds it.
    if (first && first->key == listing.start) {
        return;
    }
    const FoundRow expected = rows.empty() ? FoundRow() : rows.front();
    if (!isSameRow(first, expected)) {
        probe.broken(listing.begin, listing.firstCall,
                     listing.what + ": the first is " + textOf(listing, first) + ", but behind " +
                         listing.text(listing.start) + " comes " + textOf(listing, expected));
    }
}

std::size_t disorderOf(const Listing &listing, const Probe &probe)
{
    std::size_t count = 0;
    for (const Promise promise : {listing.ascend, listing.move, listing.begin, listing.keys}) {
        count += probe.brokenCount(promise);
    }
    return count;
}

// Behind the highest key there is nothing.
void checkEnd(const Listing &listing, Probe &probe)
{
    Key highest;
    std::memset(highest.address, 0xFF, sizeof highest.address);
    highest.number = UINT32_MAX;
    if (const FoundRow row = nextOf(listing, probe, highest)) {
        probe.broken(listing.ascend, listing.nextCall,
                     listing.what + ": " + listing.text(row->key) + " comes behind " + listing.text(highest) +
                         ", the highest key there is: the list never ends");
    }
}

// At most `count` of the rows, spread evenly over them.
std::vector<std::size_t> placesIn(const std::vector<ListedRow> &rows, std::size_t count)
{
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < rows.size(); i += rows.size() / count + 1) {
        places.push_back(i);
    }
    return places;
}

// Asks for what follows keys that no row has.
void checkBetween(const Listing &listing, const std::vector<ListedRow> &rows, Probe &probe)
{
    for (const std::size_t i : placesIn(rows, 200)) {
        const Key &following = rows[std::min(i + 1, rows.size() - 1)].key;
        for (const Key &key : {justBefore(rows[i].key), justAfter(rows[i].key), between(rows[i].key, following)}) {
            if (key < listing.start) {
                continue;
            }
            const auto place = std::upper_bound(rows.begin(), rows.end(), key,
                                                [](const Key &asked, const ListedRow &row) { return asked < row.key; });
            const FoundRow expected = place == rows.end() ? FoundRow() : *place;
            const FoundRow found = nextOf(listing, probe, key);
            if (!isSameRow(found, expected)) {
                probe.broken(listing.follow, listing.nextCall,
                             listing.what + ": behind " + listing.text(key) + " comes " + textOf(listing, found) +
                                 " in place of " + textOf(listing, expected));
                return;
            }
        }
    }
}

// What is said of a row does not depend on which row was asked for before.
void checkSteady(const Listing &listing, const std::vector<ListedRow> &rows, Probe &probe)
{
    const auto itemsOf = [&](const FoundRow &row) { return row ? listing.items(*row) : Items(); };
    for (const std::size_t i : placesIn(rows, 100)) {
        const Key &own = rows[i].key;
        const Key &other = rows[i + 1 < rows.size() || i == 0 ? (i + 1) % rows.size() : i - 1].key;
        const std::string who = listing.what + ", " + listing.text(own);
        const auto askElsewhere = [&](auto ask) {
            if (rows.size() > 1) {
                ask();
            } else if (listing.elsewhere) {
                listing.elsewhere();
            }
        };
        probe.expectSteady(
            listing.nextCall, who, [&] { askElsewhere([&] { nextOf(listing, probe, justBefore(other)); }); },
            [&] { return itemsOf(nextOf(listing, probe, justBefore(own))); });
        if (listing.exact) {
            probe.expectSteady(
                listing.exactCall, who, [&] { askElsewhere([&] { listing.exact(other); }); },
                [&] { return itemsOf(listing.exact(own)); });
        }
    }
}

// What is said of a row does not depend on what the record held before.
void checkFilled(const Listing &listing, const std::vector<ListedRow> &rows, Probe &probe)
{
    if (!listing.nextOverAnother) {
        return;
    }
    for (const std::size_t i : placesIn(rows, 100)) {
        const Key key = justBefore(rows[i].key);
        std::string seen;
        for (int tries = 0; tries < 3; ++tries) { // the row may be changing
            const FoundRow inCleared = nextOf(listing, probe, key);
            const FoundRow inUsed = listing.nextOverAnother(key);
            seen = !isSameRow(inCleared, inUsed)
                       ? "it is " + textOf(listing, inCleared) + ", and then " + textOf(listing, inUsed)
                   : inUsed ? differenceOf(listing.items(*inCleared), listing.items(*inUsed))
                            : "";
            if (seen.empty()) {
                break;
            }
        }
        if (!seen.empty()) {
            probe.broken(Promise::steady, listing.nextCall,
                         listing.what + ", " + listing.text(rows[i].key) + ": " + seen +
                             " in a record that has held another row: it is not filled, or taken for a key");
            return;
        }
    }
}

// What a walk shows is found by itself, too, and is the same then.
void checkExact(const Listing &listing, const std::vector<ListedRow> &rows, Probe &probe)
{
    if (!listing.exact) {
        return;
    }
    for (const std::size_t i : placesIn(rows, 1000)) {
        const std::string who = listing.what + ", " + listing.text(rows[i].key);
        const FoundRow found = listing.exact(rows[i].key);
        if (!found || !(found->key == rows[i].key)) {
            probe.broken(listing.exactly, listing.exactCall,
                         who + (found ? ": it answers another record, of " + listing.text(found->key)
                                      : ": it fails" + (listing.insteadOf ? listing.insteadOf(rows[i].key) : "")));
            return;
        }
        for (int tries = 0; tries < 3; ++tries) { // the row may be changing
            const FoundRow listed = nextOf(listing, probe, justBefore(rows[i].key));
            const FoundRow exact = listing.exact(rows[i].key);
            const std::string difference =
                isSameRow(listed, exact) && listed ? differenceOf(listing.items(*listed), listing.items(*exact)) : "";
            if (difference.empty()) {
                break;
            }
            if (tries == 2) {
                probe.broken(listing.exactly, listing.exactCall,
                             who + ": in the list its " + difference + " when it is asked for by itself");
            }
        }
    }
}

} // namespace

std::vector<ListedRow> rowsOf(const Listing &listing, Probe &probe)
{
    constexpr std::size_t longestDisorder = 200; // rows behind the first that does not ascend
    std::vector<ListedRow> rows;
    Key key = listing.start;
    std::size_t disordered = 0;
    while (rows.size() < longestListing && disordered < longestDisorder) {
        const FoundRow row = nextOf(listing, probe, key);
        if (!row) {
            break;
        }
        listing.look(*row);
        if (row->key == key) {
            probe.broken(listing.move, listing.nextCall,
                         listing.what + ": behind " + listing.text(key) + " comes " + listing.text(key) + " again");
            break;
        }
        if (row->key < key || disordered > 0) {
            const bool seen = holds(rows, row->key);
            if (disordered++ == 0 || seen) {
                probe.broken(listing.ascend, listing.nextCall,
                             listing.what + ": " + listing.text(row->key) + " comes behind " + listing.text(key) +
                                 (seen ? ", and was there before: the list never ends" : ", out of order"));
            }
            if (seen) {
                break;
            }
        }
        rows.push_back(*row);
        key = row->key;
    }
    return rows;
}

std::vector<ListedRow> checkedRowsOf(const Listing &listing, Probe &probe)
{
    const std::size_t before = disorderOf(listing, probe);
    std::vector<ListedRow> rows = rowsOf(listing, probe);
    checkFirst(listing, rows, probe);
    if (rows.size() < longestListing && disorderOf(listing, probe) == before) { // else the rows are no measure
        checkEnd(listing, probe);
        checkBetween(listing, rows, probe);
    }
    checkSteady(listing, rows, probe);
    checkFilled(listing, rows, probe);
    checkExact(listing, rows, probe);
    return rows;
}

void checkHidden(const Listing &listing, const std::vector<ListedRow> &rows, std::vector<Key> maybe, Probe &probe)
{
    if (rows.size() == longestListing) {
        return; // there are more
    }
    std::set<Key> asked;
    for (const ListedRow &row : rows) {
        asked.insert(row.key);
        maybe.push_back(justBefore(row.key));
        maybe.push_back(justAfter(row.key));
    }
    constexpr std::size_t most = 4096; // questions
    for (std::size_t i = 0; i < std::min(maybe.size(), most); ++i) {
        if (!asked.insert(maybe[i]).second) {
            continue;
        }
        const FoundRow found = listing.exact(maybe[i]);
        if (found && found->key == maybe[i]) {
            probe.broken(listing.ascend, listing.exactCall,
                         listing.what + ": " + listing.text(maybe[i]) +
                             " is found when it is asked for, and no walk comes to it: the list is out of order, or "
                             "ends early");
        }
    }
}

} // namespace ipmib::portcheck
