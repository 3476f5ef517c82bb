// SPDX-License-Identifier: BSD-3-Clause
// The library sends again what is not answered; that nothing is waited for longer is this file's affair: packets that
// belong to no request, in any number, must not keep it from giving up.
#include <ipmib/mib_tree.h> // net-snmp's macros take some of its names, so it must have been read before them

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/library/large_fd_set.h>

#include "client_session.h"

#include "host/plugin.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace ipmib::agentcheck
{
namespace
{

using Clock = std::chrono::steady_clock;

netsnmp_session peer; // what the command line says; its strings live as long as the process

std::vector<oid> libraryName(const Name &name)
{
    return {name.begin(), name.end()};
}

Name ourName(const oid *ids, std::size_t count)
{
    Name name(count);
    std::transform(ids, ids + count, name.begin(), [](oid id) { return static_cast<host::SubId>(id); });
    return name;
}

Value valueOf(const netsnmp_variable_list &variable)
{
    Value value;
    value.tag = static_cast<Tag>(variable.type);
    switch (value.tag) {
    case Tag::integer:
    case Tag::counter32:
    case Tag::unsigned32:
    case Tag::timeTicks:
        value.number = static_cast<std::uint32_t>(*variable.val.integer);
        break;
    case Tag::counter64:
        value.number =
            std::uint64_t{variable.val.counter64->high} << 32 | static_cast<std::uint32_t>(variable.val.counter64->low);
        break;
    case Tag::octets:
    case Tag::ipAddress:
        value.octets.assign(variable.val.string, variable.val.string + variable.val_len);
        break;
    case Tag::objectId:
        value.objectId = ourName(variable.val.objid, variable.val_len / sizeof(oid));
        break;
    default:
        break;
    }
    return value;
}

void addValue(netsnmp_pdu *pdu, const Variable &variable)
{
    const std::vector<oid> name = libraryName(variable.name);
    const Value &value = variable.value;
    const auto type = static_cast<u_char>(value.tag);
    if (value.tag == Tag::octets || value.tag == Tag::ipAddress) {
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, value.octets.data(), value.octets.size());
    } else if (value.tag == Tag::objectId) {
        const std::vector<oid> objectId = libraryName(value.objectId);
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, objectId.data(), objectId.size() * sizeof(oid));
    } else if (value.tag == Tag::counter64) {
        const counter64 number{static_cast<u_long>(value.number >> 32), static_cast<std::uint32_t>(value.number)};
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, &number, sizeof number);
    } else {
        const bool isSigned = value.tag == Tag::integer;
        const auto word = static_cast<std::uint32_t>(value.number);
        const long number = isSigned ? static_cast<long>(static_cast<std::int32_t>(word)) : static_cast<long>(word);
        snmp_pdu_add_variable(pdu, name.data(), name.size(), type, &number, sizeof number);
    }
}

netsnmp_pdu *request(int command, const std::vector<Name> &names)
{
    netsnmp_pdu *pdu = snmp_pdu_create(command);
    for (const Name &name : names) {
        const std::vector<oid> ids = libraryName(name);
        snmp_add_null_var(pdu, ids.data(), ids.size());
    }
    return pdu;
}

long libraryVersion(Version version)
{
    return version == Version::v1 ? SNMP_VERSION_1 : version == Version::v2c ? SNMP_VERSION_2c : SNMP_VERSION_3;
}

void *openSession(long version)
{
    netsnmp_session wanted = peer;
    wanted.version = version;
    void *handle = snmp_sess_open(&wanted);
    if (handle == nullptr) {
        char *text = nullptr;
        snmp_error(&wanted, nullptr, nullptr, &text);
        const std::string why = text == nullptr ? "no session" : text;
        std::free(text);
        throw NoAnswer(ClientSession::agent() + ": " + why);
    }
    return handle;
}

} // namespace

std::string errorText(long error)
{
    return snmp_errstring(static_cast<int>(error));
}

void Pace::wait()
{
    const auto now = Clock::now();
    if (next_ > now) {
        std::this_thread::sleep_until(next_);
    }
    next_ = std::max(now, next_) + between_;
}

void ClientSession::readCommandLine(int argc, char **argv)
{
    setenv("MIBS", "", 0); // names are the catalogue's affair
    const int place = snmp_parse_args(argc, argv, &peer, "", nullptr);
    if (place < 0) {
        throw host::UsageError("see ipmib-agentcheck --help, and snmpcmd(1) for the options of the SNMP library");
    }
    if (place < argc) {
        throw host::UsageError(std::string("unexpected argument ") + argv[place]);
    }
}

