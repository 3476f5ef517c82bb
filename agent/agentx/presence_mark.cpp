// SPDX-License-Identifier: BSD-3-Clause
// A bound socket of the abstract kind: it needs no place in the file system, and goes away with its process.

#include "agent/agentx/presence_mark.h"

#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace ipmib::agent::agentx
{

namespace
{

// Binds the socket; 0, or why not.
int bindMark(int descriptor, const MasterAddress &master)
{
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    const std::string name = "ipmibd beside " + (master.isLocal() ? master.path : master.text);
    const std::size_t length = std::min(name.size(), sizeof place.sun_path - 1);
    name.copy(place.sun_path + 1, length); // behind the zero that makes it abstract
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
    return bind(descriptor, reinterpret_cast<const sockaddr *>(&place), size) == 0 ? 0 : errno;
}

} // namespace

PresenceMark::PresenceMark(const MasterAddress &master) : descriptor_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    (void)bindMark(descriptor_, master);
}

PresenceMark::~PresenceMark()
{
    close(descriptor_);
}

bool PresenceMark::isSet(const MasterAddress &master)
{
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool isSet = bindMark(descriptor, master) == EADDRINUSE;
    close(descriptor);
    return isSet;
}

} // namespace ipmib::agent::agentx
