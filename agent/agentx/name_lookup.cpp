// SPDX-License-Identifier: BSD-3-Clause
// The process has one thing to do and one thing to say. It ends with us, whatever ends us.

#include "agent/agentx/name_lookup.h"

#include "agent/net_snmp.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace ipmib::agent::agentx
{

namespace
{

struct Answer {
    int error; // of getaddrinfo
    Place place;
};

[[noreturn]] void lookUp(const MasterAddress &address, int descriptor, pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(1);
    }
    addrinfo hints{};
    hints.ai_family = address.family;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo *found = nullptr;
    Answer answer{};
    answer.error = getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
    if (answer.error == 0) {
        answer.place.size = found->ai_addrlen;
        std::memcpy(&answer.place.address, found->ai_addr, found->ai_addrlen);
    }
    _exit(write(descriptor, &answer, sizeof answer) == sizeof answer ? 0 : 1);
}

} // namespace

NameLookup::NameLookup(Listener listener) : listener_(std::move(listener)) {}

NameLookup::~NameLookup()
{
    cancel();
}

void NameLookup::begin(const MasterAddress &address)
{
    cancel();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        lookUp(address, ends[1], parent);
    }
    const int error = errno;
    close(ends[1]);
    if (process_ < 0) {
        close(ends[0]);
        throw std::system_error(error, std::generic_category());
    }
    answer_ = ends[0];
    register_readfd(
        answer_, [](int, void *self) { static_cast<NameLookup *>(self)->take(); }, this);
}

void NameLookup::cancel()
{
    if (process_ < 0) {
        return;
    }
    unregister_readfd(answer_);
    close(answer_);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

void NameLookup::take()
{
    Answer answer{};
    const bool isWhole = read(answer_, &answer, sizeof answer) == sizeof answer;
    cancel();
    if (!isWhole) {
        listener_.failed("the name cannot be looked up");
    } else if (answer.error != 0) {
        listener_.failed(gai_strerror(answer.error));
    } else {
        listener_.found(answer.place);
    }
}

} // namespace ipmib::agent::agentx
