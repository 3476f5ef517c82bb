// SPDX-License-Identifier: BSD-3-Clause
// For tests: a router advertisement daemon in a namespace.
#pragma once

#include "netns/process.h"

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace ipmib::netns
{

#define IPMIB_NEEDS_RADVD()                                                                                            \
    if (std::system("command -v radvd > /dev/null") != 0) {                                                            \
        GTEST_SKIP() << "needs radvd";                                                                                 \
    }                                                                                                                  \
    static_assert(true)

class Radvd
{
  public:
    Radvd(const Namespace &space, const std::string &configuration)
    {
        char name[] = "/tmp/ipmib-radvd-XXXXXX";
        close(mkstemp(name));
        file_ = name;
        std::ofstream(file_) << configuration;
        space.sysctl("net/ipv6/conf/all/forwarding", "1");
        process_ = std::make_unique<Process>(
            space, std::vector<std::string>{"radvd", "-n", "-m", "none", "-C", file_, "-p", file_ + ".pid"});
    }
    ~Radvd()
    {
        process_.reset();
        std::remove(file_.c_str());
        std::remove((file_ + ".pid").c_str());
    }
    Radvd(const Radvd &) = delete;
    Radvd &operator=(const Radvd &) = delete;

    void readAgain(const std::string &configuration)
    {
        std::ofstream(file_) << configuration;
        process_->signal(SIGHUP);
    }
    // Without a word to anybody, as when the power fails.
    void vanish()
    {
        process_->signal(SIGKILL);
        process_->wait();
    }

  private:
    std::string file_;
    std::unique_ptr<Process> process_;
};

} // namespace ipmib::netns
