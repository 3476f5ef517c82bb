// SPDX-License-Identifier: BSD-3-Clause
// Lets signals end this process while it does what looks at no signal.
#pragma once

#include <csignal>
#include <functional>

namespace ipmib::agent
{

// While one lives, SIGTERM and SIGINT end the process at once, though the event loop has them wait for it otherwise.
// What does not look at signals may take long: the start, and the library's reading of a configuration, which grows
// with the square of some lines' number.
class EndedAtOnce
{
  public:
    // `tidyUp`, which may be empty, comes before the end: it runs in a signal handler, and may call what is safe there.
    explicit EndedAtOnce(std::function<void()> tidyUp = {});
    // From here on the signals are as they were before.
    ~EndedAtOnce();
    EndedAtOnce(const EndedAtOnce &) = delete;
    EndedAtOnce &operator=(const EndedAtOnce &) = delete;

  private:
    sigset_t blocked_;
    struct sigaction before_[2];
};

} // namespace ipmib::agent
