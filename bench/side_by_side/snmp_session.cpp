// SPDX-License-Identifier: BSD-3-Clause
// One session of the SNMP library, without its own waiting.
#include "snmp_session.h"

#include <poll.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace ipmib::bench
{

namespace
{

struct Expected {
    SnmpSession::Handler handler;
    std::exception_ptr *failure; // what the handler throws must not fly through the library
};

constexpr long patienceUs = 120'000'000; // longer than anybody waits here: the library must not send twice

} // namespace

SnmpSession::SnmpSession(const std::string &peer)
{
    static char community[] = "public";
    snmp_disable_log();
    setenv("MIBS", "", 1); // nothing here has a name
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    init_snmp("ipmib-bench");
    std::string name = peer;
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_2c;
    session.peername = name.data();
    session.community = reinterpret_cast<u_char *>(community);
    session.community_len = sizeof community - 1;
    session.timeout = patienceUs;
    session.retries = 0;
    handle_ = snmp_sess_open(&session);
    if (handle_ == nullptr) {
        throw std::runtime_error("cannot reach " + peer);
    }
    descriptor_ = snmp_sess_transport(handle_)->sock;
}

SnmpSession::~SnmpSession()
{
    snmp_sess_close(handle_);
}

void SnmpSession::send(int command, const std::vector<Identifier> &names, Handler handler, long repetitions)
{
    netsnmp_pdu *request = snmp_pdu_create(command);
    if (command == SNMP_MSG_GETBULK) {
        request->non_repeaters = 0;
        request->max_repetitions = repetitions;
    }
    for (const Identifier &name : names) {
        snmp_add_null_var(request, name.data(), name.size());
    }
    auto expected = std::make_unique<Expected>(Expected{std::move(handler), &failure_});
    if (snmp_sess_async_send(handle_, request, receive, expected.get()) == 0) {
        snmp_free_pdu(request);
        throw std::runtime_error("a request cannot be sent");
    }
    (void)expected.release(); // receive() has it now
}

int SnmpSession::receive(int operation, netsnmp_session *, int, netsnmp_pdu *pdu, void *magic)
{
    const std::unique_ptr<Expected> expected(static_cast<Expected *>(magic));
    if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) {
        try {
            expected->handler(*pdu);
        } catch (...) {
            *expected->failure = std::current_exception();
        }
    }
    return 1;
}

bool SnmpSession::dispatchOnce(Clock::time_point until)
{
    const auto left = std::chrono::nanoseconds(until - Clock::now()).count();
    const timespec wait{left > 0 ? left / 1'000'000'000 : 0, left > 0 ? left % 1'000'000'000 : 0};
    pollfd readable{descriptor_, POLLIN, 0};
    if (ppoll(&readable, 1, &wait, nullptr) <= 0) {
        return false;
    }
    fd_set set;
    FD_ZERO(&set);
    FD_SET(descriptor_, &set);
    snmp_sess_read(handle_, &set);
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
    return true;
}

void SnmpSession::dispatch(Clock::time_point until)
{
    while (dispatchOnce(until)) {
    }
}

bool SnmpSession::ask(int command, const std::vector<Identifier> &names, const Handler &handler, long repetitions,
                      std::chrono::seconds patience)
{
    auto answered = std::make_shared<bool>(false);
    const Clock::time_point until = Clock::now() + patience;
    send(
        command, names,
        [answered, handler](const netsnmp_pdu &answer) {
            *answered = true;
            handler(answer);
        },
        repetitions);
    while (!*answered && dispatchOnce(until)) {
    }
    return *answered;
}

Identifier parseIdentifier(const std::string &text)
{
    Identifier name;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, '.');) {
        if (!part.empty()) {
            name.push_back(std::stoul(part));
        }
    }
    return name;
}

} // namespace ipmib::bench
