// SPDX-License-Identifier: BSD-3-Clause
// A file that this process alone writes, in a folder where others may have put anything under its name.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace ipmib::agent
{

class LockedFile
{
  public:
    // Opens the regular file at `path`, which is made with `mode` (as for open) where there is none, and locks it until
    // the end; what is in it stays. Links are not followed, and nothing but a regular file is ever opened.
    // Throws std::runtime_error with the reason alone.
    LockedFile(const std::string &path, mode_t mode);
    ~LockedFile();
    LockedFile(const LockedFile &) = delete;
    LockedFile &operator=(const LockedFile &) = delete;

    int descriptor() const { return descriptor_; }
    const std::string &path() const { return path_; } // absolute, since a daemon leaves its directory
    // Whether the path still names this file.
    bool isInPlace() const;
    // Puts `content` in the place of what is in it. Throws std::system_error.
    void replaceContent(std::string_view content) const;

  private:
    bool open(mode_t mode);

    std::string path_;
    int descriptor_ = -1;
};

} // namespace ipmib::agent
