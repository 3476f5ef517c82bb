// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl watch: how much counters grow a second, and which rows come and go, again and again.
#include "changes.h"
#include "commands.h"
#include "listing.h"
#include "output.h"
#include "rates.h"
#include "view_names.h"

#include <sys/ioctl.h>
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

    std::span<const ListingColumn> columns() const { return columns_; }

  private:
    std::list<std::string> headings_;
    std::vector<ListingColumn> columns_;
};

// The lines of the terminal that the output goes to; 0: it goes somewhere else.
std::size_t outputHeight()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_row : 0;
}

// How many rows a picture has room for beside its headings, the note and the line where the terminal's cursor stays.
std::size_t roomForRows(std::size_t height)
{
    constexpr std::size_t others = 3;
    return height > others ? height - others : 1;
}

void writePicture(std::span<const ListingColumn> columns, std::vector<Row> rows, const Options &options, bool first)
{
    constexpr const char *clearScreen = "\033[H\033[2J";
    const bool isTerminal = isatty(STDOUT_FILENO) == 1;
    if (!options.json) {
        std::fputs(isTerminal ? clearScreen : first ? "" : "\n", stdout);
    }
    const Selection selection(columns, options);
    std::erase_if(rows, [&selection](const Row &row) { return !selection.takes(row); });
    Listing listing(columns, options);
    const std::size_t room = roomForRows(outputHeight());
    if (isTerminal && !options.json && rows.size() > room) {
        listing.note(std::to_string(rows.size() - room) + " more rows");
        if (selection.sorts()) {
            selection.sort(rows);
        } else {
            sortByActivity(rows);
        }
        rows.resize(room);
    }
    for (Row &row : rows) {
        listing.add(std::move(row));
    }
    listing.finish();
    std::fflush(stdout);
}

// Looks until it has looked often enough, or a signal comes.
template <class Look>
int lookAgainAndAgain(LocalDevice &device, const Options &options, Look look)
{
    endOnInterrupt();
    for (unsigned looks = 0;; ++looks) {
        device.freshState();
        look(looks);
        std::fflush(stdout);
        if (looks == options.count && options.count != 0) {
            return host::exitSuccess;
        }
        if (!device.wait(static_cast<int>(options.intervalMs)) || signalled != 0) {
            return exitSignalled + signalled;
        }
    }
}

std::vector<Row> rowsOf(LocalDevice &device, const View &view, const ViewRequest &request)
{
    std::vector<Row> rows;
    listRows(device, view, request, [&rows](Row row) { rows.push_back(std::move(row)); });
    return rows;
}

int watchRates(LocalDevice &device, const Options &options, const View &view, const ViewRequest &request)
{
    const Selection columnsExist(view.columns, options);
    Rates rates;
    Clock::time_point before;
    return lookAgainAndAgain(device, options, [&](unsigned looks) {
        const Clock::time_point now = Clock::now();
        const std::vector<Row> counted = rowsOf(device, view, request);
        const std::vector<Row> rows = rates.update(counted, std::chrono::duration<double>(now - before).count());
        if (looks > 0) {
            writePicture(RateColumns(view, counted).columns(), rows, options, looks == 1);
        }
        before = now;
    });
}

int watchChanges(LocalDevice &device, const Options &options, const View &view, const ViewRequest &request)
{
    Changes changes(view.columns);
    const Selection selection(changes.columns(), options);
    const std::size_t width = outputWidth(options);
    TextTable table(stdout, changes.columns(), width, Palette::ofStandardOutput(options));
    return lookAgainAndAgain(device, options, [&](unsigned looks) {
        const std::vector<Row> rows = rowsOf(device, view, request);
        std::vector<Row> told = changes.update(rows);
        if (looks == 0) {
            if (!options.json) {
                table.begin(changes.likely(rows));
                const std::string note = noteOfLeftOut(table.leftOut(), width);
                note.empty() ? void() : complain(note);
            }
            return;
        }
        std::erase_if(told, [&selection](const Row &row) { return !selection.takes(row); });
        selection.sort(told);
        JsonList json(changes.columns());
        for (const Row &row : told) {
            options.json ? json.add(row) : table.add(row);
        }
        if (options.json) {
            json.finish();
        }
    });
}

bool isCounted(const View &view)
{
    return view.name == std::string_view(statisticsView.name) || &view == &icmpView;
}

} // namespace

int watch(LocalDevice &device, const Options &options, const Words &words)
{
    ViewRequest request = parseViewRequest("watch", words);
    const Version version = options.version == Version::both ? request.version : options.version;
    device.show(version);
    // What an interface does is its traffic; all counters of the system are more than its line in the table.
    if (request.view == &interfacesView) {
        request.view = &statisticsView;
    } else if (request.view == &statisticsView || request.view == &countersView) {
        request.view = &countersViewOf(version);
    }
    return isCounted(*request.view) ? watchRates(device, options, *request.view, request)
                                    : watchChanges(device, options, *request.view, request);
}

} // namespace ipmib::cli
