// SPDX-License-Identifier: BSD-3-Clause
// Counters that begin at a value and grow, by the names of the MIB's columns.
#pragma once

#include "device/growth.h"

#include <ipmib/platform_ip.h>
#include <ipmib/records.h>

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

namespace ipmib::simulated
{

class Counter
{
  public:
    Counter() = default;
    // The rate is a second's.
    Counter(std::uint64_t start, double rate) : start_(start), growth_(rate) {}
    // A number, or {"start": 100, "rate": 2.5, "reset": {"at": 60, "every": 3600}}.
    static Counter read(const Value &value);

    // What the value says from now on. Without a start it goes on from where it is, without a rate with the one that it
    // has; times of a shape or of resets count from now.
    Counter changed(const Value &value, Time running) const;

    std::uint64_t after(Time running) const;

  private:
    struct Resets {
        Time at;
        Time every; // 0: once
    };

    void readResets(const Value &value, Time age);

    std::uint64_t start_ = 0; // plus the growth since `begun_`
    Growth growth_;
    Time begun_ = 0;
    std::shared_ptr<const Resets> resets_; // null for none
};

// One counter of a record: its name in scenarios, and its place.
template <class Record>
struct CounterField {
    const char *name;
    std::uint64_t Record::*member;

    std::uint64_t &in(Record &record) const { return record.*member; }
};

// Named as in "ipIfStatsInReceives" behind the table's name. One that is looked for to be set is counted.
template <>
struct CounterField<IpmibIpCounters> {
    const char *name;
    unsigned which; // IPMIB_IP_*

    std::uint64_t &in(IpmibIpCounters &record) const
    {
        record.counted |= std::uint64_t{1} << which;
        return record.value[which];
    }
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

    // What the value says from now on; counters that it does not name stay.
    CounterSet changed(const Value &value, Time running) const
    {
        CounterSet set = *this;
        Object object(value);
        for (const CounterField<Record> &field : counterFields<Record>()) {
            if (const auto member = object.find(field.name)) {
                const auto place = std::ranges::find(set.counters_, &field, &Entry::field);
                if (place == set.counters_.end()) {
                    set.put(field, Counter().changed(*member, running));
                } else {
                    place->counter = place->counter.changed(*member, running);
                }
            }
        }
        object.finish();
        return set;
    }

    void put(const CounterField<Record> &field, const Counter &counter) { counters_.push_back({&field, counter}); }

    void setIn(Record &record, Time running) const
    {
        for (const Entry &entry : counters_) {
            entry.field->in(record) = entry.counter.after(running);
        }
    }
    void addTo(Record &record, Time running) const
    {
        for (const Entry &entry : counters_) {
            entry.field->in(record) += entry.counter.after(running);
        }
    }

    bool empty() const { return counters_.empty(); }

  private:
    struct Entry {
        const CounterField<Record> *field;
        Counter counter;
    };
    std::vector<Entry> counters_;
};

// As the module's records have them.
Ip6MibStat ip6MibStatOf(const IpmibIpCounters &counters);
IpMibIfStat ipMibIfStatOf(const IpmibIpCounters &counters);

// The ICMP counters of the system, of one version of IP.
class IcmpCounters
{
  public:
    // {"inErrors": 0, "types": {"135": {"in": 4, "out": {"rate": 1}}}}
    static IcmpCounters read(const Value &value);

    // Messages that are not counted by themselves are the sum of those of all types.
    IpmibIcmpCounters after(Time running) const;
    bool empty() const { return types_.empty() && !inMsgs_ && !outMsgs_ && !inErrors_; }

  private:
    struct Type {
        std::uint8_t number;
        Counter in;
        Counter out;
    };
    std::vector<Type> types_;
    std::optional<Counter> inMsgs_;
    std::optional<Counter> outMsgs_;
    std::optional<Counter> inErrors_;
};

Icmp6MibStat icmp6MibStatOf(const IpmibIcmpCounters &counters);

} // namespace ipmib::simulated
