// SPDX-License-Identifier: BSD-3-Clause
// ipmib-netns as an attacker meets it who has taken over the agent: whatever is sent, nothing comes out but what the
// platform itself may ask for.
#include "core/descriptor.h"
#include "namespaces/helper_protocol.h"
#include "netns/namespace.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/netlink.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace ipmib::platform
{
namespace
{

using Kind = HelperQuestion::Kind;

struct Came {
    bool isAnswer = false; // false: the helper has closed its end
    HelperAnswer answer{};
    std::vector<Descriptor> descriptors;
};

class Helper
{
  public:
    Helper()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
            std::abort();
        }
        socket_ = Descriptor(ends[0]);
        const Descriptor theirs(ends[1]);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(theirs.get(), 3);
            execl(IPMIB_NETNS_PROGRAM, "ipmib-netns", nullptr);
            _exit(127);
        }
    }
    ~Helper() { end(); }
    Helper(const Helper &) = delete;
    Helper &operator=(const Helper &) = delete;

    pid_t pid() const { return pid_; }
    // The status with which it ends by itself.
    int end()
    {
        socket_.reset();
        int status = 0;
        if (pid_ > 0 && waitpid(pid_, &status, 0) == pid_) {
            pid_ = 0;
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    Came send(const void *bytes, std::size_t size, const std::vector<int> &with = {})
    {
        iovec data{const_cast<void *>(bytes), size};
        std::vector<char> control(CMSG_SPACE(sizeof(int) * with.size()));
        msghdr message{};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        if (!with.empty()) {
            message.msg_control = control.data();
            message.msg_controllen = control.size();
            cmsghdr *header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(sizeof(int) * with.size());
            std::memcpy(CMSG_DATA(header), with.data(), sizeof(int) * with.size());
        }
        EXPECT_EQ(sendmsg(socket_.get(), &message, MSG_NOSIGNAL), static_cast<ssize_t>(size));
        return receive();
    }
    Came ask(const HelperQuestion &question) { return send(&question, sizeof question); }
    Came ask(Kind kind, const std::string &text = "", std::uint32_t which = 0, std::uint32_t space = 0)
    {
        HelperQuestion question{};
        question.kind = kind;
        question.which = which;
        question.space = space;
        text.copy(question.text, sizeof question.text);
        return ask(question);
    }

  private:
    Came receive()
    {
        Came came;
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * 16)];
        iovec data{&came.answer, sizeof came.answer};
        msghdr message{};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t length = recvmsg(socket_.get(), &message, MSG_CMSG_CLOEXEC);
        came.isAnswer = length == static_cast<ssize_t>(sizeof came.answer);
        for (cmsghdr *header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
            const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (std::size_t i = 0; i < count; ++i) {
                int fd;
                std::memcpy(&fd, CMSG_DATA(header) + i * sizeof fd, sizeof fd);
                came.descriptors.emplace_back(fd);
            }
        }
        return came;
    }

    Descriptor socket_;
    pid_t pid_ = -1;
};

std::uint32_t placeOf(std::string_view path)
{
    return questionForFile(path)->which;
}

std::string textOf(const Descriptor &file)
{
    char text[256];
    const ssize_t length = pread(file.get(), text, sizeof text, 0);
    return std::string(text, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

std::uint64_t cookieOf(const Descriptor &socket)
{
    std::uint64_t cookie = 0;
    socklen_t size = sizeof cookie;
    EXPECT_EQ(getsockopt(socket.get(), SOL_SOCKET, SO_NETNS_COOKIE, &cookie, &size), 0);
    return cookie;
}

std::string statusOf(pid_t process, const std::string &word)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(word + ":\t")) {
            return line.substr(word.size() + 2);
        }
    }
    return "none";
}

void expectRefused(const Came &came, const std::string &what)
{
    EXPECT_TRUE(came.isAnswer) << what;
    EXPECT_NE(came.answer.error, 0) << what;
    EXPECT_TRUE(came.descriptors.empty()) << what;
}

