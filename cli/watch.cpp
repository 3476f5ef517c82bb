// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl watch: how much counters grow a second, again and again.
#include "commands.h"
#include "listing.h"
#include "rates.h"
#include "view.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <list>

namespace ipmib::cli
{
namespace
{

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t signalled = 0; // the signal, when there was one

constexpr int exitSignalled = 128; // plus the number, as shells have it

// The wait between two looks ends with it.
void endOnInterrupt()
{
    struct sigaction action {
    };
    action.sa_handler = [](int number) { signalled = number; };
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

const View &viewFor(const Words &words, Version version)
{
    const std::string name = words.empty() ? "" : words.front();
    const View *view = name == "statistics"   ? &countersViewOf(version)
                       : name == "interfaces" ? &statisticsView
                       : name == "icmp"       ? &icmpView
                                              : nullptr;
    if (view == nullptr) {
        throw host::UsageError("watch: watch statistics, interfaces or icmp");
    }
    if (words.size() > (view->takesArgument ? 2 : 1)) {
        throw host::UsageError("watch: \"" + words.back() + "\" is too much");
    }
    return *view;
}

// The view's columns, with those that are counted marked as rates.
class RateColumns
{
  public:
    RateColumns(const View &view, const std::vector<Row> &counted) : columns_(view.columns.begin(), view.columns.end())
    {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (std::ranges::any_of(counted, [i](const Row &row) { return row[i].counter.has_value(); })) {
                columns_[i].heading = headings_.emplace_back(std::string(columns_[i].heading) + "/S").c_str();
            }
        }
    }
    RateColumns(const RateColumns &) = delete;
    RateColumns &operator=(const RateColumns &) = delete;

    std::span<const Column> columns() const { return columns_; }

  private:
    std::list<std::string> headings_;
    std::vector<Column> columns_;
};

void write(std::span<const Column> columns, const std::vector<Row> &rows, const Options &options, bool first)
{
    constexpr const char *clearScreen = "\033[H\033[2J";
    const bool terminal = isatty(STDOUT_FILENO) == 1;
    if (!options.json) {
        std::fputs(terminal ? clearScreen : first ? "" : "\n", stdout);
    }
    Listing listing(columns, options);
    for (const Row &row : rows) {
        listing.add(row);
    }
    listing.finish();
    std::fflush(stdout);
}

} // namespace

int watch(Session &session, const Options &options, const Words &words)
{
    const View &view = viewFor(words, options.version);
    const std::string argument = words.size() > 1 ? words.back() : "";
    session.show(options.version);
    endOnInterrupt();
    Rates rates;
    Clock::time_point before;
    for (unsigned looks = 0;; ++looks) {
        session.freshState();
        const Clock::time_point now = Clock::now();
        std::vector<Row> counted;
        view.list(session, argument, [&counted](Row row) { counted.push_back(std::move(row)); });
        const std::vector<Row> rows = rates.update(counted, std::chrono::duration<double>(now - before).count());
        if (looks > 0) {
            write(RateColumns(view, counted).columns(), rows, options, looks == 1);
        }
        before = now;
        if (looks == options.count && options.count != 0) {
            return host::exitSuccess;
        }
        if (!session.wait(static_cast<int>(options.intervalMs)) || signalled != 0) {
            return exitSignalled + signalled;
        }
    }
}

} // namespace ipmib::cli
