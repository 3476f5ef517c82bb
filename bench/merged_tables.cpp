// SPDX-License-Identifier: BSD-3-Clause
// What it costs that a table is made of several sources: processor time a variable of a walk of the same rows, once as
// they come from one source, and once from two that are merged, of rows that cost next to nothing.
//
//   bench_merged [ROWS [ROUNDS]]
#include "host/merged_source.h"
#include "host/row_source.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace
{

using namespace ipmib::host;

const Oid entry{1, 3, 6, 1, 2, 1, 4, 35, 1};
constexpr SubId columnCount = 5;

struct Row {
    SubId interface;
    SubId number;
};

template <SubId column>
std::optional<Value> valueOf(const Row &row)
{
    return Value{ValueType::unsigned32, row.number + column, {}, {}};
}

constexpr RowColumn<Row> allColumns[columnCount] = {
    {1, valueOf<1>}, {2, valueOf<2>}, {3, valueOf<3>}, {4, valueOf<4>}, {5, valueOf<5>}};

// So many interfaces, on each the rows with numbers from `low` to `high`.
class Rows
{
  public:
    using Row = ::Row;
    using Index = std::array<SubId, 2>;
    static constexpr SubIdRange shape[] = {anyIfIndex, {0, UINT32_MAX}};

    Rows(SubId interfaces, SubId low, SubId high, std::span<const RowColumn<Row>> columns)
        : interfaces_(interfaces), low_(low), high_(high), columns_(columns)
    {
    }

    std::span<const RowColumn<Row>> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const
    {
        row = {index[0], index[1]};
        return index[0] >= 1 && index[0] <= interfaces_ && index[1] >= low_ && index[1] <= high_;
    }
    bool next(const Index *behind, Row &row) const
    {
        if (behind == nullptr || (*behind)[0] == 0) {
            row = {1, low_};
        } else if ((*behind)[1] < low_) {
            row = {(*behind)[0], low_};
        } else if ((*behind)[1] < high_) {
            row = {(*behind)[0], (*behind)[1] + 1};
        } else {
            row = {(*behind)[0] + 1, low_};
        }
        return row.interface <= interfaces_;
    }
    Index indexOf(const Row &row) const { return {row.interface, row.number}; }

  private:
    SubId interfaces_;
    SubId low_;
    SubId high_;
    std::span<const RowColumn<Row>> columns_;
};

// A table, with the sources that it is made of.
struct Table {
    std::vector<std::unique_ptr<Source>> parts;
    std::unique_ptr<MergedSource> merged;

    explicit Table(std::initializer_list<Rows> sources)
    {
        std::vector<Source *> all;
        for (const Rows &rows : sources) {
            all.push_back(parts.emplace_back(std::make_unique<RowSource<Rows>>(entry.view(), rows)).get());
        }
        if (all.size() > 1) {
            merged = std::make_unique<MergedSource>(entry.view(), all);
        }
    }
    Source &source() { return merged ? *merged : *parts.front(); }
    void beginPacket()
    {
        for (const auto &part : parts) {
            part->beginPacket();
        }
        if (merged) {
            merged->beginPacket();
        }
    }
};

double now()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

struct Shape {
    const char *name;
    SubId columns;   // side by side
    int repetitions; // in a packet
};
constexpr Shape shapes[] = {{"GETNEXT, one column", 1, 1},
                            {"GETNEXT, 5 columns", columnCount, 1},
                            {"bulk 50, one column", 1, 50},
                            {"bulk 50, 5 columns", columnCount, 50}};

// Microseconds a variable of a whole walk of these columns; ends the program when it does not find so many rows.
double walk(Table &table, const Shape &shape, std::size_t rows)
{
    std::vector<Oid> names;
    for (SubId column = 1; column <= shape.columns; ++column) {
        names.push_back(entry);
        names.back().append(column);
    }
    std::vector<Variable> variables(shape.columns);
    const double begin = now();
    for (std::size_t found = 0; found < rows; ++found) {
        if (found % static_cast<std::size_t>(shape.repetitions) == 0) {
            table.beginPacket();
        }
        for (std::size_t i = 0; i < names.size(); ++i) {
            variables[i].asked = names[i].view();
        }
        table.source().getNext(variables, entry.view());
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (variables[i].status != Status::ok) {
                std::fprintf(stderr, "bench_merged: a walk has ended too early\n");
                std::exit(1);
            }
            names[i] = variables[i].name;
        }
    }
    return (now() - begin) / static_cast<double>(rows * shape.columns);
}

double median(Table &table, const Shape &shape, std::size_t rows, int rounds)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        times.push_back(walk(table, shape, rows));
    }
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[static_cast<std::size_t>(rounds / 2)];
}

} // namespace

int main(int argc, char **argv)
{
    const SubId rows = argc > 1 ? static_cast<SubId>(std::max(20, std::atoi(argv[1]))) : 20'000;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 9;
    constexpr SubId onInterface = 20; // as many as an interface may have in a table
    const SubId interfaces = rows / onInterface;
    const std::span<const RowColumn<Row>> columns(allColumns);
    Table plain({Rows(interfaces, 1, onInterface, columns)});
    Table byRows(
        {Rows(interfaces, 1, onInterface / 2, columns), Rows(interfaces, onInterface / 2 + 1, onInterface, columns)});
    Table byColumns(
        {Rows(interfaces, 1, onInterface, columns.first(3)), Rows(interfaces, 1, onInterface, columns.subspan(3))});
    std::printf("us a variable, medians of %d walks of %u rows, %u on each interface\n\n", rounds,
                interfaces * onInterface, onInterface);
    std::printf("%-22s %9s %20s %22s\n", "", "plain", "half of the rows each", "some of the columns each");
    for (const Shape &shape : shapes) {
        const auto count = static_cast<std::size_t>(interfaces) * onInterface;
        const double one = median(plain, shape, count, rounds);
        const double rowsEach = median(byRows, shape, count, rounds);
        const double columnsEach = median(byColumns, shape, count, rounds);
        std::printf("%-22s %9.3f %12.3f (%+.3f) %14.3f (%+.3f)\n", shape.name, one, rowsEach, rowsEach - one,
                    columnsEach, columnsEach - one);
    }
}
