// SPDX-License-Identifier: BSD-3-Clause
// Becoming a daemon: whoever started it waits until it is ready, or sees it fail.
#pragma once

namespace ipmib::agent
{

class Detachment
{
  public:
    // Goes on in a child process with a session of its own; standard error is still the starter's. The starting process
    // does not return: it exits with success when ready() is called. When the child ends before, the starting process
    // exits with its status, and only then, so that all that the child wrote is there; it tells itself by which signal
    // the child was ended. Throws std::system_error.
    Detachment();
    Detachment(const Detachment &) = delete;
    Detachment &operator=(const Detachment &) = delete;

    // Leaves the starter's directory, its terminal unless `keepOutput`, and lets it go. Throws std::system_error.
    void ready(bool keepOutput);

  private:
    int starter_; // open until ready(), or until the process ends: closing it lets the starter go
};

} // namespace ipmib::agent
