// SPDX-License-Identifier: BSD-3-Clause
// A network namespace that lives as long as the test that made it.
#include "netns/namespace.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <linux/if_addr.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

template class nlohmann::basic_json<>; // see json_compiled_once.h

namespace ipmib::netns
{

namespace
{

constexpr char here[] = "/proc/thread-self/ns/net";
constexpr unsigned linkScope = 0x20; // as if_inet6 has it

// A new namespace, entered and left again; -1 with errno set when that is not allowed.
int makeNamespace()
{
    const int outside = open(here, O_RDONLY | O_CLOEXEC);
    if (outside < 0 || unshare(CLONE_NEWNET) != 0) {
        const int error = errno;
        close(outside);
        errno = error;
        return -1;
    }
    const int inside = open(here, O_RDONLY | O_CLOEXEC);
    if (setns(outside, CLONE_NEWNET) != 0) {
        std::perror("cannot return from a new network namespace");
        std::abort();
    }
    close(outside);
    return inside;
}

} // namespace

std::string unavailable()
{
    const int fd = makeNamespace();
    if (fd < 0) {
        return std::string("needs the right to make network namespaces: ") + std::strerror(errno);
    }
    close(fd);
    return "";
}

Namespace::Namespace() : fd_(makeNamespace())
{
    if (fd_ < 0) {
        std::perror("cannot make a network namespace");
        std::abort();
    }
    run("ip link set lo up");
    for (const char *scope : {"all", "default"}) {
        sysctl(std::string("net/ipv6/conf/") + scope + "/accept_dad", "0");
    }
}

Namespace::~Namespace()
{
    close(fd_);
}

std::string Namespace::run(const std::string &command) const
{
    const Inside inside(*this);
    std::FILE *pipe = popen(command.c_str(), "re");
    if (pipe == nullptr) {
        ADD_FAILURE() << command << ": " << std::strerror(errno);
        return "";
    }
    std::string output;
    char piece[4096];
    while (const std::size_t length = std::fread(piece, 1, sizeof piece, pipe)) {
        output.append(piece, length);
    }
    const int status = pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command << " failed with status " << status;
    return output;
}

nlohmann::json Namespace::json(const std::string &command) const
{
    const auto value = nlohmann::json::parse(run(command), nullptr, false);
    EXPECT_FALSE(value.is_discarded()) << command << " wrote no JSON";
    return value;
}

void Namespace::sysctl(const std::string &name, const std::string &value) const
{
    const Inside inside(*this);
    std::ofstream file("/proc/sys/" + name);
    file << value << std::flush;
    EXPECT_TRUE(file.good()) << name << " = " << value;
}

std::string Namespace::sysctl(const std::string &name) const
{
    std::string value = file("/proc/sys/" + name);
    value.erase(value.find_last_not_of('\n') + 1);
    return value;
}

std::string Namespace::file(const std::string &path) const
{
    const Inside inside(*this);
    std::ifstream stream(path);
    EXPECT_TRUE(stream.good()) << path;
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

void Namespace::waitForLinkLocals(std::initializer_list<std::string> interfaces) const
{
    for (const std::string &interface : interfaces) {
        const auto isThere = [&] {
            std::istringstream addresses(file("/proc/thread-self/net/if_inet6"));
            std::string address;
            std::string index;
            std::string length;
            unsigned scope = 0;
            unsigned flags = 0;
            std::string name;
            bool hasLinkLocal = false;
            while (addresses >> address >> index >> length >> std::hex >> scope >> flags >> name) {
                if (name == interface && (flags & IFA_F_TENTATIVE) != 0) {
                    return false;
                }
                hasLinkLocal = hasLinkLocal || (name == interface && scope == linkScope);
            }
            return hasLinkLocal;
        };
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!isThere()) {
            if (std::chrono::steady_clock::now() > end) {
                ADD_FAILURE() << interface << " gets no link-local address";
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

void Namespace::connect(const Namespace &a, const std::string &nameInA, const Namespace &b, const std::string &nameInB)
{
    a.run("ip link add " + nameInA + " type veth peer name " + nameInB + " netns " + b.path());
    a.run("ip link set " + nameInA + " up");
    b.run("ip link set " + nameInB + " up");
    a.waitForLinkLocals({nameInA});
    b.waitForLinkLocals({nameInB});
}

std::string Namespace::path() const
{
    return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(fd_);
}

Inside::Inside(const Namespace &space) : outside_(open(here, O_RDONLY | O_CLOEXEC))
{
    if (outside_ < 0 || setns(space.descriptor(), CLONE_NEWNET) != 0) {
        std::perror("cannot enter a network namespace");
        std::abort();
    }
}

Inside::~Inside()
{
    if (setns(outside_, CLONE_NEWNET) != 0) {
        std::perror("cannot leave a network namespace");
        std::abort();
    }
    close(outside_);
}

} // namespace ipmib::netns
