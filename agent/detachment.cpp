// SPDX-License-Identifier: BSD-3-Clause
// The daemon of the net-snmp library lets its starter go at once, before it is known whether there will be a daemon.

#include "detachment.h"

#include "host/command_line.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace ipmib::agent
{

namespace
{

// The starting process: waits for the daemon, tells what the daemon could not tell itself, and exits.
[[noreturn]] void wait(int daemonsWord, pid_t daemon)
{
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr); // whoever does not want to wait any longer may end it
    char sign;
    ssize_t length;
    do {
        length = read(daemonsWord, &sign, 1);
    } while (length < 0 && errno == EINTR);
    if (length == 1) {
        _exit(host::exitSuccess);
    }
    int status = 0;
    waitpid(daemon, &status, 0);
    if (WIFSIGNALED(status)) {
        std::fprintf(stderr, "ipmibd: ended at its start by a signal: %s\n", strsignal(WTERMSIG(status)));
    } else if (WEXITSTATUS(status) == host::exitSuccess) {
        std::fputs("ipmibd: told to stop before it was ready\n", stderr);
    }
    const bool hasFailed = WIFEXITED(status) && WEXITSTATUS(status) != host::exitSuccess;
    _exit(hasFailed ? WEXITSTATUS(status) : host::exitFailure);
}

} // namespace

Detachment::Detachment()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot become a daemon");
    }
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot become a daemon");
    }
    close(ends[child == 0 ? 0 : 1]);
    if (child > 0) {
        wait(ends[0], child);
    }
    starter_ = ends[1];
    setsid();
}

void Detachment::ready(bool keepOutput)
{
    const auto fail = [] { throw std::system_error(errno, std::generic_category(), "cannot become a daemon"); };
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing < 0 || chdir("/") != 0) {
        fail();
    }
    // From here on nobody hears of a failure, and the only one left is that the starter is gone.
    dup2(nothing, STDIN_FILENO);
    if (!keepOutput) {
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
    }
    close(nothing);
    if (write(starter_, "", 1) != 1) {
        fail();
    }
    close(starter_);
}

} // namespace ipmib::agent
