// SPDX-License-Identifier: BSD-3-Clause
// The platform's end of the helper, `ipmib-netns`, which enters namespaces in its place. It is started when it is first
// needed, with the rights that the process has by then; the process may give them up afterwards.
#pragma once

#include "core/platform_loop.h"
#include "namespaces/helper_protocol.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ipmib::platform
{

class NamespaceHelper
{
  public:
    // The loop, which outlives it, tells when the helper has ended.
    explicit NamespaceHelper(PlatformLoop &loop) : loop_(loop) {}
    ~NamespaceHelper();
    NamespaceHelper(const NamespaceHelper &) = delete;
    NamespaceHelper &operator=(const NamespaceHelper &) = delete;

    // A namespace by its name in /run/netns, by its path, or by the number of a process in it. The answer, when it
    // cannot be opened or entered, is one line for the user.
    std::string open(const std::string &which, std::uint32_t &space);
    void close(std::uint32_t space);
    // Namespaces with a name may be opened from now on, also when they come later. The answer is one line for the user.
    std::string follow();
    // From now on no other namespaces may be opened than those that were named before.
    void settle(bool needsPacketFilter);

    // Opened in a namespace, for reading; no descriptor and errno where that is not possible. Never waits for long.
    Descriptor socket(std::uint32_t space, int protocol);
    Descriptor file(std::uint32_t space, std::string_view path);

  private:
    std::string start();
    // The errno of the answer, and its step; EPIPE without an answer.
    HelperAnswer ask(const HelperQuestion &question, Descriptor *handed = nullptr);
    bool exchange(const HelperQuestion &question, HelperAnswer &answer, Descriptor *handed);
    void end();
    void lost(const char *how);

    static constexpr int longestAnswer = 5000; // ms; it takes the helper 0.02

    PlatformLoop &loop_;
    Descriptor socket_;
    pid_t process_ = 0; // 0: never started
    bool isSettled_ = false;
};

} // namespace ipmib::platform
