// SPDX-License-Identifier: BSD-3-Clause
// The one place where descriptors are opened that belong to a network namespace.
#include "namespaces/network_namespace.h"

#include <fcntl.h>
#include <sys/socket.h>

namespace ipmib::platform
{
namespace
{

const NetworkNamespace *chosenNow = nullptr;

} // namespace

NetworkNamespace::~NetworkNamespace()
{
    if (helper_ != nullptr) {
        helper_->close(space_);
    }
    if (chosenNow == this) {
        chosenNow = nullptr;
    }
}

std::string NetworkNamespace::open(NamespaceHelper &helper, const std::string &which)
{
    std::string error = helper.open(which, space_);
    helper_ = error.empty() ? &helper : nullptr;
    return error;
}

void NetworkNamespace::choose(const NetworkNamespace *chosen)
{
    chosenNow = chosen;
}

const NetworkNamespace *NetworkNamespace::chosen()
{
    return chosenNow;
}

Descriptor NetworkNamespace::openNetlinkSocket(int protocol)
{
    return chosenNow == nullptr ? Descriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, protocol))
                                : chosenNow->helper_->socket(chosenNow->space_, protocol);
}

Descriptor NetworkNamespace::openFile(const char *path)
{
    return chosenNow == nullptr ? Descriptor(::open(path, O_RDONLY | O_CLOEXEC))
                                : chosenNow->helper_->file(chosenNow->space_, path);
}

} // namespace ipmib::platform