TEST(NetnsHelper, opensInTheNamespaceAndNowhereElse)
{
    IPMIB_NEEDS_NAMESPACES();
    const netns::Namespace space;
    space.sysctl("net/ipv4/ip_default_ttl", "77");
    Helper helper;
    const Came opened = helper.ask(Kind::open, space.path());
    ASSERT_EQ(opened.answer.error, 0) << std::strerror(opened.answer.error);
    EXPECT_TRUE(opened.descriptors.empty()) << "a namespace is not handed out";
    const auto number = opened.answer.space;
    const std::uint32_t ttl = placeOf("/proc/sys/net/ipv4/ip_default_ttl");
    const Came file = helper.ask(Kind::file, "", ttl, number);
    ASSERT_EQ(file.descriptors.size(), 1u);
    EXPECT_EQ(textOf(file.descriptors[0]), "77\n");
    EXPECT_EQ(fcntl(file.descriptors[0].get(), F_GETFL) & O_ACCMODE, O_RDONLY);
    const Came ofInterface = helper.ask(Kind::file, "lo", placeOf("/proc/thread-self/net/dev_snmp6/x"), number);
    ASSERT_EQ(ofInterface.descriptors.size(), 1u);
    EXPECT_NE(textOf(ofInterface.descriptors[0]).find("ifIndex"), std::string::npos);
    const Came socket = helper.ask(Kind::socket, "", NETLINK_ROUTE, number);
    ASSERT_EQ(socket.descriptors.size(), 1u);
    const netns::Inside inside(space);
    EXPECT_EQ(cookieOf(socket.descriptors[0]),
              cookieOf(Descriptor(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE))));
}

TEST(NetnsHelper, nothingElseComesOut)
{
    IPMIB_NEEDS_NAMESPACES();
    const netns::Namespace space;
    Helper helper;
    const auto number = helper.ask(Kind::open, space.path()).answer.space;
    for (const char *path : {"/etc/passwd", "/dev/null", "/", "/proc/self/ns/mnt", "/proc/self/ns/user", "..", ".",
                             "../../etc/passwd", "no-such-name", "0", "99999999", "", "relative/path"}) {
        expectRefused(helper.ask(Kind::open, path), path);
    }
    for (std::uint32_t protocol = 0; protocol < 64; ++protocol) {
        if (protocol != NETLINK_ROUTE && protocol != NETLINK_SOCK_DIAG && protocol != NETLINK_NETFILTER) {
            expectRefused(helper.ask(Kind::socket, "", protocol, number), "protocol " + std::to_string(protocol));
        }
    }
    expectRefused(helper.ask(Kind::socket, "lo", NETLINK_ROUTE, number), "a socket with a text");
    for (std::uint32_t which = 0; which < 64; ++which) {
        for (const char *name : {"../snmp", "..", ".", "a/b", "/etc/passwd", "sixteen-octets-x", "no-such-link"}) {
            expectRefused(helper.ask(Kind::file, name, which, number), name + (" at " + std::to_string(which)));
        }
    }
    const std::uint32_t ofInterface = placeOf("/proc/thread-self/net/dev_snmp6/x");
    expectRefused(helper.ask(Kind::file, "", ofInterface, number), "the folder itself");
    expectRefused(helper.ask(Kind::file, "", std::size(networkFiles), number), "behind the last file");
    for (const std::uint32_t wrong : {number + 1, 4096u, ~0u}) {
        expectRefused(helper.ask(Kind::socket, "", NETLINK_ROUTE, wrong), "no such namespace");
        EXPECT_TRUE(helper.ask(Kind::close, "", 0, wrong).isAnswer);
    }
    EXPECT_EQ(helper.ask(Kind::close, "", 0, number).answer.error, 0);
    expectRefused(helper.ask(Kind::socket, "", NETLINK_ROUTE, number), "a closed namespace");
}

TEST(NetnsHelper, opensNothingThatWasNotNamedBeforeItWasSettled)
{
    IPMIB_NEEDS_NAMESPACES();
    const netns::Namespace named;
    const netns::Namespace other;
    Helper helper;
    ASSERT_EQ(helper.ask(Kind::open, named.path()).answer.error, 0);
    expectRefused(helper.ask(Kind::open, "comes-later"), "not there yet");
    EXPECT_EQ(helper.ask(Kind::settle, "", 0).answer.error, 0);
    expectRefused(helper.ask(Kind::open, other.path()), "another one");
    expectRefused(helper.ask(Kind::open, "another-name"), "another name");
    expectRefused(helper.ask(Kind::open, "1"), "a process");
    expectRefused(helper.ask(Kind::follow), "too late");
    EXPECT_EQ(helper.ask(Kind::open, "comes-later").answer.step, HelperAnswer::find) << "may be opened, when it comes";
    const Came again = helper.ask(Kind::open, named.path());
    EXPECT_EQ(again.answer.error, 0);
    EXPECT_EQ(helper.ask(Kind::socket, "", NETLINK_ROUTE, again.answer.space).descriptors.size(), 1u);
    expectRefused(helper.ask(Kind::socket, "", NETLINK_NETFILTER, again.answer.space), "the packet filter");
    EXPECT_EQ(helper.ask(Kind::settle, "", 1).answer.error, 0);
    expectRefused(helper.ask(Kind::socket, "", NETLINK_NETFILTER, again.answer.space), "settled once and for all");
}

