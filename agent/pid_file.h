// SPDX-License-Identifier: BSD-3-Clause
// The file that tells others this daemon's process id.
#pragma once

#include "locked_file.h"

#include <optional>
#include <string>

namespace ipmib::agent
{

class PidFile
{
  public:
    // Makes the file, or takes over what a process that has ended left, and keeps it locked; does nothing when the path
    // is empty. Throws std::runtime_error that names the path and the reason, and leaves alone what is there: whatever
    // is no regular file, holds anything but a process id, or is that of another process.
    explicit PidFile(const std::string &path);
    ~PidFile() { remove(); }
    PidFile(const PidFile &) = delete;
    PidFile &operator=(const PidFile &) = delete;

    // Writes the calling process' id: to be called when the process is the one that stays. Throws std::runtime_error.
    void write() const;
    // Removes the file if the path still names it. May be called in a signal handler.
    void remove() const;

  private:
    std::optional<LockedFile> file_;
};

} // namespace ipmib::agent
