// SPDX-License-Identifier: BSD-3-Clause
// ipmib-netns: opens sockets and files in network namespaces for the Linux platform, so that the agent around it needs
// no right to enter them. It is started with a socket as descriptor 3, and ends when the other end is closed.
#include "namespaces/helper_service.h"
#include "support/capabilities.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace
{

using namespace ipmib::platform;

constexpr int asker = 3;

// Processes of other users are reached by CAP_SYS_PTRACE, and files in their folders by CAP_DAC_READ_SEARCH. The packet
// filter asks for CAP_NET_ADMIN of whoever opened a socket, beside whoever speaks.
constexpr std::uint64_t needed =
    ipmib::support::capability(CAP_SYS_ADMIN) | ipmib::support::capability(CAP_SYS_PTRACE) |
    ipmib::support::capability(CAP_DAC_READ_SEARCH) | ipmib::support::capability(CAP_NET_ADMIN);

bool isAsked()
{
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(asker, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

// A service that does not give the right may not let anybody change theirs either: then whoever asks is told.
bool isPowerless()
{
    return (ipmib::support::heldCapabilities() & ipmib::support::capability(CAP_SYS_ADMIN)) == 0;
}

// Signals to all processes of a service or a terminal are meant for the agent, with which the socket closes.
bool confine()
{
    for (const int each : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        std::signal(each, SIG_IGN);
    }
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int each : {0, 1, 2}) {
        dup2(nowhere, each);
    }
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files); // as many namespaces as it may
    }
    return nowhere >= 0 && close_range(asker + 1, ~0U, 0) == 0 && chdir("/") == 0 &&
           prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 &&
           (ipmib::support::keepCapabilities(needed) || isPowerless());
}

bool send(const HelperService::Reply &reply)
{
    HelperAnswer answer = reply.answer;
    iovec data{&answer, sizeof answer};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    if (reply.handed) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr *header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof(int));
        const int fd = reply.handed.get();
        std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
    }
    return sendmsg(asker, &message, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof answer);
}

} // namespace

// Without an orderly end: nothing is to be written, and a sanitizer could not look at a process that nobody may trace.
int main()
{
    if (!isAsked()) {
        std::fputs("ipmib-netns: ipmibd starts this program, see \"man ipmibd\"\n", stderr);
        return 2;
    }
    if (!confine()) {
        _exit(1);
    }
    HelperService service;
    for (;;) {
        // Descriptors that come with a message are closed by the kernel, for there is no room for them.
        std::byte message[sizeof(HelperQuestion)];
        const ssize_t length = recv(asker, message, sizeof message, MSG_TRUNC);
        if (length <= 0 || length > static_cast<ssize_t>(sizeof message)) {
            _exit(length == 0 ? 0 : 1);
        }
        const auto reply = service.answer(std::span(message).first(static_cast<std::size_t>(length)));
        if (!reply || !send(*reply)) {
            _exit(1);
        }
    }
}
