// SPDX-License-Identifier: BSD-3-Clause
// The network namespace in which descriptors are opened: sockets and files of /proc belong for good to the one in which
// they were. One thread, so there is one choice at a time.
#pragma once

#include "core/descriptor.h"

#include <cstdint>
#include <string>

namespace ipmib::platform
{

class NetworkNamespace
{
  public:
    // A namespace by its name in /run/netns, by the path of its file, or by the number of a process in it. The answer,
    // when it cannot be opened or entered, is one line for the user.
    std::string open(const std::string &which);
    bool isOpen() const { return static_cast<bool>(fd_); }
    int descriptor() const { return fd_.get(); }

    // From now on descriptors are opened in this one; null is the process's own, in which it also stays: only `Inside`
    // goes there, for a moment.
    static void choose(const NetworkNamespace *chosen);
    static const NetworkNamespace *chosen();

  private:
    Descriptor fd_;
};

// For a while descriptors are opened in this namespace.
class ChosenNamespace
{
  public:
    explicit ChosenNamespace(const NetworkNamespace *chosen) : before_(NetworkNamespace::chosen())
    {
        NetworkNamespace::choose(chosen);
    }
    ~ChosenNamespace() { NetworkNamespace::choose(before_); }
    ChosenNamespace(const ChosenNamespace &) = delete;
    ChosenNamespace &operator=(const ChosenNamespace &) = delete;

  private:
    const NetworkNamespace *before_;
};

// This thread is in the namespace that is chosen, as long as it lives. Around each place that opens a descriptor.
class InsideNamespace
{
  public:
    InsideNamespace();
    ~InsideNamespace();
    InsideNamespace(const InsideNamespace &) = delete;
    InsideNamespace &operator=(const InsideNamespace &) = delete;

    // False with errno set when it cannot be entered: nothing may be opened then.
    bool entered() const { return entered_; }

  private:
    bool entered_ = true;
    bool isAway_ = false;
};

} // namespace ipmib::platform
