// SPDX-License-Identifier: BSD-3-Clause
#include "notification_sinks.h"

#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/snmpUDPDomain.h>

#include <algorithm>
#include <utility>

namespace ipmib::agent
{
namespace
{

bool hasCommunity(const netsnmp_session &session)
{
    return session.version == SNMP_VERSION_1 || session.version == SNMP_VERSION_2c;
}

// In which context the library would have somebody ask who is where the session leads to.
std::string contextOfAsker(netsnmp_session &session, const std::string &community)
{
    const netsnmp_transport *const transport = snmp_sess_transport(snmp_sess_pointer(&session));
    const char *name = nullptr;
    const char *context = nullptr;
    if (transport != nullptr) {
        netsnmp_udp_getSecName(transport->data, transport->data_length, community.data(), community.size(), &name,
                               &context);
    }
    return name == nullptr || context == nullptr ? "" : context;
}

} // namespace

NotificationSinks::NotificationSinks(const ContextSettings &settings) : settings_(settings)
{
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_REGISTER_NOTIFICATIONS, takeSession, this);
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, forgetSessions, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_SEND_TRAP1, sendVersion1, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_SEND_TRAP2, sendLater, this);
}

NotificationSinks::~NotificationSinks()
{
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_SEND_TRAP2, sendLater, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_SEND_TRAP1, sendVersion1, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, forgetSessions, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_REGISTER_NOTIFICATIONS, takeSession, this, 1);
    closeAll();
}

void NotificationSinks::send(netsnmp_variable_list &variables, const std::string &context)
{
    context_ = context;
    send_v3trap(&variables, context.empty() ? nullptr : context.c_str());
    context_.clear();
}

int NotificationSinks::takeSession(int, int, void *arguments, void *self)
{
    auto &given = *static_cast<agent_add_trap_args *>(arguments);
    static_cast<NotificationSinks *>(self)->sinks_.push_back({given.ss, given.confirm != 0});
    given.rc = SNMPERR_SUCCESS;
    return SNMPERR_SUCCESS;
}

int NotificationSinks::forgetSessions(int, int, void *, void *self)
{
    static_cast<NotificationSinks *>(self)->closeAll();
    return SNMPERR_SUCCESS;
}

void NotificationSinks::closeAll()
{
    for (const Sink &sink : std::exchange(sinks_, {})) {
        snmp_close(sink.session);
    }
}

int NotificationSinks::sendVersion1(int, int, void *notification, void *self)
{
    const auto &sinks = *static_cast<const NotificationSinks *>(self);
    for (const Sink &sink : sinks.sinks_) {
        if (sink.session->version == SNMP_VERSION_1) {
            sinks.sendTo(sink, *static_cast<netsnmp_pdu *>(notification), sinks.context_);
        }
    }
    return SNMPERR_SUCCESS;
}

// A sub-agent of ours may have named a context, too.
int NotificationSinks::sendLater(int, int, void *notification, void *self)
{
    const auto &sinks = *static_cast<const NotificationSinks *>(self);
    auto &pdu = *static_cast<netsnmp_pdu *>(notification);
    const std::string context(pdu.contextName == nullptr ? "" : pdu.contextName, pdu.contextNameLen);
    for (const Sink &sink : sinks.sinks_) {
        if (sink.session->version != SNMP_VERSION_1) {
            pdu.command = sink.isConfirmed ? SNMP_MSG_INFORM : SNMP_MSG_TRAP2;
            sinks.sendTo(sink, pdu, context);
        }
    }
    return SNMPERR_SUCCESS;
}

// The library makes a copy for each session, which takes the notification's community before its own.
void NotificationSinks::sendTo(const Sink &sink, netsnmp_pdu &notification, const std::string &context) const
{
    if (!hasCommunity(*sink.session)) {
        send_trap_to_sess(sink.session, &notification);
        return;
    }
    std::optional<std::string> community = communityFor(*sink.session, context);
    if (community) {
        const auto octets = std::exchange(notification.community, reinterpret_cast<u_char *>(community->data()));
        const std::size_t length = std::exchange(notification.community_len, community->size());
        send_trap_to_sess(sink.session, &notification);
        notification.community = octets;
        notification.community_len = length;
    }
}

// By which somebody with the community of this sink would ask in the context: none when there is no way.
std::optional<std::string> NotificationSinks::communityFor(netsnmp_session &session, const std::string &context) const
{
    const std::string own(reinterpret_cast<const char *>(session.community), session.community_len);
    const auto standsFor = [this](const std::string &community, const std::string &which) {
        return std::ranges::any_of(settings_.communities(), [&](const ContextSettings::Community &line) {
            return line.community == community && line.includes(which);
        });
    };
    std::string asksIn = contextOfAsker(session, own);
    const std::size_t at = own.find('@');
    if (asksIn.empty() && at != std::string::npos && standsFor(own.substr(0, at), own.substr(at + 1))) {
        asksIn = own.substr(at + 1);
    }
    if (asksIn == context) {
        return own;
    }
    return asksIn.empty() && standsFor(own, context) ? std::optional(own + "@" + context) : std::nullopt;
}

} // namespace ipmib::agent
