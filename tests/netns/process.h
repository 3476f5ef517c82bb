// SPDX-License-Identifier: BSD-3-Clause
// A program that runs in a namespace beside the test (a router advertisement daemon, a traffic source).
#pragma once

#include "netns/namespace.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace ipmib::netns
{

class Process
{
  public:
    // Started at once; the first argument is looked up in PATH. Standard output and error go to the test's.
    Process(const Namespace &space, const std::vector<std::string> &arguments);
    // Asks it to end, and waits until it has.
    ~Process() { end(); }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    // The exit status, or minus the signal; waits for a program that ends by itself.
    int wait();
    void end();
    void signal(int number) const;
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
};

} // namespace ipmib::netns
