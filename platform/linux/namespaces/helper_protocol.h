// SPDX-License-Identifier: BSD-3-Clause
// What the platform and `ipmib-netns` say to each other, over a socket of whole messages (SOCK_SEQPACKET): a question,
// and its answer, with which a descriptor comes where one was asked for. Whatever is no question ends the helper.
//
// The helper can do more than whoever asks it, so it opens only what is listed here, and only in namespaces that the
// asker named before it settled: from then on it takes the word of nobody, the same namespaces again are all there is,
// and those with a name where they are followed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ipmib::platform
{

struct HelperQuestion {
    enum Kind : std::uint32_t {
        open = 1, // text: a name in /run/netns, an absolute path, or the number of a process; answers with `space`
        close,    // space
        socket,   // space; which: the netlink protocol
        file,     // space; which: the place in `networkFiles`; text: the interface, where the file is of one
        follow,   // every namespace with a name from now on
        settle,   // which: 1 when sockets to the packet filter will be needed, else 0
    };
    std::uint32_t kind;
    std::uint32_t space;
    std::uint32_t which;
    char text[244]; // NUL-terminated, and NULs behind it
};
static_assert(sizeof(HelperQuestion) == 256);

struct HelperAnswer {
    // What could not be done.
    enum Step : std::uint32_t { none, allow, find, recognise, enter, obtain };
    std::int32_t error; // errno, or 0
    std::uint32_t step;
    std::uint32_t space;
};

// Files whose content depends on the network namespace in which they are opened.
struct NetworkFile {
    std::string_view path;   // of a file of one interface: what stands before its name
    std::string_view behind; // and behind it
    bool ofInterface = false;
};
inline constexpr NetworkFile networkFiles[] = {
    {"/proc/thread-self/net/snmp", ""},
    {"/proc/thread-self/net/netstat", ""},
    {"/proc/thread-self/net/snmp6", ""},
    {"/proc/thread-self/net/dev_mcast", ""},
    {"/proc/thread-self/net/dev_snmp6/", "", true},
    {"/proc/sys/net/ipv4/ip_forward", ""},
    {"/proc/sys/net/ipv4/ip_default_ttl", ""},
    {"/proc/sys/net/ipv4/ipfrag_time", ""},
    {"/proc/sys/net/ipv4/neigh/", "/retrans_time_ms", true},
    {"/proc/sys/net/ipv6/conf/all/forwarding", ""},
    {"/proc/sys/net/ipv6/conf/default/hop_limit", ""},
    {"/proc/sys/net/ipv6/ip6frag_time", ""},
};

// The path of a file that a question names; empty when there is none.
std::string pathOfFile(const HelperQuestion &question);
// The question for a file by its path; nothing when it is not listed.
std::optional<HelperQuestion> questionForFile(std::string_view path);
// The question with this text; nothing when that does not fit.
std::optional<HelperQuestion> questionWith(HelperQuestion::Kind kind, std::string_view text);

// A message as a question: nothing when it is not of a question's size and form.
std::optional<HelperQuestion> readQuestion(std::span<const std::byte> message);

// The file of a namespace: by its name in /run/netns, by an absolute path, or by the number of a process in it. Empty
// when it is none of these.
std::string pathOfNamespace(std::string_view text);
// Whether this is the path of a namespace with a name.
bool isNamed(std::string_view path);

} // namespace ipmib::platform
