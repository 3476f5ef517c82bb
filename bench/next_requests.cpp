// SPDX-License-Identifier: BSD-3-Clause
// GETNEXT requests over a column, from the packet's beginning to the value: platform, module and resolver, or the
// product's own table where the module has none, without the SNMP library. For runs under callgrind, which are told
// when a kind of request begins and ends and count each by itself.
//
//   bench_next walk PLATFORM PLUGIN_DIRECTORY COLUMN > ROWS
//   bench_next count PLATFORM PLUGIN_DIRECTORY COLUMN REQUESTS MOST_ROWS < ROWS
//
// COLUMN may go on with a slash and the beginning of the index, which the walk does not leave: 1.3.6.1.2.1.4.34.1.3/4.
// PLATFORM is that of ipmibd --platform: linux, for the network namespace it runs in, or simulated:SCENARIO. `walk`
// prints how many rows a walk over the column meets and how much processor time it takes, then some thousand of the
// rows; `count` reads that, so that it need not walk. It counts requests that go on from the middle of the table, each
// from what the one before found (`walk`), requests from rows all over the table (`random`) and, unless the table has
// more rows than the last argument says, a walk over all of it (`whole`).
#include "host/plugin.h"
#include "tables/served_device.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else // the counts need callgrind, the times do not
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

namespace
{

using namespace ipmib::host;

Oid parse(const std::string &text)
{
    Oid name;
    std::istringstream ids(text);
    for (std::string id; std::getline(ids, id, '.');) {
        if (!id.empty()) {
            name.append(static_cast<SubId>(std::stoul(id)));
        }
    }
    return name;
}

class Walker
{
  public:
    Walker(Plugin &plugin, ipmib::tables::ServedDevice &device, const std::string &column) : plugin_(plugin)
    {
        const std::size_t slash = std::min(column.find('/'), column.size());
        const Oid name = parse(column.substr(0, slash));
        entry_.append(name.view().first(name.size() - 1));
        within_.append(name.view());
        within_.append(parse(column.substr(std::min(slash + 1, column.size()))).view());
        if (Oid found; !next(within_, found)) {
            findOwnTable(device);
        }
    }

    // False at the end.
    bool next(const Oid &after, Oid &found)
    {
        if (plugin_.platform() != nullptr && plugin_.platform()->begin_packet != nullptr) {
            plugin_.platform()->begin_packet();
        }
        variable_.asked = after.view();
        if (own_ != nullptr) {
            own_->getNext({&variable_, 1}, entry_.view());
        } else {
            plugin_.resolver().getNext({&variable_, 1}, entry_.view());
        }
        found = variable_.name;
        return variable_.status == Status::ok && isWithin(found.view(), within_.view());
    }

    template <class Visit>
    void whole(Visit visit)
    {
        Oid at = within_;
        for (Oid found; next(at, found); at = found) {
            visit(found);
        }
    }

  private:
    void findOwnTable(ipmib::tables::ServedDevice &device)
    {
        for (const ServedTable &table : device.catalogue().tables()) {
            if (isWithin(within_.view(), table.root.view())) {
                own_ = table.source;
                own_->start();
            }
        }
    }

    Plugin &plugin_;
    Source *own_ = nullptr; // null: the module has the column
    Oid within_;
    Oid entry_;
    Variable variable_;
};

// Some thousand rows, evenly over a table of unknown size.
class Sample
{
  public:
    void add(const Oid &row)
    {
        if (seen_++ % stride_ != 0) {
            return;
        }
        rows_.push_back(row);
        if (rows_.size() == most) { // every other one stays
            for (std::size_t i = 0; i < most / 2; ++i) {
                rows_[i] = rows_[2 * i];
            }
            rows_.resize(most / 2);
            stride_ *= 2;
        }
    }
    std::size_t seen() const { return seen_; }
    std::vector<Oid> &rows() { return rows_; }

  private:
    static constexpr std::size_t most = 4096;
    std::vector<Oid> rows_;
    std::size_t seen_ = 0;
    std::size_t stride_ = 1;
};

void mustBeThere(bool found)
{
    if (!found) {
        throw std::runtime_error("the table has ended early");
    }
}

double secondsOfProcessor()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void walkAll(Walker &walker)
{
    Sample sample;
    const double begin = secondsOfProcessor();
    walker.whole([&sample](const Oid &row) { sample.add(row); });
    std::printf("%zu %.6f\n", sample.seen(), secondsOfProcessor() - begin);
    for (const Oid &row : sample.rows()) {
        for (const SubId id : row.view()) {
            std::printf(".%u", id);
        }
        std::printf("\n");
    }
}

void countRequests(Walker &walker, std::size_t requests, std::size_t mostRows)
{
    std::size_t number = 0;
    std::string line;
    std::cin >> number >> line; // the time
    std::vector<Oid> rows;
    while (std::cin >> line) {
        rows.push_back(parse(line));
    }
    if (rows.size() <= 2 * requests) {
        throw std::runtime_error(std::to_string(rows.size()) + " rows are too few");
    }
    rows.pop_back(); // it may be the last one, which has no successor
    Oid at = rows[rows.size() / 2];
    Oid found;
    mustBeThere(walker.next(at, found)); // what is done once is done
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    for (std::size_t i = 0; i < requests; ++i) {
        mustBeThere(walker.next(at, found));
        at = found;
    }
    CALLGRIND_DUMP_STATS_AT("walk");
    std::shuffle(rows.begin(), rows.end(), std::mt19937(1));
    CALLGRIND_ZERO_STATS;
    for (std::size_t i = 0; i < requests; ++i) {
        mustBeThere(walker.next(rows[i], found));
    }
    CALLGRIND_DUMP_STATS_AT("random");
    if (number <= mostRows) {
        CALLGRIND_ZERO_STATS;
        walker.whole([](const Oid &) {});
        CALLGRIND_DUMP_STATS_AT("whole");
    }
}

} // namespace

int main(int argc, char **argv)
{
    const std::string_view what = argc > 1 ? argv[1] : "";
    if (!(what == "walk" && argc == 5) && !(what == "count" && argc == 7)) {
        std::fprintf(stderr,
                     "usage: bench_next walk PLATFORM PLUGIN_DIRECTORY COLUMN | count PLATFORM PLUGIN_DIRECTORY "
                     "COLUMN REQUESTS MOST_ROWS\n");
        return 2;
    }
    try {
        PluginOptions options;
        options.platform = argv[2];
        options.pluginDirectory = argv[3];
        Plugin plugin(options);
        ipmib::tables::ServedDevice device(plugin);
        Walker walker(plugin, device, argv[4]);
        if (what == "walk") {
            walkAll(walker);
        } else {
            countRequests(walker, std::strtoul(argv[5], nullptr, 10), std::strtoul(argv[6], nullptr, 10));
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_next: %s\n", error.what());
        return 1;
    }
}
