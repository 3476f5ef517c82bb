// SPDX-License-Identifier: BSD-3-Clause
// The files that the library reads as configuration, looked at before it forgets what it has read.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace ipmib::agent
{

class ConfigurationFiles
{
  public:
    // Files that the user named, which must be there, and with `searched` those that the library looks for in its
    // folders, and finds or not.
    ConfigurationFiles(std::vector<std::string> named, bool searched);

    // To be called before the library reads them for the first time. Throws std::runtime_error for a named file that
    // cannot be read, and for any that has no end, over which the library would not pass; logs which of the others are
    // passed over.
    void begin();

    // To be called before the library reads them again, after which it knows nothing else. Throws std::runtime_error
    // when something cannot be read, also for want of descriptors, that could be read the last time.
    void renew();

  private:
    // Why files cannot be read, by their names.
    struct Obstacle {
        std::string reason;
        bool isEndless; // a pipe, a device, or too large
    };
    using Obstacles = std::map<std::string, Obstacle>;
    class Pass;

    static std::string textOf(const Obstacles::value_type &obstacle);
    Obstacles obstacles() const;

    std::vector<std::string> named_;
    bool searched_;
    Obstacles known_;
};

} // namespace ipmib::agent
