// SPDX-License-Identifier: BSD-3-Clause
// A question and its answer at a time, as the platform has one thread. A helper that is late is given up for good: what
// it says later would be taken for the answer to something else.
#include "namespaces/namespace_helper.h"

#include "core/log.h"

#include <dlfcn.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace ipmib::platform
{
namespace
{

constexpr char programName[] = "ipmib-netns";
constexpr int helpersEnd = 3; // the descriptor that the program takes

// Beside the library that has this code.
std::string programPath()
{
    static const char here = 0;
    Dl_info about{};
    if (dladdr(&here, &about) == 0 || about.dli_fname == nullptr) {
        return programName;
    }
    return std::filesystem::absolute(about.dli_fname).parent_path() / programName;
}

int spawn(const std::string &path, int socket, pid_t &process)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    sigset_t none;
    sigemptyset(&none);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, helpersEnd);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    char name[] = "ipmib-netns";
    char *const arguments[] = {name, nullptr};
    char *const noEnvironment[] = {nullptr};
    const int error = posix_spawn(&process, path.c_str(), &actions, &attributes, arguments, noEnvironment);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error;
}

} // namespace

NamespaceHelper::~NamespaceHelper()
{
    end();
}

std::string NamespaceHelper::start()
{
    if (socket_) {
        return "";
    }
    if (process_ != 0) {
        return std::string(programName) + " has ended, and starts with the agent alone";
    }
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return std::string("socketpair: ") + std::strerror(errno);
    }
    socket_ = Descriptor(ends[0]);
    const Descriptor theirs(ends[1]);
    const std::string path = programPath();
    if (const int error = spawn(path, theirs.get(), process_); error != 0) {
        socket_.reset();
        process_ = 0;
        return path + ": " + std::strerror(error);
    }
    loop_.watch(socket_.get(), PlatformLoop::Work::background, [this] { lost("has ended"); });
    logInfo("network namespaces: opened by %s, process %d", programName, static_cast<int>(process_));
    return "";
}

// A child that does not end by itself, because somebody has stopped it, must not be left behind.
void NamespaceHelper::end()
{
    if (!socket_) {
        return;
    }
    loop_.forget(socket_.get());
    socket_.reset();
    if (waitpid(process_, nullptr, WNOHANG) == 0) { // it is still there, and ours
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

void NamespaceHelper::lost(const char *how)
{
    end();
    logError("network namespaces: %s %s: those that are shown go on with what they have open, no other is opened until "
             "the agent is restarted",
             programName, how);
}

bool NamespaceHelper::exchange(const HelperQuestion &question, HelperAnswer &answer, Descriptor *handed)
{
    if (send(socket_.get(), &question, sizeof question, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
        lost(errno == EPIPE || errno == ECONNRESET ? "has ended" : "takes no more questions");
        return false;
    }
    pollfd wait{socket_.get(), POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&wait, 1, longestAnswer);
    } while (ready < 0 && errno == EINTR);
    if (ready != 1) {
        lost("does not answer");
        return false;
    }
    iovec data{&answer, sizeof answer};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (recvmsg(socket_.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) != static_cast<ssize_t>(sizeof answer)) {
        lost("has ended");
        return false;
    }
    const cmsghdr *header = CMSG_FIRSTHDR(&message);
    if (header != nullptr && header->cmsg_type == SCM_RIGHTS) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
        Descriptor came(fd);
        if (handed != nullptr) {
            *handed = std::move(came);
        }
    } else if (handed != nullptr && answer.error == 0) {
        answer = {EMFILE, HelperAnswer::obtain, 0}; // this process has no room for it
    }
    return true;
}

HelperAnswer NamespaceHelper::ask(const HelperQuestion &question, Descriptor *handed)
{
    HelperAnswer answer{};
    if (!socket_ || !exchange(question, answer, handed)) {
        return {EPIPE, HelperAnswer::obtain, 0};
    }
    return answer;
}

std::string NamespaceHelper::open(const std::string &which, std::uint32_t &space)
{
    const bool isRelative = which.find('/') != std::string::npos && !which.starts_with('/');
    const std::string text = isRelative ? std::filesystem::absolute(which).string() : which;
    const std::string path = pathOfNamespace(text);
    const auto question = questionWith(HelperQuestion::open, text);
    if (path.empty() || !question) {
        return "\"" + which + "\" is no network namespace";
    }
    if (const std::string error = start(); !error.empty()) {
        return "network namespace " + path + ": " + error;
    }
    const HelperAnswer answer = ask(*question);
    space = answer.space;
    if (answer.error == 0) {
        return "";
    }
    switch (answer.step) {
    case HelperAnswer::allow:
        return "network namespace " + path + ": was not in the configuration when the agent started; restart it";
    case HelperAnswer::recognise:
        return path + " is no network namespace";
    case HelperAnswer::enter:
        return "network namespace " + path + ": " + std::strerror(answer.error) +
               (answer.error == EPERM ? " (to enter it takes CAP_SYS_ADMIN at the start)" : "");
    default:
        return "network namespace " + path + ": " + std::strerror(answer.error);
    }
}

void NamespaceHelper::close(std::uint32_t space)
{
    HelperQuestion question{};
    question.kind = HelperQuestion::close;
    question.space = space;
    ask(question);
}

std::string NamespaceHelper::follow()
{
    if (const std::string error = start(); !error.empty()) {
        return error;
    }
    HelperQuestion question{};
    question.kind = HelperQuestion::follow;
    const HelperAnswer answer = ask(question);
    if (answer.step == HelperAnswer::allow) {
        return "was not in the configuration when the agent started; restart it";
    }
    return answer.error == 0 ? "" : std::strerror(answer.error);
}

void NamespaceHelper::settle(bool needsPacketFilter)
{
    if (isSettled_ || !socket_) {
        return;
    }
    isSettled_ = true;
    HelperQuestion question{};
    question.kind = HelperQuestion::settle;
    question.which = needsPacketFilter ? 1 : 0;
    ask(question);
}

Descriptor NamespaceHelper::socket(std::uint32_t space, int protocol)
{
    HelperQuestion question{};
    question.kind = HelperQuestion::socket;
    question.space = space;
    question.which = static_cast<std::uint32_t>(protocol);
    Descriptor handed;
    errno = ask(question, &handed).error;
    return handed;
}

Descriptor NamespaceHelper::file(std::uint32_t space, std::string_view path)
{
    auto question = questionForFile(path);
    if (!question) {
        errno = EACCES;
        return Descriptor();
    }
    question->space = space;
    Descriptor handed;
    errno = ask(*question, &handed).error;
    return handed;
}

} // namespace ipmib::platform
