// SPDX-License-Identifier: BSD-3-Clause
// How long a change of the kernel's state takes to be seen by a manager: makes changes of one kind, and asks an agent
// after each until the answer is right. The clock runs from the kernel's acknowledgement of the change. Prints one line
// of JSON.
//
//   bench_staleness AGENT INTERFACE KIND CHANGES SECONDS BURST
//
// KIND is neighbour, address, prefix, route or interface. After so many SECONDS no further change is made, and a change
// that has not been seen by then counts as unseen. With a BURST, so many neighbours come or go just before each change.
#include "kernel_change.h"

#include <net/if.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace
{

using namespace ipmib::bench;
using State = KernelChange::State;

struct Result {
    std::vector<double> milliseconds; // of the changes that were seen
    int unseen = 0;
    int oldAnswers = 0;
};

class Observer
{
  public:
    Observer(SnmpSession &session, KernelChange &change) : session_(session), change_(change) {}

    bool sees(State state)
    {
        bool right = false;
        if (!session_.ask(SNMP_MSG_GET, {change_.instance()}, [&](const netsnmp_pdu &answer) {
                if (answer.errstat != SNMP_ERR_NOERROR) {
                    throw std::runtime_error("the agent answers with error " + std::to_string(answer.errstat));
                }
                right = change_.isRight(state, *answer.variables);
            })) {
            throw std::runtime_error("no answer within a minute");
        }
        return right;
    }

  private:
    SnmpSession &session_;
    KernelChange &change_;
};

double since(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

// Asks again at once at first; who takes long is not slowed down by being asked all the time.
bool waitFor(Observer &observer, State state, Clock::time_point end, int &oldAnswers)
{
    constexpr double soonMs = 20;
    const Clock::time_point begin = Clock::now();
    while (!observer.sees(state)) {
        ++oldAnswers;
        if (Clock::now() > end) {
            return false;
        }
        if (since(begin) > soonMs) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        if (argc != 7) {
            throw std::runtime_error("usage: bench_staleness AGENT INTERFACE KIND CHANGES SECONDS BURST");
        }
        const unsigned ifIndex = if_nametoindex(argv[2]);
        const int changes = std::atoi(argv[4]);
        const auto burst = static_cast<unsigned>(std::atoi(argv[6]));
        ipmib::platform::Rtnetlink kernel;
        if (ifIndex == 0 || changes <= 0 || !kernel.open()) {
            throw std::runtime_error("no such interface, no changes, or no netlink socket");
        }
        const auto change = kernelChange(argv[3], kernel, ifIndex);
        if (!change) {
            throw std::runtime_error(std::string("what is a change of ") + argv[3] + "?");
        }
        SnmpSession session(argv[1]);
        Observer observer(session, *change);
        Result result;
        const Clock::time_point end = Clock::now() + std::chrono::seconds(std::atoi(argv[5]));
        const State steps[] = {State::first, State::second, State::absent};
        for (int i = 0; i < changes && Clock::now() < end; ++i) {
            if (burst > 0) {
                changeNeighbours(kernel, ifIndex, burst, i % 2 == 0);
            }
            const State state = steps[i % 3];
            change->make(state);
            const Clock::time_point begin = Clock::now();
            if (!waitFor(observer, state, end, result.oldAnswers)) {
                ++result.unseen;
                break;
            }
            result.milliseconds.push_back(since(begin));
        }
        auto &list = result.milliseconds;
        std::sort(list.begin(), list.end());
        std::printf("{\"changes\": %zu, \"unseen\": %d, \"old_answers\": %d, \"median_ms\": %.3f, \"max_ms\": %.3f}\n",
                    list.size(), result.unseen, result.oldAnswers, list.empty() ? 0 : list[list.size() / 2],
                    list.empty() ? 0 : list.back());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_staleness: %s\n", error.what());
        return 1;
    }
}
