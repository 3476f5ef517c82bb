// SPDX-License-Identifier: BSD-3-Clause
// Lets signals end this process while it does what looks at no signal.
#pragma once

#include <csignal>

namespace ipmib::agent
{

// While one lives, SIGTERM and SIGINT end the process at once, though the event loop has them wait for it otherwise.
// What does not look at signals may take long: the start, and the library's reading of a configuration, which grows
// with the square of some lines' number and waits for ever for a pipe that another file includes.
class EndedAtOnce
{
  public:
    // `tidyUp` comes before the end, or null: it runs in a signal handler, and may call what is safe there.
    explicit EndedAtOnce(void (*tidyUp)() = nullptr);
    // From here on the signals are as they were before.
    ~EndedAtOnce();
    EndedAtOnce(const EndedAtOnce &) = delete;
    EndedAtOnce &operator=(const EndedAtOnce &) = delete;

  private:
    sigset_t blocked_;
    struct sigaction before_[2];
};

} // namespace ipmib::agent
