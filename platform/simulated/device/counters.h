// SPDX-License-Identifier: BSD-3-Clause
// Counters that begin at a value and grow evenly, by the names of the MIB's columns.
#pragma once

#include "scenario/schedule.h"

#include <ipmib/records.h>

#include <span>
#include <vector>

namespace ipmib::simulated
{

struct Counter {
    std::uint64_t start = 0;
    double rate = 0; // a second

    // A number, or {"start": 100, "rate": 2.5}.
    static Counter read(const Value &value);

    std::uint64_t after(Time running) const;
};

// One counter of a record: its name, as in "ipIfStatsInReceives" behind the table's name, and its place.
template <class Record>
struct CounterField {
    const char *name;
    std::uint64_t Record::*wide = nullptr;
    std::uint32_t Record::*narrow = nullptr;

    constexpr CounterField(const char *text, std::uint64_t Record::*place) : name(text), wide(place) {}
    constexpr CounterField(const char *text, std::uint32_t Record::*place) : name(text), narrow(place) {}

    void set(Record &record, std::uint64_t number) const
    {
        if (wide != nullptr) {
            record.*wide = number;
        } else {
            record.*narrow = static_cast<std::uint32_t>(number);
        }
    }
    std::uint64_t get(const Record &record) const { return wide != nullptr ? record.*wide : record.*narrow; }
};

template <class Record>
std::span<const CounterField<Record>> counterFields();

// What a scenario says of the counters of one record; the others stay what they are.
template <class Record>
class CounterSet
{
  public:
    static CounterSet read(const Value &value)
    {
        CounterSet set;
        Object object(value);
        for (const CounterField<Record> &field : counterFields<Record>()) {
            if (const auto member = object.find(field.name)) {
                set.put(field, Counter::read(*member));
            }
        }
        object.finish();
        return set;
    }

    void put(const CounterField<Record> &field, const Counter &counter) { counters_.push_back({&field, counter}); }

    void setIn(Record &record, Time running) const
    {
        for (const Entry &entry : counters_) {
            entry.field->set(record, entry.counter.after(running));
        }
    }
    void addTo(Record &record, Time running) const
    {
        for (const Entry &entry : counters_) {
            entry.field->set(record, entry.field->get(record) + entry.counter.after(running));
        }
    }

  private:
    struct Entry {
        const CounterField<Record> *field;
        Counter counter;
    };
    std::vector<Entry> counters_;
};

// The ICMPv6 counters of the system.
class IcmpCounters
{
  public:
    // {"inErrors": 0, "types": {"135": {"in": 4, "out": {"rate": 1}}}}
    static IcmpCounters read(const Value &value);

    // Messages that are not counted by themselves are the sum of those of all types.
    void setIn(Icmp6MibStat &record, Time running) const;

  private:
    struct Type {
        std::uint8_t number;
        Counter in;
        Counter out;
    };
    std::vector<Type> types_;
    std::optional<Counter> inMsgs_;
    std::optional<Counter> outMsgs_;
    Counter inErrors_;
};

} // namespace ipmib::simulated
