// SPDX-License-Identifier: BSD-3-Clause
// Opened early, so that a path that cannot be written is reported to the terminal; written late, by the daemon itself.

#include "pid_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace ipmib::agent
{

PidFile::PidFile(const std::string &path)
{
    if (path.empty()) {
        return;
    }
    path_ = std::filesystem::absolute(path);
    descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor_ < 0) {
        throw std::runtime_error("cannot write the process id to " + path + ": " +
                                 std::generic_category().message(errno));
    }
}

PidFile::~PidFile()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
        unlink(path_.c_str());
    }
}

void PidFile::write() const
{
    if (descriptor_ >= 0 && (ftruncate(descriptor_, 0) != 0 || dprintf(descriptor_, "%d\n", getpid()) < 0)) {
        throw std::runtime_error("cannot write the process id to " + path_ + ": " +
                                 std::generic_category().message(errno));
    }
}

} // namespace ipmib::agent
