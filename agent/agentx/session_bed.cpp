// SPDX-License-Identifier: BSD-3-Clause
// A sub-agent's session and a master that a test plays, in one thread.

#include "agent/agentx/session_bed.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace ipmib::agent::agentx
{

namespace
{

constexpr std::uint32_t tableId = 20;

std::string makeDirectory()
{
    char path[] = "/tmp/ipmib-agentx-XXXXXX";
    if (mkdtemp(path) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return path;
}

std::string socketIn(const std::string &directory)
{
    return directory + "/master";
}

int listenIn(const std::string &directory)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketIn(directory).c_str(), sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 || listen(listener, 8) != 0) {
        throw std::system_error(errno, std::generic_category(), "the master's socket");
    }
    return listener;
}

} // namespace

SessionBed::SessionBed()
    : table_(tree_, tableId, {host::testing::integer(1, 99)}, {}),
      module_([this](MorRequest *request, MorReply *reply) { return table_.answer(request, reply); }),
      resolver_(tree_.root(), host::testing::TestModule::callback, nullptr),
      catalogue_({.trees = {{&tree_.root(), {}}}, .sources = {&resolver_}}),
      settings_("agentx-test", ServeSettings::directive, &catalogue_.tables()), directory_(makeDirectory()),
      listener_(listenIn(directory_)),
      session_(catalogue_, instances_, upTime_, settings_, parseAddress(socketIn(directory_)), nullptr)
{
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG, 1);
    table_.add({{5}});
    table_.add({{7}});
}

SessionBed::~SessionBed()
{
    close(master_);
    close(listener_);
    unlink(socketIn(directory_).c_str());
    rmdir(directory_.c_str());
}

void SessionBed::connect()
{
    close(master_);
    session_.start();
    master_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (master_ < 0) {
        throw std::system_error(errno, std::generic_category(), "the session does not connect");
    }
    closed_ = false;
    unread_.clear();
}

void SessionBed::serve(long sessionId)
{
    connect();
    while (!session_.isServing()) {
        const Message request = receive();
        if (!request) {
            throw std::runtime_error("the session asks for nothing more and does not serve");
        }
        request->sessid = sessionId;
        becomeResponse(*request, noError);
        send(*request);
        turn();
    }
}

void SessionBed::send(std::span<const std::uint8_t> octets)
{
    if (::send(master_, octets.data(), octets.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(octets.size())) {
        throw std::system_error(errno, std::generic_category(), "the session does not read");
    }
}

void SessionBed::send(netsnmp_pdu &message)
{
    send(codec_.encode(message));
}

void SessionBed::turn()
{
    for (;;) {
        fd_set readable;
        fd_set writable;
        fd_set exceptional;
        FD_ZERO(&readable);
        FD_ZERO(&writable);
        FD_ZERO(&exceptional);
        int descriptors = 0;
        netsnmp_external_event_info(&descriptors, &readable, &writable, &exceptional);
        timeval now{};
        int ready = select(descriptors, &readable, &writable, &exceptional, &now);
        if (ready <= 0) {
            break;
        }
        netsnmp_dispatch_external_events(&ready, &readable, &writable, &exceptional);
        read(); // or a long answer would not fit into the socket
    }
    read();
}

void SessionBed::read()
{
    std::uint8_t piece[8192];
    ssize_t length;
    while ((length = recv(master_, piece, sizeof piece, 0)) > 0) {
        unread_.insert(unread_.end(), piece, piece + length);
    }
    closed_ = closed_ || length == 0 || (errno != EAGAIN && errno != EINTR);
}

Message SessionBed::receive()
{
    read();
    const std::ptrdiff_t length = Codec::lengthOf(unread_);
    if (length <= 0 || static_cast<std::size_t>(length) > unread_.size()) {
        return nullptr;
    }
    Message message = codec_.decode(std::span(unread_).first(static_cast<std::size_t>(length)));
    unread_.erase(unread_.begin(), unread_.begin() + length);
    return message;
}

} // namespace ipmib::agent::agentx
