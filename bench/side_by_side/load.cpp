// SPDX-License-Identifier: BSD-3-Clause
// Asks an agent and measures what that costs it. Each run prints one line of JSON.
//
//   bench_load AGENT PIDS ready              waits until the agent answers
//   bench_load AGENT PIDS columns ENTRY      the columns of a table that have a row
//   bench_load AGENT PIDS walk REPETITIONS VARIABLES COLUMN...
//       walks the columns side by side to their ends, again and again until there were so many variables; with GETNEXT
//       when the repetitions are 0, else with GETBULK
//   bench_load AGENT PIDS together CLIENTS REPETITIONS VARIABLES COLUMN...
//       the same by several clients at a time
//   bench_load AGENT PIDS gets RATE SECONDS COLUMN...
//       single GETs of instances of the columns, so many a second: how long each waited from the moment when it was
//       due, and what the agent worked from when it was sent to when it was answered
//
// PIDS are the agent's processes, separated by commas; their processor time is what is counted.
#include "processor_time.h"
#include "walk.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <random>
#include <stdexcept>

namespace
{

using namespace ipmib::bench;

void waitUntilReady(SnmpSession &session)
{
    const auto ignore = [](const netsnmp_pdu &) {};
    for (int i = 0; i < 120; ++i) {
        if (session.ask(SNMP_MSG_GETNEXT, {{1, 3, 6, 1, 2, 1}}, ignore, 0, std::chrono::seconds(1))) {
            return;
        }
    }
    throw std::runtime_error("no answer within two minutes");
}

void printColumns(SnmpSession &session, const Identifier &entry)
{
    std::string list;
    for (oid column = 0;;) {
        Identifier from = entry;
        from.push_back(column);
        Identifier found;
        if (!session.ask(SNMP_MSG_GETNEXT, {from}, [&](const netsnmp_pdu &answer) {
                if (!isException(*answer.variables)) {
                    found = nameOf(*answer.variables);
                }
            })) {
            throw std::runtime_error("no answer within a minute");
        }
        if (!isWithin(found, entry)) {
            break;
        }
        list += (list.empty() ? "" : ", ") + std::to_string(found[entry.size()]);
        column = found[entry.size()] + 1;
    }
    std::printf("[%s]\n", list.c_str());
}

void measureWalks(SnmpSession &session, const ProcessorTime &time, long repetitions, std::uint64_t atLeast,
                  const std::vector<Identifier> &columns)
{
    std::uint64_t variables = 0;
    std::uint64_t requests = 0;
    int walks = 0;
    const Clock::time_point begin = Clock::now();
    const std::uint64_t before = time.now();
    do {
        Walk walk(columns);
        walk.run(session, repetitions, [](const Identifier &) {});
        if (walk.variables == 0) {
            throw std::runtime_error("the columns are empty");
        }
        variables += walk.variables;
        requests += walk.requests;
        ++walks;
    } while (variables < atLeast);
    const double spent = static_cast<double>(time.now() - before);
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::printf("{\"walks\": %d, \"variables\": %llu, \"requests\": %llu, \"us_a_variable\": %.4f, \"seconds_a_walk\": "
                "%.6f}\n",
                walks, static_cast<unsigned long long>(variables / static_cast<unsigned>(walks)),
                static_cast<unsigned long long>(requests / static_cast<unsigned>(walks)),
                spent / 1000 / static_cast<double>(variables), seconds / walks);
}

// Clients that walk without regard to each other: their requests wait for the agent together.
void measureTogether(const char *agent, const ProcessorTime &time, long clients, long repetitions,
                     std::uint64_t atLeast, const std::vector<Identifier> &columns)
{
    std::vector<std::unique_ptr<SnmpSession>> sessions;
    for (long i = 0; i < clients; ++i) {
        sessions.push_back(std::make_unique<SnmpSession>(agent));
    }
    std::atomic<std::uint64_t> variables = 0;
    const auto walkOn = [&](SnmpSession &session) {
        while (variables < atLeast) {
            Walk walk(columns);
            walk.run(session, repetitions, [](const Identifier &) {});
            if (walk.variables == 0) {
                throw std::runtime_error("the columns are empty");
            }
            variables += walk.variables;
        }
    };
    const std::uint64_t before = time.now();
    std::vector<std::future<void>> walkers;
    for (const auto &session : sessions) {
        walkers.push_back(std::async(std::launch::async, walkOn, std::ref(*session)));
    }
    for (std::future<void> &walker : walkers) {
        walker.get();
    }
    const double spent = static_cast<double>(time.now() - before);
    std::printf("{\"clients\": %ld, \"variables\": %llu, \"us_a_variable\": %.4f}\n", clients,
                static_cast<unsigned long long>(variables), spent / 1000 / static_cast<double>(variables));
}

// Each request goes out when its time has come, whether the earlier ones are answered or not, and its time runs from
// then: a stall of the agent is seen by all requests that fall into it. What the agent has worked meanwhile, for
// whatever reason, is what a machine that does nothing else would have made the client wait, however busy this one is.
void measureGets(SnmpSession &session, const ProcessorTime &time, int rate, int seconds,
                 const std::vector<Identifier> &columns)
{
    std::vector<Identifier> instances;
    Walk(columns).run(session, 20, [&](const Identifier &name) { instances.push_back(name); });
    if (instances.empty()) {
        throw std::runtime_error("the columns are empty");
    }
    std::shuffle(instances.begin(), instances.end(), std::mt19937(1));
    std::vector<double> milliseconds;
    std::vector<double> worked;
    const auto count = static_cast<std::size_t>(rate) * static_cast<std::size_t>(seconds);
    const Clock::time_point begin = Clock::now();
    for (std::size_t i = 0; i < count; ++i) {
        const Clock::time_point due = begin + i * std::chrono::nanoseconds(1'000'000'000 / rate);
        session.dispatch(due);
        const std::uint64_t before = time.now();
        session.send(SNMP_MSG_GET, {instances[i % instances.size()]}, [&, due, before](const netsnmp_pdu &) {
            milliseconds.push_back(std::chrono::duration<double, std::milli>(Clock::now() - due).count());
            worked.push_back(static_cast<double>(time.now() - before) / 1e6);
        });
    }
    for (int i = 0; i < 50 && milliseconds.size() < count; ++i) {
        session.dispatch(Clock::now() + std::chrono::milliseconds(100));
    }
    if (milliseconds.empty()) {
        throw std::runtime_error("no GET was answered");
    }
    std::printf("{\"gets\": %zu, \"unanswered\": %zu", count, count - milliseconds.size());
    for (auto &[prefix, values] : {std::pair("", &milliseconds), {"worked_", &worked}}) {
        std::sort(values->begin(), values->end());
        const auto share = [values = values](double part) {
            return (*values)[static_cast<std::size_t>(part * static_cast<double>(values->size() - 1))];
        };
        std::printf(", \"%sp50_ms\": %.3f, \"%sp99_ms\": %.3f, \"%sworst_ms\": %.3f", prefix, share(0.5), prefix,
                    share(0.99), prefix, values->back());
    }
    std::printf("}\n");
}

int usage()
{
    std::fprintf(stderr, "usage: bench_load AGENT PIDS ready | columns ENTRY | walk REPETITIONS VARIABLES COLUMN... | "
                         "together CLIENTS REPETITIONS VARIABLES COLUMN... | gets RATE SECONDS COLUMN...\n");
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string what = argc > 3 ? argv[3] : "";
    // The arguments before the identifiers.
    const int fixed = what == "ready" || what == "columns" ? 4 : what == "together" ? 7 : 6;
    if (argc < fixed || (what != "ready" && argc == fixed)) {
        return usage();
    }
    try {
        SnmpSession session(argv[1]);
        std::vector<Identifier> names;
        for (int i = fixed; i < argc; ++i) {
            names.push_back(parseIdentifier(argv[i]));
        }
        if (what == "ready") {
            waitUntilReady(session);
        } else if (what == "columns") {
            printColumns(session, names.front());
        } else if (what == "walk") {
            measureWalks(session, ProcessorTime(argv[2]), std::atol(argv[4]), std::strtoull(argv[5], nullptr, 10),
                         names);
        } else if (what == "together") {
            measureTogether(argv[1], ProcessorTime(argv[2]), std::max(1L, std::atol(argv[4])), std::atol(argv[5]),
                            std::strtoull(argv[6], nullptr, 10), names);
        } else if (what == "gets") {
            measureGets(session, ProcessorTime(argv[2]), std::max(1, std::atoi(argv[4])),
                        std::max(1, std::atoi(argv[5])), names);
        } else {
            return usage();
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_load: %s\n", error.what());
        return 1;
    }
}
