// SPDX-License-Identifier: BSD-3-Clause
// The daemon of the net-snmp library lets its starter go at once, before it is known whether there will be a daemon.

#include "detachment.h"

#include "host/command_line.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace ipmib::agent
{

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
        char sign;
        _exit(read(ends[0], &sign, 1) == 1 ? host::exitSuccess : host::exitFailure);
    }
    starter_ = ends[1];
    setsid();
}

Detachment::~Detachment()
{
    close(starter_);
}

void Detachment::ready(bool keepOutput)
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    if (!keepOutput) {
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
    }
    close(nothing);
    if (chdir("/") != 0 || write(starter_, "", 1) != 1) {
        throw std::system_error(errno, std::generic_category(), "cannot become a daemon");
    }
    close(starter_);
    starter_ = -1;
}

} // namespace ipmib::agent