std::string ClientSession::agent()
{
    return peer.peername == nullptr ? "" : peer.peername;
}

ClientSession::ClientSession(Pace &pace) : pace_(pace), handle_(openSession(peer.version)) {}

ClientSession::ClientSession(Pace &pace, Version version) : pace_(pace), handle_(openSession(libraryVersion(version)))
{
}

ClientSession::~ClientSession()
{
    snmp_sess_close(handle_);
}

Version ClientSession::version() const
{
    const long version = snmp_sess_session(handle_)->version;
    return version == SNMP_VERSION_1 ? Version::v1 : version == SNMP_VERSION_2c ? Version::v2c : Version::v3;
}

std::string ClientSession::versionText() const
{
    return version() == Version::v1 ? "SNMPv1" : version() == Version::v2c ? "SNMPv2c" : "SNMPv3";
}

Answer ClientSession::get(const std::vector<Name> &names)
{
    return ask(request(SNMP_MSG_GET, names));
}

Answer ClientSession::getNext(const std::vector<Name> &names)
{
    return ask(request(SNMP_MSG_GETNEXT, names));
}

Answer ClientSession::getBulk(const std::vector<Name> &names, int nonRepeaters, int maxRepetitions)
{
    netsnmp_pdu *pdu = request(SNMP_MSG_GETBULK, names);
    pdu->non_repeaters = nonRepeaters;
    pdu->max_repetitions = maxRepetitions;
    return ask(pdu);
}

Answer ClientSession::set(const Variable &variable)
{
    netsnmp_pdu *pdu = snmp_pdu_create(SNMP_MSG_SET);
    addValue(pdu, variable);
    return ask(pdu);
}

// The request that is waited for.
struct ClientSession::Pending {
    int id = 0;
    bool isDone = false;
    Answer answer;

    static int receive(int operation, netsnmp_session *, int id, netsnmp_pdu *pdu, void *pending)
    {
        auto &self = *static_cast<Pending *>(pending);
        if (id != self.id && pdu->command != SNMP_MSG_REPORT) {
            return 1;
        }
        self.isDone = operation != NETSNMP_CALLBACK_OP_RESEND && operation != NETSNMP_CALLBACK_OP_CONNECT;
        if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE && pdu->command == SNMP_MSG_RESPONSE) {
            self.answer.isThere = true;
            self.answer.error = pdu->errstat;
            self.answer.errorIndex = static_cast<std::size_t>(std::max(0L, pdu->errindex));
            for (const auto *variable = pdu->variables; variable != nullptr; variable = variable->next_variable) {
                self.answer.variables.push_back({ourName(variable->name, variable->name_length), valueOf(*variable)});
            }
        }
        return 1;
    }
};

Answer ClientSession::ask(void *message)
{
    auto *pdu = static_cast<netsnmp_pdu *>(message);
    pace_.wait();
    // The library keeps a request that was given up until its own time is over.
    static Pending pending;
    pending = {};
    pending.id = snmp_sess_async_send(handle_, pdu, &Pending::receive, &pending);
    if (pending.id == 0) {
        snmp_free_pdu(pdu);
        return {};
    }
    const netsnmp_session &session = *snmp_sess_session(handle_);
    const auto deadline =
        Clock::now() + std::chrono::seconds(1) + std::chrono::microseconds(session.timeout) * (session.retries + 1);
    while (!pending.isDone && Clock::now() < deadline) {
        netsnmp_large_fd_set sockets;
        netsnmp_large_fd_set_init(&sockets, FD_SETSIZE);
        NETSNMP_LARGE_FD_ZERO(&sockets);
        int count = 0;
        int block = 0;
        timeval patience{1, 0};
        snmp_sess_select_info2(handle_, &count, &sockets, &patience, &block);
        if (block != 0) {
            patience = {1, 0};
        }
        if (netsnmp_large_fd_set_select(count, &sockets, nullptr, nullptr, &patience) > 0) {
            snmp_sess_read2(handle_, &sockets);
        }
        snmp_sess_timeout(handle_);
        netsnmp_large_fd_set_cleanup(&sockets);
    }
    return pending.answer;
}

} // namespace ipmib::agentcheck
