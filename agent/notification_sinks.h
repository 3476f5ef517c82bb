// SPDX-License-Identifier: BSD-3-Clause
// Where notifications go, by the lines trapsink, trap2sink, informsink and trapsess. The library reads the lines and
// makes a session of each; by itself it would send the notifications of all contexts with the same community.
#pragma once

#include "context_settings.h"
#include "net_snmp.h"

#include <optional>
#include <string>
#include <vector>

namespace ipmib::agent
{

class NotificationSinks
{
  public:
    // From here on, before the configuration is read, the library hands the sessions to it. One at a time; the settings
    // outlive it.
    explicit NotificationSinks(const ContextSettings &settings);
    ~NotificationSinks();
    NotificationSinks(const NotificationSinks &) = delete;
    NotificationSinks &operator=(const NotificationSinks &) = delete;

    // Sends what the notification consists of to all that may be told of this context.
    void send(netsnmp_variable_list &variables, const std::string &context);

  private:
    struct Sink {
        netsnmp_session *session;
        bool isConfirmed; // by an inform
    };

    static int takeSession(int, int, void *arguments, void *self);
    static int forgetSessions(int, int, void *, void *self);
    static int sendVersion1(int, int, void *notification, void *self);
    static int sendLater(int, int, void *notification, void *self);

    void closeAll();
    void sendTo(const Sink &sink, netsnmp_pdu &notification, const std::string &context) const;
    std::optional<std::string> communityFor(netsnmp_session &session, const std::string &context) const;

    const ContextSettings &settings_;
    std::vector<Sink> sinks_;
    std::string context_; // of what is being sent
};

} // namespace ipmib::agent
