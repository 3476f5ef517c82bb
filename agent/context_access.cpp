// SPDX-License-Identifier: BSD-3-Clause
// Sources are the library's affair: each line has an entry of com2sec of its own, with a security name that is in no
// group, so nobody gets a right by it.

#include "context_access.h"

#include "answer_size.h"
#include "device_addresses.h"
#include "library_context.h"

#include <net-snmp/agent/agent_callbacks.h>
#include <net-snmp/library/snmpTCPDomain.h>
#include <net-snmp/library/snmpTCPIPv6Domain.h>
#include <net-snmp/library/snmpUDPDomain.h>
#include <net-snmp/library/snmpUDPIPv6Domain.h>

#include <cstdlib>
#include <cstring>
#include <utility>

// The libraries export them and declare them in none of their installed headers.
extern "C" {
void init_vacm_context(void); // vacmContextTable
int vacm_in_view_callback(int major, int minor, void *parameters, void *unused);
}

namespace ipmib::agent
{
namespace
{

// The library has a cache of places for each context, and goes through a list of the caches; without any, it goes
// through the tables of the one context.
constexpr std::size_t mostWithCaches = 8;

constexpr int checks[] = {SNMPD_CALLBACK_ACM_CHECK, SNMPD_CALLBACK_ACM_CHECK_INITIAL, SNMPD_CALLBACK_ACM_CHECK_SUBTREE};

// Of the entry of com2sec of a line: its community and its security name.
std::string sourceOf(std::size_t line)
{
    return "contextcommunity" + std::to_string(line + 1);
}

void nameContext(netsnmp_pdu &packet, const std::string &context)
{
    if (packet.contextName == nullptr || context != packet.contextName) {
        std::free(packet.contextName);
        packet.contextName = strdup(context.c_str());
        packet.contextNameLen = context.size();
    }
}

} // namespace

ContextAccess::ContextAccess(const ContextSettings &settings, Listing listing) : settings_(settings), listing_(listing)
{
    for (const int each : checks) {
        snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, each, vacm_in_view_callback, nullptr, 0);
        snmp_register_callback(SNMP_CALLBACK_APPLICATION, each, check, this);
    }
    renew();
}

ContextAccess::~ContextAccess()
{
    for (const int each : checks) {
        snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, each, check, this, 1);
        snmp_register_callback(SNMP_CALLBACK_APPLICATION, each, vacm_in_view_callback, nullptr);
    }
}

void ContextAccess::add(const std::string &context)
{
    contexts_.insert(context);
    if (contexts_.size() == mostWithCaches) {
        netsnmp_set_lookup_cache_size(0);
    }
    if (std::exchange(listing_, Listing::agents) == Listing::ours) {
        init_vacm_context();
    }
}

void ContextAccess::renew()
{
    if (renewed_ == settings_.version()) {
        return;
    }
    renewed_ = settings_.version();
    for (std::size_t i = 0; i < settings_.communities().size(); ++i) {
        const std::string &source = settings_.communities()[i].source;
        const bool isAnywhere = source.empty() || source == "default";
        const std::string line = sourceOf(i) + " " + (isAnywhere ? "default" : source) + " " + sourceOf(i);
        const bool isIpv6 = source.find(':') != std::string::npos;
        if (std::string copy = line; !isIpv6) {
            netsnmp_udp_parse_security("com2sec", copy.data());
        }
        if (std::string copy = line; isIpv6 || isAnywhere) {
            netsnmp_udp6_parse_security("com2sec6", copy.data());
        }
    }
}

// A packet that is let in may see everything in its context, and change nothing.
int ContextAccess::check(int major, int minor, void *parameters, void *self)
{
    auto &asked = *static_cast<view_parameters *>(parameters);
    const std::string *const context = static_cast<const ContextAccess *>(self)->admits(*asked.pdu);
    if (context == nullptr) {
        if (const std::string *own = DeviceAddresses::contextAt(*asked.pdu)) {
            return checkAt(*own, major, minor, asked);
        }
        const int result = vacm_in_view_callback(major, minor, parameters, nullptr);
        if (minor == SNMPD_CALLBACK_ACM_CHECK_INITIAL && asked.pdu->contextName != nullptr) {
            bringToFront(asked.pdu->contextName);
        }
        return result;
    }
    if (minor == SNMPD_CALLBACK_ACM_CHECK_INITIAL) {
        nameContext(*asked.pdu, *context);
        bringToFront(*context);
    } else if (asked.pdu->command == SNMP_MSG_SET) {
        asked.errorcode = VACM_NOTINVIEW;
    }
    return asked.errorcode;
}

// At the address of a device there is its context and no other, whoever may ask in others elsewhere.
int ContextAccess::checkAt(const std::string &own, int major, int minor, view_parameters &asked)
{
    netsnmp_pdu &packet = *asked.pdu;
    if (packet.version == SNMP_VERSION_3 && packet.contextNameLen == 0) {
        nameContext(packet, own);
        packet.flags |= contextIsImplied;
    }
    const bool isOther = packet.contextName == nullptr || own != packet.contextName;
    if (packet.version == SNMP_VERSION_3 && isOther) {
        return asked.errorcode = VACM_NOSUCHCONTEXT;
    }
    const int result = vacm_in_view_callback(major, minor, &asked, nullptr); // names the context of a community
    if (packet.contextName == nullptr || own != packet.contextName) {
        return asked.errorcode = VACM_NOSECNAME;
    }
    bringToFront(own);
    return result;
}

const std::string *ContextAccess::admits(const netsnmp_pdu &packet) const
{
    if ((packet.version != SNMP_VERSION_1 && packet.version != SNMP_VERSION_2c) || packet.community == nullptr) {
        return nullptr;
    }
    const std::string_view community(reinterpret_cast<const char *>(packet.community), packet.community_len);
    const std::string *const own = DeviceAddresses::contextAt(packet);
    for (std::size_t i = 0; i < settings_.communities().size(); ++i) {
        const std::string *context = admits(settings_.communities()[i], community, own);
        if (context != nullptr && isFrom(i, packet)) {
            return context;
        }
    }
    return nullptr;
}

const std::string *ContextAccess::admits(const ContextSettings::Community &line, std::string_view community,
                                         const std::string *own) const
{
    if (own != nullptr) {
        return community == line.community && line.includes(*own) ? own : nullptr;
    }
    const std::size_t at = line.community.size();
    if (community.size() <= at || community[at] != '@' || !community.starts_with(line.community)) {
        return nullptr;
    }
    const auto found = contexts_.find(community.substr(at + 1));
    return found != contexts_.end() && line.includes(*found) ? &*found : nullptr;
}

bool ContextAccess::isFrom(std::size_t line, const netsnmp_pdu &packet) const
{
    const std::string wanted = sourceOf(line);
    const auto is = [&](const oid *domain, const oid *other) {
        return packet.tDomain == domain || packet.tDomain == other;
    };
    const char *name = nullptr;
    const char *context = nullptr;
    void *const from = packet.transport_data;
    const int length = packet.transport_data_length;
    if (is(netsnmpUDPDomain, netsnmp_snmpTCPDomain)) {
        netsnmp_udp_getSecName(from, length, wanted.data(), wanted.size(), &name, &context);
    } else if (is(netsnmp_UDPIPv6Domain, netsnmp_TCPIPv6Domain)) {
        netsnmp_udp6_getSecName(from, length, wanted.data(), static_cast<int>(wanted.size()), &name, &context);
    }
    return name != nullptr && wanted == name;
}

} // namespace ipmib::agent
