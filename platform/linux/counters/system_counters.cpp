// SPDX-License-Identifier: BSD-3-Clause
// The counters of this network namespace.
#include "counters/system_counters.h"

#include "core/log.h"

#include <cstring>
#include <utility>

namespace ipmib::platform
{
namespace
{

using Text = Ipv4CounterText;
using Values = Ipv4CounterText::Values;

void setCounted(IpmibIpCounters &counters, unsigned which, std::uint64_t value)
{
    counters.value[which] = value;
    counters.counted |= std::uint64_t{1} << which;
}

void addCounted(IpmibIpCounters &counters, const Values &values)
{
    for (unsigned which = 0; which < IPMIB_IP_COUNTERS; ++which) {
        if (values.there[which]) {
            setCounted(counters, which, values.value[which]);
        }
    }
}

} // namespace

const Snmp6Counters *SystemCounters::read()
{
    if (snmp6_.read()) {
        saidUnreadable_ = false;
    } else {
        ProcFile &file = snmp6_.file();
        if (file.isAbsent()) {
            return nullptr;
        }
        if (!std::exchange(saidUnreadable_, true)) {
            logWarning("ipv6: cannot read the system's counters: %s, trying again with the next request",
                       std::strerror(file.error() != 0 ? file.error() : EIO));
        }
    }
    return kernelReads() != 0 ? &snmp6_.values() : nullptr;
}

bool Ipv4Counters::ip(IpmibIpCounters &counters)
{
    if (!snmp_.read()) {
        return false;
    }
    const std::uint64_t wanted = counters.counted;
    counters = IpmibIpCounters{};
    addCounted(counters, snmp_.values());
    const auto &value = counters.value;
    // The kernel counts what it forwards when it goes out.
    setCounted(counters, IPMIB_IP_IN_FORW_DATAGRAMS, value[IPMIB_IP_OUT_FORW_DATAGRAMS]);
    if (!snmp_.values().there[IPMIB_IP_OUT_TRANSMITS]) {
        setCounted(counters, IPMIB_IP_OUT_TRANSMITS, value[IPMIB_IP_OUT_REQUESTS] + value[IPMIB_IP_OUT_FORW_DATAGRAMS]);
    }
    setCounted(counters, IPMIB_IP_OUT_FRAG_REQDS, value[IPMIB_IP_OUT_FRAG_OKS] + value[IPMIB_IP_OUT_FRAG_FAILS]);
    // Linux keeps no cache of routes that it could drop for want of room.
    setCounted(counters, IPMIB_IP_ROUTING_DISCARDS, 0);
    if ((wanted & ~counters.counted) != 0 && netstat_.read()) {
        addCounted(counters, netstat_.values());
    }
    return true;
}

bool Ipv4Counters::icmp(IpmibIcmpCounters &counters)
{
    if (!snmp_.read()) {
        return false;
    }
    const auto &[value, there] = snmp_.values();
    counters = IpmibIcmpCounters{};
    counters.in_msgs = value[Text::icmpInMsgs];
    counters.in_errors = value[Text::icmpInErrors];
    counters.out_msgs = value[Text::icmpOutMsgs];
    counters.out_errors = value[Text::icmpOutErrors];
    for (std::size_t type = 0; type < std::size(counters.in_type); ++type) {
        counters.in_type[type] = value[Text::icmpInType + type];
        counters.out_type[type] = value[Text::icmpOutType + type];
        if (there[Text::icmpInType + type] || there[Text::icmpOutType + type]) {
            counters.listed[type / 8] = static_cast<std::uint8_t>(counters.listed[type / 8] | 1u << type % 8);
        }
    }
    return true;
}

bool Ipv4Counters::tcp(IpmibTcpCounters &counters)
{
    if (!snmp_.read()) {
        return false;
    }
    const auto &value = snmp_.values().value;
    counters = IpmibTcpCounters{};
    counters.rto_algorithm = static_cast<std::uint32_t>(value[Text::tcpRtoAlgorithm]);
    counters.rto_min_ms = static_cast<std::uint32_t>(value[Text::tcpRtoMin]);
    counters.rto_max_ms = static_cast<std::uint32_t>(value[Text::tcpRtoMax]);
    counters.max_connections = static_cast<std::int32_t>(value[Text::tcpMaxConn]);
    counters.established = static_cast<std::uint32_t>(value[Text::tcpCurrEstab]);
    counters.active_opens = value[Text::tcpActiveOpens];
    counters.passive_opens = value[Text::tcpPassiveOpens];
    counters.attempt_fails = value[Text::tcpAttemptFails];
    counters.established_resets = value[Text::tcpEstabResets];
    counters.in_segments = value[Text::tcpInSegs];
    counters.out_segments = value[Text::tcpOutSegs];
    counters.retransmitted_segments = value[Text::tcpRetransSegs];
    counters.in_errors = value[Text::tcpInErrs];
    counters.out_resets = value[Text::tcpOutRsts];
    return true;
}

bool Ipv4Counters::udp(IpmibUdpCounters &counters)
{
    if (!snmp_.read()) {
        return false;
    }
    const auto &value = snmp_.values().value;
    counters = {value[Text::udpInDatagrams], value[Text::udpNoPorts], value[Text::udpInErrors],
                value[Text::udpOutDatagrams]};
    return true;
}

} // namespace ipmib::platform
