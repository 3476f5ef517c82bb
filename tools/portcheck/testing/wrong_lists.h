// SPDX-License-Identifier: BSD-3-Clause
// Mistakes in lists of rows: what follows a key when they are made.
#pragma once

#include "key.h"
#include "wrong_fields.h"

#include <ipmib/message.h>

namespace ipmib::portcheck
{

template <typename Record>
struct Row {
    Key key;
    Record record;
};

template <typename Record>
using Rows = std::vector<Row<Record>>;

// The mistake in a list of this name, "" when there is none.
inline std::string mistakeIn(const std::string &list)
{
    return mistake().compare(0, list.size() + 1, list + ":") == 0 ? mistake().substr(list.size() + 1) : "";
}

template <typename Record>
bool holds(const Rows<Record> &rows, const Key &key)
{
    return std::any_of(rows.begin(), rows.end(), [&](const auto &row) { return row.key == key; });
}

// What follows the key in the list with the mistake.
template <typename Record>
const Row<Record> *nextIn(Rows<Record> &rows, const Key &key, const Key &start, const std::string &kind)
{
    const std::size_t count = rows.size();
    const bool isListed = holds(rows, key);
    if (count >= 2 && (kind == "unsorted" || kind == "disordered")) {
        std::swap(rows[count - 1], rows[count - 2]);
    } else if (count >= 2 && kind == "ends") {
        rows.pop_back();
    } else if (count >= 2 && kind == "lacks") {
        rows.erase(rows.begin() + 1);
    } else if (kind == "forgets" && !isListed && !(key == start)) {
        return nullptr;
    }
    if (count >= 2 && kind == "repeats" && key == rows[1].key) {
        return &rows[1];
    }
    if (count >= 2 && kind == "endless" && key == rows.back().key) {
        return &rows.front();
    }
    if (kind == "stays" && count > 0 && key == rows.back().key) {
        return &rows.back();
    }
    if (kind == "inclusive" && isListed) {
        return &*std::find_if(rows.begin(), rows.end(), [&](const auto &row) { return row.key == key; });
    }
    if (kind == "cursor") { // goes on where it is, wherever it is asked to
        static std::size_t place = 0;
        place = key == start ? 0 : place + 1;
        return place < count ? &rows[place] : nullptr;
    }
    if (kind == "disordered" && isListed) {
        const auto place = std::find_if(rows.begin(), rows.end(), [&](const auto &row) { return row.key == key; });
        return place + 1 == rows.end() ? nullptr : &*(place + 1);
    }
    const auto next = std::find_if(rows.begin(), rows.end(), [&](const auto &row) { return key < row.key; });
    return next == rows.end() ? nullptr : &*next;
}

template <typename Record>
std::uint32_t answer(const Row<Record> *row, Record *record)
{
    if (row == nullptr) {
        return RC_NO_MORE;
    }
    *record = row->record;
    return 0;
}

inline bool keyBefore(const Key &left, const Key &right)
{
    return left < right;
}

template <typename Record>
void sort(Rows<Record> &rows)
{
    std::sort(rows.begin(), rows.end(),
              [](const auto &left, const auto &right) { return keyBefore(left.key, right.key); });
}

template <typename Record>
Rows<Record> mixed(Rows<Record> rows, const Rows<Record> &others)
{
    rows.insert(rows.end(), others.begin(), others.end());
    sort(rows);
    return rows;
}

} // namespace ipmib::portcheck
