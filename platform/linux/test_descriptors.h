// SPDX-License-Identifier: BSD-3-Clause
// For tests: a process that has used up its descriptors.
#pragma once

#include <sys/resource.h>

namespace ipmib::platform
{

// As long as it lives, or until its end, this process can open nothing.
class NoDescriptors
{
  public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{1, before_.rlim_max}; // one, since poll takes no more of them than there may be
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { end(); }
    NoDescriptors(const NoDescriptors &) = delete;
    NoDescriptors &operator=(const NoDescriptors &) = delete;

    void end() { setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_{};
};

} // namespace ipmib::platform
