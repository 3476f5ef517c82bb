// SPDX-License-Identifier: BSD-3-Clause
// How long the Linux platform keeps its host while thousands of addresses of one prefix come and go: processor time of
// single dispatches, and of packets that ask for an address and its prefix meanwhile; and how many of these were held
// until the platform had caught up, as ipmibd does it, and for how long. Beside each dispatch stands a loop that counts
// to a number and does nothing else: what takes long there is the machine's, such as the kernel's own work in an
// interrupt.
//
//   bench_churn [ADDRESSES]      in a network namespace of its own, which ends with the process; needs root
#include "host/registry.h"
#include "host/resolver.h"
#include "linux_platform.h"

#include <poll.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace
{

using namespace ipmib;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double microsecondsOfProcessor()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

class Times
{
  public:
    template <class Work>
    void measure(Work work)
    {
        const double start = microsecondsOfProcessor();
        work();
        all_.push_back(microsecondsOfProcessor() - start);
    }
    std::string text()
    {
        std::sort(all_.begin(), all_.end());
        const auto at = [this](double share) {
            return all_.empty() ? 0 : all_[static_cast<std::size_t>(share * static_cast<double>(all_.size() - 1))];
        };
        char line[128];
        std::snprintf(line, sizeof line, "%8zu %8.0f %8.0f %8.0f", all_.size(), at(0.5), at(0.99), at(1));
        return line;
    }

  private:
    std::vector<double> all_;
};

// Some 20 us of it, and nothing that the kernel or another process could keep.
void countToANumber()
{
    for (volatile unsigned i = 0; i < 10'000;) {
        i = i + 1;
    }
}

// The shell's work in another process, so that this one does nothing but follow it.
pid_t startShell(const std::string &command)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    return child;
}

class Follower
{
  public:
    Follower(platform::LinuxPlatform &platform, host::Resolver &resolver) : platform_(platform), resolver_(resolver) {}

    void follow(const char *what, const std::string &command)
    {
        Times dispatches;
        Times packets;
        Times counting;
        unsigned held = 0;
        double longestHeld = 0; // ms
        bool isHeld = false;
        Clock::time_point heldSince{};
        const pid_t shell = startShell(command);
        int status = 0;
        auto nextPacket = Clock::now();
        auto end = Clock::time_point::max();
        while (Clock::now() < end) {
            pollfd wait{platform_.descriptor(), POLLIN, 0};
            if (poll(&wait, 1, 1) > 0) {
                dispatches.measure([this] { platform_.dispatch(); });
                counting.measure(countToANumber);
            }
            if (isHeld ? isCurrent() : Clock::now() >= nextPacket) {
                const bool wasHeld = isHeld;
                packets.measure([&] { isHeld = !ask(wasHeld); });
                if (isHeld) {
                    ++held;
                    heldSince = Clock::now();
                } else if (wasHeld) {
                    longestHeld = std::max(longestHeld, millisecondsSince(heldSince));
                }
                nextPacket = Clock::now() + std::chrono::milliseconds(5);
            }
            if (end == Clock::time_point::max() && waitpid(shell, &status, WNOHANG) == shell) {
                end = Clock::now() + std::chrono::milliseconds(500); // what follows by itself
            }
        }
        std::printf("%-24s %s  %s %6u %6.1f  %s%s\n", what, dispatches.text().c_str(), packets.text().c_str(), held,
                    longestHeld, counting.text().c_str(), status == 0 ? "" : "  (the change failed)");
    }

  private:
    bool isCurrent() const { return platform_.areCurrent(IPMIB_FOLLOW_ADDRESSES) == 1; }
    // A packet for one row of the address table, going on from the last one. False when it is to be held.
    bool ask(bool wasHeld)
    {
        constexpr host::SubId prefixColumn[] = {1, 3, 6, 1, 2, 1, 4, 34, 1, 5};
        const std::span<const host::SubId> column(prefixColumn);
        platform_.beginPacket();
        if (!wasHeld && !isCurrent()) {
            return false;
        }
        host::Variable variable;
        variable.asked = asked_.empty() ? column : std::span<const host::SubId>(asked_);
        resolver_.getNext({&variable, 1}, column.first(column.size() - 1));
        asked_.clear();
        if (variable.status == host::Status::ok) {
            asked_.assign(variable.name.view().begin(), variable.name.view().end());
        }
        return true;
    }

    platform::LinuxPlatform &platform_;
    host::Resolver &resolver_;
    std::vector<host::SubId> asked_;
};

std::string batch(const char *verb, unsigned addresses)
{
    return "awk 'BEGIN { for (i = 1; i <= " + std::to_string(addresses) + "; i++) printf \"addr " + verb +
           " 2001:db8::%x:%x/64 dev one" + (std::string(verb) == "add" ? " nodad" : "") +
           "\\n\", i / 65536, i % 65536 }' | ip -batch -";
}

} // namespace

int main(int argc, char **argv)
{
    const unsigned addresses = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 10'000;
    if (addresses < 1 || addresses > 100'000 || unshare(CLONE_NEWNET) != 0 ||
        std::system("ip link set lo up && ip link add one type bridge && ip link set one up") != 0) {
        std::fprintf(stderr, "bench_churn: cannot make a network namespace for %u addresses\n", addresses);
        return EXIT_FAILURE;
    }
    platform::LinuxPlatform platform;
    if (const std::string error = platform.start(platform::Settings{}); !error.empty()) {
        std::fprintf(stderr, "bench_churn: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    platform::setRunning(&platform);
    host::Registry &registry = host::Registry::ofProcess();
    host::Resolver resolver(*registry.trees().front().root, registry.callbacks().front().callback, nullptr);
    Follower follower(platform, resolver);
    std::printf("%u addresses of one prefix; processor time in us\n", addresses);
    std::printf("%-24s %8s %8s %8s %8s  %8s %8s %8s %8s %6s %6s  %8s %8s %8s %8s\n", "", "dispatch", "median", "99 %",
                "worst", "packets", "median", "99 %", "worst", "held", "ms", "counting", "median", "99 %", "worst");
    follower.follow("they come", batch("add", addresses));
    follower.follow("one hundred go and come",
                    batch("del", std::min(100u, addresses)) + " && " + batch("add", std::min(100u, addresses)));
    follower.follow("they go one by one", batch("del", addresses));
    follower.follow("they come again", batch("add", addresses));
    follower.follow("the link goes down", "ip link set one down");
    platform::setRunning(nullptr);
    return EXIT_SUCCESS;
}
