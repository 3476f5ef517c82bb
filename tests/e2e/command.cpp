// SPDX-License-Identifier: BSD-3-Clause
// Runs programs with their output in files that have no name.

#include "command.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

extern char **environ;

namespace ipmib::e2e
{

namespace
{

// For argv and the environment; the strings must outlive it.
std::vector<char *> pointersTo(const Words &words)
{
    std::vector<char *> pointers;
    for (const std::string &word : words) {
        pointers.push_back(const_cast<char *>(word.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

Words merged(const Environment &added)
{
    Words all;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!added.contains(text.substr(0, text.find('=')))) {
            all.push_back(text);
        }
    }
    for (const auto &[name, value] : added) {
        all.emplace_back(name).append("=").append(value);
    }
    return all;
}

std::string readToEnd(int descriptor)
{
    std::string content;
    char piece[4096];
    ssize_t length;
    while ((length = pread(descriptor, piece, sizeof piece, static_cast<off_t>(content.size()))) > 0) {
        content.append(piece, static_cast<std::size_t>(length));
    }
    return content;
}

// How often a process has gone to sleep. Whoever is woken up, and be it to find nothing to do, goes to sleep again.
std::uint64_t timesGoneToSleep(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    const std::string name = "voluntary_ctxt_switches:";
    for (std::string word; status >> word;) {
        if (word == name) {
            std::uint64_t times = 0;
            status >> times;
            return times;
        }
    }
    ADD_FAILURE() << "the kernel does not count how often a process sleeps";
    return 0;
}

} // namespace

Command::Command(const Words &words, const Environment &environment)
    : output_(memfd_create("output", MFD_CLOEXEC)), errors_(memfd_create("errors", MFD_CLOEXEC))
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output_, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors_, STDERR_FILENO);
    const std::vector<char *> argv = pointersTo(words);
    const Words variables = merged(environment);
    const std::vector<char *> envp = pointersTo(variables);
    const int error = posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        ADD_FAILURE() << words[0] << ": " << std::strerror(error);
        pid_ = -1;
        return;
    }
    pidDescriptor_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
}

Command::~Command()
{
    if (pid_ > 0) {
        signal(SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(pidDescriptor_);
    close(output_);
    close(errors_);
}

void Command::signal(int number) const
{
    if (pid_ <= 0) {
        return;
    }
    kill(pid_, number);
    if (number == SIGSTOP) {
        siginfo_t stopped;
        waitid(P_PID, static_cast<id_t>(pid_), &stopped, WSTOPPED | WEXITED | WNOWAIT);
    }
}

int Command::wait(std::chrono::seconds limit)
{
    if (pid_ <= 0) {
        return status_;
    }
    pollfd end{pidDescriptor_, POLLIN, 0};
    const int milliseconds = static_cast<int>(std::chrono::milliseconds(limit).count());
    const bool ended = poll(&end, 1, milliseconds) > 0;
    if (!ended) {
        signal(SIGKILL);
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    status_ = !ended ? -1000 : WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return status_;
}

std::string Command::output() const
{
    return readToEnd(output_);
}

std::string Command::errors() const
{
    return readToEnd(errors_);
}

Result run(const Words &words, const Environment &environment)
{
    Command command(words, environment);
    const int status = command.wait();
    return {status, command.output(), command.errors()};
}

bool sleepsThrough(pid_t process)
{
    constexpr int attempts = 6;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::uint64_t before = timesGoneToSleep(process);
        std::this_thread::sleep_for(std::chrono::seconds(4));
        if (timesGoneToSleep(process) == before) {
            return true;
        }
    }
    return false;
}

Words linesOf(const std::string &text)
{
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string contentOf(const std::string &file)
{
    std::ostringstream content;
    content << std::ifstream(file).rdbuf();
    return content.str();
}

} // namespace ipmib::e2e
