// SPDX-License-Identifier: BSD-3-Clause
// The file that tells others this daemon's process id.
#pragma once

#include <string>

namespace ipmib::agent
{

class PidFile
{
  public:
    // Creates the file, or does nothing when the path is empty. Throws std::runtime_error.
    explicit PidFile(const std::string &path);
    // Removes the file.
    ~PidFile();
    PidFile(const PidFile &) = delete;
    PidFile &operator=(const PidFile &) = delete;

    // Writes the calling process' id: to be called when the process is the one that stays.
    void write() const;

  private:
    std::string path_; // absolute, since a daemon leaves its directory
    int descriptor_ = -1;
};

} // namespace ipmib::agent
