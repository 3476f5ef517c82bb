// SPDX-License-Identifier: BSD-3-Clause
// Programs that a test runs: to their end, or beside it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace ipmib::e2e
{

using Words = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

// A program that runs beside the test, with what it writes kept apart from the test's own output.
class Command
{
  public:
    // Started at once; the first word is looked up in PATH. The environment is added to the test's.
    explicit Command(const Words &words, const Environment &environment = {});
    // Kills it if it still runs.
    ~Command();
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    pid_t pid() const { return pid_; }
    // After SIGSTOP it has stopped when this returns.
    void signal(int number) const;
    // The exit status, minus the signal that ended it, or -1000 when it had to be killed after the limit.
    int wait(std::chrono::seconds limit = std::chrono::seconds(30));
    // Becomes readable when the program has ended.
    int descriptor() const { return pidDescriptor_; }

    std::string output() const;
    std::string errors() const;

  private:
    int output_;
    int errors_;
    int pidDescriptor_ = -1;
    pid_t pid_ = -1;
    int status_ = -1;
};

struct Result {
    int status;
    std::string output;
    std::string errors;
};

// Runs a program to its end.
Result run(const Words &words, const Environment &environment = {});

// Whether the process is not woken up for some seconds. The kernel may have something to announce now and then, also in
// a network where nothing happens; what comes again every few seconds would be seen in every pause.
bool sleepsThrough(pid_t process);

Words linesOf(const std::string &text);

std::string contentOf(const std::string &file);

} // namespace ipmib::e2e
