// SPDX-License-Identifier: BSD-3-Clause
// Becoming a daemon: whoever started it waits until it is ready, or sees it fail.
#pragma once

namespace ipmib::agent
{

class Detachment
{
  public:
    // Goes on in a child process with a session of its own; standard error is still the starter's. The starting process
    // does not return: it exits with success when ready() is called, and with failure when the child ends before.
    // Throws std::system_error.
    Detachment();
    ~Detachment();
    Detachment(const Detachment &) = delete;
    Detachment &operator=(const Detachment &) = delete;

    // Leaves the starter's directory, its terminal unless `keepOutput`, and lets it go.
    void ready(bool keepOutput);

  private:
    int starter_ = -1;
};

} // namespace ipmib::agent
