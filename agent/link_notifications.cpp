// SPDX-License-Identifier: BSD-3-Clause
#include "link_notifications.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>
#include <utility>
#include <vector>

namespace ipmib::agent
{
namespace
{

constexpr oid sysUpTime[] = {1, 3, 6, 1, 2, 1, 1, 3, 0};
constexpr oid vacmContextName[] = {1, 3, 6, 1, 6, 3, 16, 1, 1, 1, 1};
constexpr oid snmpTrapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
constexpr oid linkDown[] = {1, 3, 6, 1, 6, 3, 1, 1, 5, 3};
constexpr oid linkUp[] = {1, 3, 6, 1, 6, 3, 1, 1, 5, 4};
constexpr oid ifEntry[] = {1, 3, 6, 1, 2, 1, 2, 2, 1};
constexpr oid ifIndexColumn = 1;
constexpr oid ifAdminStatusColumn = 7;
constexpr oid ifOperStatusColumn = 8;

constexpr timeval atOnce{0, 1};
constexpr timeval aWhile{1, 0};

// One whose lower layer is down does not carry anything either.
bool isDown(std::uint32_t operStatus)
{
    return operStatus == IPMIB_OPER_DOWN || operStatus == IPMIB_OPER_LOWER_LAYER_DOWN;
}

bool isPresent(std::uint32_t operStatus)
{
    return operStatus != 0 && operStatus != IPMIB_OPER_NOT_PRESENT;
}

class NotificationVariables
{
  public:
    NotificationVariables() = default;
    ~NotificationVariables() { snmp_free_varbind(first_); }
    NotificationVariables(const NotificationVariables &) = delete;
    NotificationVariables &operator=(const NotificationVariables &) = delete;

    void addIdentifier(std::span<const oid> name, std::span<const oid> value)
    {
        snmp_varlist_add_variable(&first_, name.data(), name.size(), ASN_OBJECT_ID, value.data(), value.size_bytes());
    }
    void addColumn(oid column, std::uint32_t ifIndex, std::uint32_t value)
    {
        oid name[std::size(ifEntry) + 2];
        *std::ranges::copy(ifEntry, name).out = column;
        name[std::size(ifEntry) + 1] = ifIndex;
        const long number = static_cast<long>(value);
        snmp_varlist_add_variable(&first_, name, std::size(name), ASN_INTEGER, &number, sizeof number);
    }
    void addTicks(std::span<const oid> name, std::uint64_t milliseconds)
    {
        constexpr std::uint64_t msPerTick = 10;
        const u_long ticks = milliseconds / msPerTick & UINT32_MAX;
        snmp_varlist_add_variable(&first_, name.data(), name.size(), ASN_TIMETICKS, &ticks, sizeof ticks);
    }
    void addContext(const std::string &context)
    {
        std::vector<oid> name(std::begin(vacmContextName), std::end(vacmContextName));
        name.push_back(context.size());
        for (const char letter : context) {
            name.push_back(static_cast<unsigned char>(letter));
        }
        snmp_varlist_add_variable(&first_, name.data(), name.size(), ASN_OCTET_STR, context.data(), context.size());
    }
    netsnmp_variable_list &get() { return *first_; }

