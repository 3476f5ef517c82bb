// SPDX-License-Identifier: BSD-3-Clause
// A thread that cannot come home again would show one namespace as another, so the process ends rather than that.
#include "core/network_namespace.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sched.h>
#include <sys/vfs.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace ipmib::platform
{
namespace
{

const NetworkNamespace *chosenNow = nullptr;
bool isAwayNow = false;

int home()
{
    static const Descriptor own(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
    return own.get();
}

std::string pathOf(const std::string &which)
{
    if (which.find('/') != std::string::npos) {
        return which;
    }
    const bool isProcess = !which.empty() && which.find_first_not_of("0123456789") == std::string::npos;
    return isProcess ? "/proc/" + which + "/ns/net" : "/run/netns/" + which;
}

} // namespace

std::string NetworkNamespace::open(const std::string &which)
{
    const std::string path = pathOf(which);
    home(); // before anybody leaves it
    Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) {
        return "network namespace " + path + ": " + std::strerror(errno);
    }
    struct statfs about {
    };
    if (fstatfs(fd.get(), &about) != 0 || about.f_type != NSFS_MAGIC) {
        return path + " is no network namespace";
    }
    if (home() < 0 || setns(fd.get(), CLONE_NEWNET) != 0) {
        return "network namespace " + path + ": " + std::strerror(errno) +
               (errno == EPERM ? " (to enter it takes CAP_SYS_ADMIN)" : "");
    }
    if (setns(home(), CLONE_NEWNET) != 0) {
        std::abort();
    }
    fd_ = std::move(fd);
    return "";
}

void NetworkNamespace::choose(const NetworkNamespace *chosen)
{
    chosenNow = chosen;
}

const NetworkNamespace *NetworkNamespace::chosen()
{
    return chosenNow;
}

InsideNamespace::InsideNamespace()
{
    if (chosenNow == nullptr || isAwayNow) {
        return;
    }
    entered_ = setns(chosenNow->descriptor(), CLONE_NEWNET) == 0;
    isAway_ = isAwayNow = entered_;
}

InsideNamespace::~InsideNamespace()
{
    if (!isAway_) {
        return;
    }
    const int error = errno;
    if (setns(home(), CLONE_NEWNET) != 0) {
        std::abort();
    }
    isAwayNow = false;
    errno = error; // of what was opened, or was not
}

} // namespace ipmib::platform
