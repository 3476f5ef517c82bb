// SPDX-License-Identifier: BSD-3-Clause
// A program that runs in a namespace beside the test.
#include "netns/process.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstring>

extern char **environ;

namespace ipmib::netns
{

Process::Process(const Namespace &space, const std::vector<std::string> &arguments)
{
    std::vector<char *> argv;
    for (const std::string &argument : arguments) {
        argv.push_back(const_cast<char *>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const Inside inside(space);
    const int error = posix_spawnp(&pid_, argv[0], nullptr, nullptr, argv.data(), environ);
    if (error != 0) {
        ADD_FAILURE() << arguments[0] << ": " << std::strerror(error);
        pid_ = -1;
    }
}

int Process::wait()
{
    int status = 0;
    if (pid_ <= 0 || waitpid(pid_, &status, 0) != pid_) {
        return -1;
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void Process::end()
{
    if (pid_ > 0) {
        signal(SIGTERM);
        wait();
    }
}

void Process::signal(int number) const
{
    if (pid_ > 0) {
        kill(pid_, number);
    }
}

} // namespace ipmib::netns