TEST(NetnsHelper, followsNamesAndNothingThatLeadsElsewhere)
{
    Helper helper;
    EXPECT_EQ(helper.ask(Kind::follow).answer.error, 0);
    EXPECT_EQ(helper.ask(Kind::settle).answer.error, 0);
    const auto stepFor = [&](const std::string &text) { return helper.ask(Kind::open, text).answer.step; };
    EXPECT_EQ(stepFor("any-name-at-all"), HelperAnswer::find);
    EXPECT_EQ(stepFor("/run/netns/any-name-at-all"), HelperAnswer::find);
    for (const char *text : {"/proc/self/ns/net", "1", "..", "/run/netns/../../proc/self/ns/net", "/run/netns/..",
                             "/run/netns/", "/run/netns", "/var/run/netns/x"}) {
        EXPECT_EQ(stepFor(text), HelperAnswer::allow) << text;
    }
}

TEST(NetnsHelper, garbageEndsIt)
{
    HelperQuestion question{};
    question.kind = Kind::follow;
    std::vector<std::vector<char>> garbage;
    const auto add = [&](std::size_t size, const HelperQuestion &from) {
        std::vector<char> bytes(size, 'x');
        std::copy_n(reinterpret_cast<const char *>(&from), std::min(size, sizeof from), bytes.begin());
        garbage.push_back(bytes);
    };
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, sizeof question - 1, sizeof question + 1,
                                   2 * sizeof question, std::size_t{60'000}}) {
        add(size, question);
    }
    for (const std::uint32_t kind : {0u, 7u, 0x01000000u, ~0u}) {
        HelperQuestion unknown = question;
        unknown.kind = kind;
        add(sizeof unknown, unknown);
    }
    HelperQuestion endless = question;
    std::ranges::fill(endless.text, 'x');
    add(sizeof endless, endless);
    HelperQuestion more = question;
    more.text[100] = 'x'; // behind the end of the text
    add(sizeof more, more);
    for (const std::vector<char> &bytes : garbage) {
        Helper helper;
        const Came came = helper.send(bytes.data(), bytes.size());
        EXPECT_FALSE(came.isAnswer) << bytes.size();
        EXPECT_TRUE(came.descriptors.empty());
        EXPECT_EQ(helper.end(), bytes.empty() ? 0 : 1) << bytes.size();
    }
}

TEST(NetnsHelper, keepsNoDescriptorThatIsSentToIt)
{
    Helper helper;
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const Descriptor reading(ends[0]);
    HelperQuestion question{};
    question.kind = Kind::follow;
    const Came came = helper.send(&question, sizeof question, std::vector<int>(10, ends[1]));
    EXPECT_TRUE(came.isAnswer);
    EXPECT_TRUE(came.descriptors.empty());
    close(ends[1]);
    char byte;
    EXPECT_EQ(read(reading.get(), &byte, 1), 0) << "somebody still holds the other end";
}

TEST(NetnsHelper, hasLittleAndEndsWithTheSocketAlone)
{
    const Descriptor others(open("/etc/passwd", O_RDONLY)); // handed down to every program
    Helper helper;
    ASSERT_TRUE(helper.ask(Kind::follow).isAnswer);
    EXPECT_EQ(statusOf(helper.pid(), "NoNewPrivs"), "1");
    const std::uint64_t rights = std::stoull(statusOf(helper.pid(), "CapPrm"), nullptr, 16);
    EXPECT_EQ(rights & ~0x281004ull, 0u) << "more than SYS_ADMIN, SYS_PTRACE, DAC_READ_SEARCH and NET_ADMIN";
    EXPECT_EQ(statusOf(helper.pid(), "CapInh"), "0000000000000000");
    EXPECT_EQ(statusOf(helper.pid(), "CapAmb"), "0000000000000000");
    const std::string folder = "/proc/" + std::to_string(helper.pid());
    std::error_code error; // without the right to look into it
    for (const auto &entry : std::filesystem::directory_iterator(folder + "/fd", error)) {
        const std::string name = entry.path().filename();
        const std::string target = std::filesystem::read_symlink(entry.path());
        EXPECT_TRUE(target == "/dev/null" || name == "3" || target.starts_with("net:[")) << name << ": " << target;
    }
    kill(helper.pid(), SIGTERM);
    kill(helper.pid(), SIGINT);
    EXPECT_TRUE(helper.ask(Kind::follow).isAnswer) << "signals are the agent's affair";
    EXPECT_EQ(helper.end(), 0);
}

} // namespace
} // namespace ipmib::platform
