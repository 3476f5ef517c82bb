// SPDX-License-Identifier: BSD-3-Clause
// linkDown and linkUp of IF-MIB, at the moment at which the platform tells of the change.
#pragma once

#include "config_line.h"
#include "context_server.h"

#include <ipmib/platform_hooks.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

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
    // Is given what the notification consists of and the context that it is of. Its identifier comes first, or second
    // behind the sysUpTime of a device that has its own.
    using Send = std::function<void(netsnmp_variable_list &, const std::string &context)>;

    // All outlive it. The platform tells nobody else of its links. The device without a context is told from the
    // start.
    LinkNotifications(const IpmibPlatformHooks *platform, host::Instances &instances,
                      const LinkNotificationSettings &settings, Send send);
    ~LinkNotifications();
    LinkNotifications(const LinkNotifications &) = delete;
    LinkNotifications &operator=(const LinkNotifications &) = delete;

    // From now on links of this context are told, too; once is enough.
    void begin(const Context &context);
    // No more. Before its instance ends.
    void end(const std::string &context);

    // A change in a context that has begun. That of another one than the first waits until the platform has worked.
    void take(const std::string &context, const IpmibLinkChange &change, Clock::time_point now);
    // Tells what has been taken, and how the links are that were silent for a while; as often as something may have
    // become due.
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
    struct Place {
        LinkNotifications *owner;
        Context context;
        std::map<std::uint32_t, Link> links; // by ifIndex
    };
    struct Taken {
        Place *place;
        IpmibLinkChange change;
        Clock::time_point when;
    };

    void listen(Place &place, bool listens);
    void take(Place &place, const IpmibLinkChange &change, Clock::time_point now);
    void tell(Place &place, const IpmibLinkChange &change, Clock::time_point now);
    bool tellWaiting(Place &place, Clock::time_point now);
    void refill(Link &link, Clock::time_point now) const;
    void send(const Place &place, Link &link, const IpmibLinkChange &change);
    void setAlarm(timeval wait); // sooner or later than the one that is set

    const IpmibPlatformHooks *platform_;
    host::Instances &instances_;
    const LinkNotificationSettings &settings_;
    Send send_;
    std::map<std::string, Place> places_; // by context; the platform has pointers to them
    std::vector<Taken> taken_;
    unsigned alarm_ = 0;
};

} // namespace ipmib::agent
