// SPDX-License-Identifier: BSD-3-Clause
// The routes of one version of IP, by destination: one record each, as small as a million of them ask for.
#include "routes/route_records.h"

#include <sys/socket.h>

#include <array>
#include <compare>

namespace ipmib::platform
{

namespace
{

struct Ipv4Destination {
    std::uint32_t number;

    static Ipv4Destination of(const PackedAddress &address) { return {static_cast<std::uint32_t>(address.low)}; }
    PackedAddress packed() const { return {0, number}; }
    friend auto operator<=>(const Ipv4Destination &, const Ipv4Destination &) = default;
};

// In words of 32 bits, so that no record has a gap.
struct Ipv6Destination {
    std::array<std::uint32_t, 4> words;

    static Ipv6Destination of(const PackedAddress &address)
    {
        const auto upper = [](std::uint64_t half) { return static_cast<std::uint32_t>(half >> 32); };
        const auto lower = [](std::uint64_t half) { return static_cast<std::uint32_t>(half); };
        return {{upper(address.high), lower(address.high), upper(address.low), lower(address.low)}};
    }
    PackedAddress packed() const
    {
        const auto half = [this](std::size_t at) { return std::uint64_t{words[at]} << 32 | words[at + 1]; };
        return {half(0), half(2)};
    }
    friend auto operator<=>(const Ipv6Destination &, const Ipv6Destination &) = default;
};

template <class Destination>
class Records : public RouteRecords
{
  public:
    std::size_t size() const override { return rows_.size(); }
    std::size_t memory() const override { return rows_.memory(); }
    bool atOrAfter(const RouteRecord &key, RouteRecord &found) const override
    {
        return take(rows_.atOrAfter(Row::of(key)), found);
    }
    bool after(const RouteRecord &key, RouteRecord &found) const override
    {
        return take(rows_.after(Row::of(key)), found);
    }
    bool put(const RouteRecord &record, Generation generation) override
    {
        Row row = Row::of(record);
        if (const Row *known = rows_.find(row)) {
            row.changed = known->changed;
        }
        return rows_.put(row, generation);
    }
    bool erase(const RouteRecord &record) override { return rows_.erase(Row::of(record)); }
    bool next(const RouteRecord &key, bool behind, const std::function<bool(std::uint32_t hops)> &count,
              RouteRecord &found) const override
    {
        const Row *row = behind ? rows_.after(Row::of(key)) : rows_.atOrAfter(Row::of(key));
        if (row != nullptr && !count(row->hops)) {
            const Row from = *row;
            row = nullptr;
            rows_.eachFrom(from, [&](const Row &each) {
                row = count(each.hops) ? &each : nullptr;
                return row == nullptr;
            });
        }
        return take(row, found);
    }
    bool eraseSome(Place &from, const Leaves &leaves) override
    {
        constexpr std::size_t rows = 2'000;
        const auto next =
            rows_.eraseSome(from ? std::optional(Row::of(*from)) : std::nullopt, rows,
                            [&](const Row &row, Generation generation) { return leaves(row.record(), generation); });
        from = next ? std::optional(next->record()) : std::nullopt;
        return from.has_value();
    }

  private:
    static constexpr unsigned classBits = 24;
    static_assert(mostClasses == 1u << classBits);

    struct Row {
        Destination destination;
        std::uint32_t lengthAndClass;
        std::uint32_t hops;
        std::uint32_t changed;

        static Row of(const RouteRecord &record)
        {
            return {Destination::of(record.destination),
                    std::uint32_t{record.length} << classBits | record.routeClass % mostClasses, record.hops,
                    record.changed};
        }
        RouteRecord record() const
        {
            return {destination.packed(), static_cast<std::uint8_t>(lengthAndClass >> classBits),
                    lengthAndClass % mostClasses, hops, changed};
        }
    };
    static_assert(sizeof(Row) == sizeof(Destination) + 12, "rows have no gaps");
    struct ByPlace {
        bool operator()(const Row &a, const Row &b) const
        {
            if (const auto order = a.destination <=> b.destination; order != 0) {
                return order < 0;
            }
            return a.lengthAndClass != b.lengthAndClass ? a.lengthAndClass < b.lengthAndClass : a.hops < b.hops;
        }
    };
    static bool take(const Row *row, RouteRecord &found)
    {
        if (row == nullptr) {
            return false;
        }
        found = row->record();
        return true;
    }

    OrderedTable<Row, ByPlace> rows_;
};

} // namespace

std::unique_ptr<RouteRecords> RouteRecords::of(std::uint8_t family)
{
    if (family == AF_INET) {
        return std::make_unique<Records<Ipv4Destination>>();
    }
    return std::make_unique<Records<Ipv6Destination>>();
}

} // namespace ipmib::platform
