// SPDX-License-Identifier: BSD-3-Clause
// Watches over the process that calls the platform, and goes on behind what hangs or dies.
#include "portcheck.h"

#include "chapters.h"
#include "checker.h"

#include <poll.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace ipmib::portcheck
{

namespace
{

using Clock = std::chrono::steady_clock;

// Memory that a child shares.
class SharedWatch
{
  public:
    SharedWatch()
    {
        void *memory = mmap(nullptr, sizeof(Watch), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw std::bad_alloc();
        }
        watch_ = new (memory) Watch;
    }
    ~SharedWatch() { munmap(watch_, sizeof(Watch)); }
    SharedWatch(const SharedWatch &) = delete;
    SharedWatch &operator=(const SharedWatch &) = delete;

    Watch &operator*() { return *watch_; }

  private:
    Watch *watch_;
};

class Supervisor
{
  public:
    explicit Supervisor(const Options &options) : options_(options) {}

    Report run()
    {
        while (chapter_ < chapters().size() && runChild()) {
        }
        return std::move(report_);
    }

  private:
    // Runs a child from the chapter on that is due. Returns whether another one has to go on.
    bool runChild()
    {
        int ends[2];
        if (pipe(ends) != 0) {
            throw std::bad_alloc();
        }
        const std::size_t began = chapter_;
        begun_ = false;
        ended_ = false;
        const pid_t child = fork();
        if (child == 0) {
            close(ends[0]);
            runChecks(options_, chapter_, *watch_, ends[1]);
            _exit(0);
        }
        close(ends[1]);
        const bool hung = !readLines(ends[0]);
        close(ends[0]);
        if (hung) {
            kill(child, SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        if (hung) {
            tell(Promise::returns, "no answer for " + std::to_string(options_.patience.count()) + " ms");
        } else if (!ended_) {
            tell(Promise::survives, WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "the process has ended");
        } else {
            return false;
        }
        if (!begun_ && chapter_ == began) {
            return false; // not even the start succeeds
        }
        ++chapter_;
        return true;
    }

    void tell(Promise promise, std::string seen)
    {
        report_.broken.push_back({promise, (*watch_).doing(), std::move(seen)});
    }

    // Returns false when the child makes no step for too long.
    bool readLines(int descriptor)
    {
        std::string pending;
        std::uint32_t steps = (*watch_).steps();
        auto since = Clock::now();
        for (;;) {
            pollfd poller{descriptor, POLLIN, 0};
            const int ready = poll(&poller, 1, 50);
            if (ready > 0) {
                char buffer[4096];
                const ssize_t got = read(descriptor, buffer, sizeof buffer);
                if (got <= 0) {
                    return true;
                }
                pending.append(buffer, static_cast<std::size_t>(got));
                for (std::size_t end; (end = pending.find('\n')) != std::string::npos; pending.erase(0, end + 1)) {
                    take(pending.substr(0, end));
                }
            }
            if ((*watch_).steps() != steps || ready > 0) {
                steps = (*watch_).steps();
                since = Clock::now();
            } else if (Clock::now() - since > options_.patience) {
                return false;
            }
        }
    }

    void take(const std::string &line)
    {
        const std::string rest = line.substr(1);
        switch (line[0]) {
        case lineChapter:
            chapter_ = std::strtoul(rest.c_str(), nullptr, 10);
            begun_ = true;
            break;
        case lineFact:
            report_.facts.push_back(rest);
            break;
        case lineRow:
            report_.rows.push_back(rest);
            break;
        case lineBroken: {
            const std::size_t service = rest.find(fieldEnd) + 1;
            const std::size_t seen = rest.find(fieldEnd, service) + 1;
            report_.broken.push_back({static_cast<Promise>(std::strtoul(rest.c_str(), nullptr, 10)),
                                      rest.substr(service, seen - service - 1), rest.substr(seen)});
            break;
        }
        case lineEnd:
            ended_ = true;
            break;
        }
    }

    const Options &options_;
    SharedWatch watch_;
    Report report_;
    std::size_t chapter_ = 0;
    bool begun_ = false; // a chapter was
    bool ended_ = false;
};

} // namespace

Report checkPlatform(const Options &options)
{
    return Supervisor(options).run();
}

} // namespace ipmib::portcheck