  private:
    netsnmp_variable_list *first_ = nullptr;
};

} // namespace

LinkNotificationSettings::LinkNotificationSettings(const char *fileType, const char *word)
    : line_(*this, fileType, word, "no | all | COUNT SECONDS")
{
}

void LinkNotificationSettings::forget()
{
    areSent_ = true;
    count_ = usualCount;
    seconds_ = usualSeconds;
}

std::string LinkNotificationSettings::read(const std::string &line)
{
    std::istringstream words(line);
    const std::vector<std::string> all{std::istream_iterator<std::string>(words), {}};
    if (all.size() == 1 && (all[0] == "no" || all[0] == "all")) {
        areSent_ = all[0] == "all";
        count_ = 0;
        return "";
    }
    constexpr unsigned most = 1'000'000;
    unsigned numbers[2] = {0, 0};
    for (std::size_t i = 0; i < all.size() && i < std::size(numbers); ++i) {
        const char *const last = all[i].data() + all[i].size();
        const auto [end, error] = std::from_chars(all[i].data(), last, numbers[i]);
        numbers[i] = error == std::errc() && end == last && numbers[i] <= most ? numbers[i] : 0;
    }
    if (all.size() != std::size(numbers) || numbers[0] == 0 || numbers[1] == 0) {
        return "\"" + line + "\" is neither no nor all nor a number of notifications and of seconds";
    }
    areSent_ = true;
    count_ = numbers[0];
    seconds_ = numbers[1];
    return "";
}

LinkNotifications::LinkNotifications(const IpmibPlatformHooks *platform, host::Instances &instances,
                                     const LinkNotificationSettings &settings, Send send)
    : platform_(platform), instances_(instances), settings_(settings), send_(std::move(send))
{
    begin({});
}

LinkNotifications::~LinkNotifications()
{
    for (auto &[context, place] : places_) {
        listen(place, false);
    }
    if (alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
    }
}

void LinkNotifications::begin(const Context &context)
{
    const auto [found, isNew] = places_.try_emplace(context.name, Place{this, context, {}});
    if (isNew) {
        listen(found->second, true);
    }
}

void LinkNotifications::end(const std::string &context)
{
    const auto found = places_.find(context);
    if (found != places_.end()) {
        Place *const place = &found->second;
        listen(*place, false);
        std::erase_if(taken_, [place](const Taken &each) { return each.place == place; });
        places_.erase(found);
    }
}

void LinkNotifications::listen(Place &place, bool listens)
{
    if (platform_ == nullptr || platform_->on_link_change == nullptr) {
        return;
    }
    instances_.select(place.context.instance);
    if (!listens) {
        platform_->on_link_change(nullptr, nullptr);
        return;
    }
    platform_->on_link_change(
        [](void *to, const IpmibLinkChange *change) {
            auto &listening = *static_cast<Place *>(to);
            listening.owner->take(listening, *change, Clock::now());
        },
        &place);
}

void LinkNotifications::take(const std::string &context, const IpmibLinkChange &change, Clock::time_point now)
{
    take(places_.at(context), change, now);
}

// Within a hook of the platform no other may be called, and what is sent of a context may take its sysUpTime.
void LinkNotifications::take(Place &place, const IpmibLinkChange &change, Clock::time_point now)
{
    if (place.context.name.empty()) {
        tell(place, change, now);
    } else {
        taken_.push_back({&place, change, now});
        setAlarm(atOnce);
    }
}

void LinkNotifications::tell(Place &place, const IpmibLinkChange &change, Clock::time_point now)
{
    if (!isPresent(change.oper_status)) {
        place.links.erase(change.if_index);
        return;
    }
    if (!settings_.areSent() || !isPresent(change.before) || isDown(change.before) == isDown(change.oper_status)) {
        return;
    }
    const auto [found, isNew] = place.links.try_emplace(change.if_index);
    Link &link = found->second;
    if (isNew) {
        link.left = settings_.count();
        link.counted = now;
        link.toldDown = isDown(change.before);
    }
    refill(link, now);
    link.latest = change;
    if (settings_.count() == 0 || (!link.waits && link.left >= 1)) {
        link.waits = false;
        send(place, link, change);
        return;
    }
    if (!link.waits) {
        link.waits = true;
        const std::string &context = place.context.name;
        snmp_log(LOG_WARNING, "interface %u%s%s goes up and down too often, its notifications are held back\n",
                 change.if_index, context.empty() ? "" : " of context ", context.c_str());
    }
    if (alarm_ == 0) {
        setAlarm(aWhile);
    }
}

void LinkNotifications::tellWaiting(Clock::time_point now)
{
    for (const Taken &each : std::exchange(taken_, {})) {
        tell(*each.place, each.change, each.when);
    }
    bool anyWaits = false;
    for (auto &[context, place] : places_) {
        anyWaits = tellWaiting(place, now) || anyWaits;
    }
    if (anyWaits && alarm_ == 0) {
        setAlarm(aWhile);
    }
}

bool LinkNotifications::tellWaiting(Place &place, Clock::time_point now)
{
    bool anyWaits = false;
    for (auto &[ifIndex, link] : place.links) {
        refill(link, now);
        if (link.waits && (settings_.count() == 0 || link.left >= 1)) {
            link.waits = false;
            if (isDown(link.latest.oper_status) != link.toldDown) {
                send(place, link, link.latest);
            }
        }
        anyWaits = anyWaits || link.waits;
    }
    return anyWaits;
}

void LinkNotifications::refill(Link &link, Clock::time_point now) const
{
    const double passed = std::chrono::duration<double>(now - link.counted).count();
    const double most = settings_.count();
    link.left = std::min(most, link.left + passed * most / settings_.seconds());
    link.counted = now;
}

void LinkNotifications::send(const Place &place, Link &link, const IpmibLinkChange &change)
{
    const bool down = isDown(change.oper_status);
    const std::string &context = place.context.name;
    NotificationVariables variables;
    if (!context.empty() && platform_ != nullptr && platform_->uptime_ms != nullptr) {
        instances_.select(place.context.instance);
        variables.addTicks(sysUpTime, platform_->uptime_ms());
    }
    variables.addIdentifier(snmpTrapOid, down ? std::span<const oid>(linkDown) : linkUp);
    variables.addColumn(ifIndexColumn, change.if_index, change.if_index);
    variables.addColumn(ifAdminStatusColumn, change.if_index, change.admin_status);
    variables.addColumn(ifOperStatusColumn, change.if_index, change.oper_status);
    if (!context.empty()) {
        variables.addContext(context);
    }
    link.left -= 1;
    link.toldDown = down;
    send_(variables.get(), context);
}

void LinkNotifications::setAlarm(timeval wait)
{
    if (alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
    }
    alarm_ = snmp_alarm_register_hr(
        wait, 0,
        [](unsigned, void *self) {
            auto &notifications = *static_cast<LinkNotifications *>(self);
            notifications.alarm_ = 0;
            notifications.tellWaiting(Clock::now());
        },
        this);
}

} // namespace ipmib::agent
