// SPDX-License-Identifier: BSD-3-Clause
// A device's interfaces as walks over them see them: which follows in a selection, and what its link-local address is.
// The search for the next link-local address asks both of every interface for each row, so a row here is all that such
// a step reads, and lies behind the one before.
#pragma once

#include "core/type_selection.h"
#include "ordered_table.h"

#include <ipmib/records.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ipmib::platform
{

class InterfaceList
{
  public:
    // What is not 0 in a record of an address, which the caller of the service has cleared.
    struct Kept {
        std::uint8_t head[offsetof(FullAddressRecord, unread_40)];
        std::uint32_t created_s;
        std::uint32_t last_changed_s;

        static Kept of(const FullAddressRecord &record)
        {
            Kept kept;
            std::memcpy(kept.head, &record, sizeof kept.head);
            kept.created_s = record.created_s;
            kept.last_changed_s = record.last_changed_s;
            return kept;
        }
        void copyTo(FullAddressRecord *record) const
        {
            std::memcpy(static_cast<void *>(record), head, sizeof head);
            record->created_s = created_s;
            record->last_changed_s = last_changed_s;
        }
    };
    struct Row {
        std::uint32_t ifIndex;
        std::uint8_t type; // the code under which it is selected
        bool isSteady;     // there for as long as it is listed
        mutable bool hasLinkLocal = false;
        mutable std::uint64_t version = 0; // at which the address was asked for; 0: it has to be
        mutable Kept linkLocal{};
    };

    void put(std::uint32_t ifIndex, std::uint8_t type, bool isSteady = true) { rows_.put({ifIndex, type, isSteady}); }
    void erase(std::uint32_t ifIndex) { rows_.erase(ifIndex); }
    void clear() { rows_.clear(); }

    // The first of the selection behind an ifIndex; null when there is none.
    const Row *next(const TypeSelection &selection, std::uint32_t ifIndex) const
    {
        if (isLast(ifIndex)) {
            const Row *row = rows_.behindLast();
            if (row != nullptr && selection.holds(row->type)) {
                return row;
            }
        }
        return searchNext(selection, ifIndex);
    }

    // What a service says of an interface's link-local address.
    struct Answer {
        bool found;
        bool lasts; // as long as the version
    };

    // What ask(record) says, or has said at this version, which is not 0.
    template <class Ask>
    bool linkLocal(std::uint32_t ifIndex, std::uint64_t version, Ask ask, FullAddressRecord *record) const
    {
        if (isLast(ifIndex) && rows_.last()->version == version && rows_.last()->hasLinkLocal) {
            rows_.last()->linkLocal.copyTo(record);
            return true;
        }
        return searchLinkLocal(ifIndex, version, ask, record);
    }

  private:
    struct ByIfIndex {
        bool operator()(const Row &a, const Row &b) const { return a.ifIndex < b.ifIndex; }
        bool operator()(const Row &a, std::uint32_t b) const { return a.ifIndex < b; }
        bool operator()(std::uint32_t a, const Row &b) const { return a < b.ifIndex; }
    };

    // Whether a walk stands there.
    bool isLast(std::uint32_t ifIndex) const { return rows_.last() != nullptr && rows_.last()->ifIndex == ifIndex; }

    // What steps of a walk seldom need stays out of their way.
    [[gnu::noinline]] const Row *searchNext(const TypeSelection &selection, std::uint32_t ifIndex) const
    {
        const Row *row = rows_.after(ifIndex);
        while (row != nullptr && !selection.holds(row->type)) {
            row = rows_.after(row->ifIndex);
        }
        return row;
    }

    template <class Ask>
    [[gnu::noinline]] bool searchLinkLocal(std::uint32_t ifIndex, std::uint64_t version, Ask ask,
                                           FullAddressRecord *record) const
    {
        const Row *row = rows_.find(ifIndex);
        if (row == nullptr) {
            return ask(record).found;
        }
        if (row->version == version) {
            if (row->hasLinkLocal) {
                row->linkLocal.copyTo(record);
            }
            return row->hasLinkLocal;
        }
        const Answer answer = ask(record);
        row->hasLinkLocal = answer.found;
        row->linkLocal = Kept::of(*record);
        row->version = answer.lasts ? version : 0;
        return answer.found;
    }

    OrderedTable<Row, ByIfIndex> rows_;
};

} // namespace ipmib::platform
