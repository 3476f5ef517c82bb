// SPDX-License-Identifier: BSD-3-Clause
// An ordered list of rows that a platform gives out one after another, and the promises that hold for each such list.
#pragma once

#include "items.h"
#include "key.h"
#include "probe.h"

#include <array>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ipmib::portcheck
{

// Longer lists are looked at this far.
inline constexpr std::size_t longestListing = 20000;

// A row's record, and where it stands in its list. Lists of all kinds are checked by the same code.
struct ListedRow {
    Key key;
    alignas(std::uint64_t) std::array<std::uint8_t, sizeof(FullAddressRecord)> bytes{};

    template <typename Record>
    static ListedRow of(const Key &key, const Record &record)
    {
        static_assert(sizeof(Record) <= sizeof bytes && std::is_trivially_copyable_v<Record>);
        ListedRow row{key};
        std::memcpy(row.bytes.data(), &record, sizeof record);
        return row;
    }
    template <typename Record>
    Record as() const
    {
        Record record;
        std::memcpy(&record, bytes.data(), sizeof record);
        return record;
    }
};

using FoundRow = std::optional<ListedRow>;

// What the record that a "next" is asked with holds beside its key.
enum class Cursor {
    cleared,
    used // another row's values
};

template <typename Record>
Record recordFor(Cursor cursor)
{
    constexpr int notTheOnesLookedFor = 0xA5;
    Record record{};
    if (cursor == Cursor::used) {
        std::memset(&record, notTheOnesLookedFor, sizeof record);
    }
    return record;
}

struct Listing {
    std::string what; // "prefixes of interface 3"
    std::string firstCall;
    std::string nextCall;
    std::string exactCall;
    Promise ascend;
    Promise move;
    Promise begin;
    Promise follow;
    Promise exactly = Promise::count; // of a list with an exact call
    Promise keys =
        Promise::count; // of the fields that are the key; a list whose keys are wrong is looked at no further
    Key start;          // what the walk begins behind
    std::function<FoundRow()> first; // empty where a list has no such call
    std::function<FoundRow(const Key &)> next;
    std::function<FoundRow(const Key &)> nextOverAnother; // with a used record; empty where key and row are two records
    std::function<FoundRow(const Key &)> exact;           // empty where a list has no such call
    std::function<std::string(const Key &)> insteadOf;    // what the exact call finds in place of a key; may be empty
    std::function<void()> elsewhere;                      // asks for a row of another list of the kind; may be empty
    std::function<std::string(const Key &)> text;
    std::function<Items(const ListedRow &)> items;
    std::function<void(const ListedRow &)> look; // at each row by itself
};

// Walks the list from its start to its end, also through what does not ascend, for a while.
std::vector<ListedRow> rowsOf(const Listing &listing, Probe &probe);

// The list with all that holds for every list checked.
std::vector<ListedRow> checkedRowsOf(const Listing &listing, Probe &probe);

// Asks the exact call for rows that there may be: what it finds and no walk comes to is out of order.
void checkHidden(const Listing &listing, const std::vector<ListedRow> &rows, std::vector<Key> maybe, Probe &probe);

} // namespace ipmib::portcheck
