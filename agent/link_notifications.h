// SPDX-License-Identifier: BSD-3-Clause
// linkDown and linkUp of IF-MIB, at the moment at which the platform tells of the change.
#pragma once

#include "config_line.h"

#include <ipmib/platform_hooks.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace ipmib::agent
{

// The configuration's line `linkNotifications no | all | COUNT SECONDS`.
class LinkNotificationSettings
{
  public:
    static constexpr const char *directive = "linkNotifications"; // in ipmibd.conf

    // From here on the library hands the lines to it, as it does for ServeSettings. Before it reads them again it is
    // back at the defaults.
    LinkNotificationSettings(const char *fileType, const char *word);

    bool areSent() const { return areSent_; }
    // At most so many of one interface at once, and as many again over the seconds; 0: without a limit.
    unsigned count() const { return count_; }
    unsigned seconds() const { return seconds_; }

    // Reads a line without the directive. Returns what is wrong with it, or nothing.
    std::string read(const std::string &line);
    void forget();

  private:
    static constexpr unsigned usualCount = 10;
    static constexpr unsigned usualSeconds = 60;

    bool areSent_ = true;
    unsigned count_ = usualCount;
    unsigned seconds_ = usualSeconds;
    ConfigLine<LinkNotificationSettings> line_;
};

class LinkNotifications
{
  public:
    using Clock = std::chrono::steady_clock;
    // Is given what the notification consists of, its identifier first.
    using Send = std::function<void(netsnmp_variable_list &)>;

    // All outlive it. The platform tells nobody else of its links.
    LinkNotifications(const IpmibPlatformHooks *platform, const LinkNotificationSettings &settings, Send send);
    ~LinkNotifications();
    LinkNotifications(const LinkNotifications &) = delete;
    LinkNotifications &operator=(const LinkNotifications &) = delete;

    void take(const IpmibLinkChange &change, Clock::time_point now);
    // Tells how the links are that were silent for a while; as often as one may have become due.
    void tellWaiting(Clock::time_point now);

  private:
    // What is known of a link that has changed since the start.
    struct Link {
        double left = 0; // notifications that it may send now
        Clock::time_point counted;
        bool toldDown = false;
        bool waits = false; // it has changed, and was not allowed to say so
        IpmibLinkChange latest{};
    };

    void refill(Link &link, Clock::time_point now) const;
    void send(Link &link, const IpmibLinkChange &change);
    void setAlarm();

    const IpmibPlatformHooks *platform_;
    const LinkNotificationSettings &settings_;
    Send send_;
    std::map<std::uint32_t, Link> links_; // by ifIndex
    unsigned alarm_ = 0;
};

// The variables through the library to wherever trap2sink, informsink and trapsess lines say.
void sendToSinks(netsnmp_variable_list &variables);

} // namespace ipmib::agent
