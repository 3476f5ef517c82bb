// SPDX-License-Identifier: BSD-3-Clause
// A local socket by which devices that are made up are changed while they run. Whoever may write to the socket's file
// may do it; it is made for its owner alone.
//
// A client sends lines, each the name of a context, a tab, and a change as JSON; a name may end with a `*`, which
// stands for any rest, and is empty for the device without one. It gets a line for each, "ok" or "error: " and the
// reason.
#pragma once

#include "contexts.h"

#include "host/instances.h"

#include <functional>
#include <map>
#include <string>

namespace ipmib::agent
{

class DeviceSocket
{
  public:
    // Nothing is opened for an empty path. `changed` is called after each change. All outlive it. Throws
    // host::UsageError when the platform's device cannot be changed, std::runtime_error for the rest.
    DeviceSocket(const std::string &path, const IpmibPlatformHooks *platform, host::Instances &instances,
                 const Contexts &contexts, std::function<void()> changed);
    ~DeviceSocket();
    DeviceSocket(const DeviceSocket &) = delete;
    DeviceSocket &operator=(const DeviceSocket &) = delete;

  private:
    void accept();
    void read(int client);
    void close(int client);
    // What to answer.
    std::string obey(const std::string &line);
    std::string change(std::size_t instance, const std::string &text, bool takesEffect);

    std::string path_;
    const IpmibRehearsalHooks *hooks_ = nullptr;
    host::Instances &instances_;
    const Contexts &contexts_;
    std::function<void()> changed_;
    int listening_ = -1;
    struct Client {
        std::string line; // as far as it has come
        unsigned long heard;
    };
    std::map<int, Client> clients_; // by descriptor
    unsigned long turns_ = 0;
};

} // namespace ipmib::agent
