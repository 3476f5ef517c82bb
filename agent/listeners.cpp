// SPDX-License-Identifier: BSD-3-Clause
// Opens transports and hands what they receive to the agent library, except for what would write.

#include "listeners.h"

#include "answer_size.h"
#include "datagrams.h"
#include "stream_clients.h"

#include <net-snmp/library/snmpTLSTCPDomain.h>

#include <fcntl.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ipmib::agent
{

namespace
{

// What a datagram over IPv4 can carry; the library promises more than that.
constexpr std::size_t largestMessage = 65507;

constexpr const char *loopbackAddresses[] = {"udp:127.0.0.1:161", "udp6:[::1]:161"};

// Counts a packet as the library's own listener does. That one also asks the TCP wrappers, which reads two files for
// each packet, under snmpd's name.
int beforeParsing(netsnmp_session *, netsnmp_transport *, void *, int)
{
    snmp_increment_statistic(STAT_SNMPINPKTS);
    return 1;
}

// Nothing is waited for: no client, and no datagram that turns out to be none after it has been announced.
void prepare(netsnmp_transport &transport)
{
    if (transport.domain == netsnmpTLSTCPDomain) {
        throw std::runtime_error("TLS over TCP would have to wait for its clients; there is dtlsudp");
    }
    fcntl(transport.sock, F_SETFL, fcntl(transport.sock, F_GETFL) | O_NONBLOCK);
    if ((transport.flags & NETSNMP_TRANSPORT_FLAG_LISTEN) != 0) {
        StreamClients::all().takeCharge(transport, largestMessage);
    } else {
        Datagrams::all().takeCharge(transport);
    }
}

// Why a transport could not be opened. The library leaves it in errno where a system call failed, and something without
// a meaning where it could not make sense of the address.
std::string reasonOf(int error)
{
    switch (error) {
    case EACCES:
    case EADDRINUSE:
    case EADDRNOTAVAIL:
    case EAFNOSUPPORT:
    case ENOENT:
    case EPERM:
        return std::generic_category().message(error);
    default:
        return "not an address that can be listened on";
    }
}

// A write is refused before anything looks at it: nothing here can be written, whatever the configuration permits. The
// access check tells who may speak at all from who is not answered.
bool refuses(const netsnmp_session &session, netsnmp_pdu &request)
{
    return request.command == SNMP_MSG_SET && request.variables != nullptr &&
           session.s_snmp_errno != SNMPERR_USM_AUTHENTICATIONFAILURE && check_access(&request) == 0;
}

void refuse(netsnmp_session &session, netsnmp_pdu &request)
{
    snmp_increment_statistic(STAT_SNMPINSETREQUESTS);
    netsnmp_pdu *reply = snmp_clone_pdu(&request);
    if (reply == nullptr) {
        return;
    }
    reply->command = SNMP_MSG_RESPONSE;
    reply->errstat = request.version == SNMP_VERSION_1 ? SNMP_ERR_NOSUCHNAME : SNMP_ERR_NOTWRITABLE;
    reply->errindex = 1;
    if (snmp_send(&session, reply) == 0) {
        snmp_free_pdu(reply);
        return;
    }
    snmp_increment_statistic(STAT_SNMPOUTPKTS);
    snmp_increment_statistic(STAT_SNMPOUTGETRESPONSES);
}

int receive(int operation, netsnmp_session *session, int requestId, netsnmp_pdu *pdu, void *magic)
{
    if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) {
        return 1;
    }
    const AnswersTo request(*session, *pdu);
    if (refuses(*session, *pdu)) {
        refuse(*session, *pdu);
        return 1;
    }
    return handle_snmp_packet(operation, session, requestId, pdu, magic);
}

} // namespace

Listeners::Listeners(const std::vector<std::string> &addresses)
{
    for (const std::string &address : addresses) {
        open(address);
    }
    if (!addresses.empty()) {
        return;
    }
    std::string refused;
    for (const char *address : loopbackAddresses) {
        try {
            open(address);
        } catch (const std::runtime_error &error) {
            if (!refused.empty()) {
                throw std::runtime_error(refused + "; " + error.what());
            }
            refused = error.what();
        }
    }
    if (!refused.empty()) {
        snmp_log(LOG_WARNING, "%s, going on without it\n", refused.c_str());
    }
}

void Listeners::open(const std::string &address)
{
    const auto fail = [&](const std::string &reason) {
        throw std::runtime_error("cannot listen on " + address + ": " + reason);
    };
    errno = 0;
    netsnmp_transport *transport = netsnmp_transport_open_server("snmp", address.c_str());
    if (transport == nullptr) {
        fail(reasonOf(errno));
    }
    try {
        prepare(*transport);
    } catch (const std::runtime_error &error) {
        netsnmp_transport_free(transport);
        fail(error.what());
    }
    add(transport, address);
}

void Listeners::add(netsnmp_transport *transport, const std::string &address)
{
    const auto fail = [&](const std::string &reason) {
        throw std::runtime_error("cannot listen on " + address + ": " + reason);
    };
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_DEFAULT_VERSION;
    session.callback = receive;
    session.sndMsgMaxSize = session.rcvMsgMaxSize = largestMessage;
    session.isAuthoritative = SNMP_SESS_AUTHORITATIVE;
    if (netsnmp_sess_config_and_open_transport(&session, transport) != SNMPERR_SUCCESS) {
        fail("the transport could not be configured"); // the library has freed it
    }
    netsnmp_session *added =
        snmp_add_full(&session, transport, beforeParsing, nullptr, nullptr, nullptr, buildMessage, nullptr, nullptr);
    if (added == nullptr) {
        fail(snmp_api_errstring(snmp_errno));
    }
    sessions_.add(added);
}

} // namespace ipmib::agent
