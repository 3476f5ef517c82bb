// SPDX-License-Identifier: BSD-3-Clause
// The library's own sessions wait for an answer with everything else standing still: for seconds when a master hangs.

#include "agent/agentx/connection.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace ipmib::agent::agentx
{

namespace
{

// Far more than a master sends at once, or lets lie unread.
constexpr std::size_t longestMessage = 1 << 20;
constexpr std::size_t mostUnwritten = 16 << 20;
constexpr std::size_t pieceSize = 8 << 10;

std::string textOfErrno(int error)
{
    return std::generic_category().message(error);
}

} // namespace

Connection::Connection(MasterAddress address, Listener listener)
    : address_(std::move(address)), listener_(std::move(listener)),
      lookup_({[this](const Place &place) { connectTo(place); },
               [this](const std::string &reason) { listener_.lost(reason); }})
{
}

Connection::~Connection()
{
    close();
}

void Connection::open()
{
    close();
    const std::optional<Place> place = placeWithoutLookup(address_);
    if (place) {
        connectTo(*place);
        return;
    }
    try {
        lookup_.begin(address_);
    } catch (const std::system_error &error) {
        listener_.lost(textOfErrno(error.code().value()));
    }
}

void Connection::connectTo(const Place &place)
{
    try {
        const Begun begun = beginToConnect(place);
        descriptor_ = begun.descriptor;
        connecting_ = !begun.connected;
    } catch (const std::system_error &error) {
        listener_.lost(textOfErrno(error.code().value()));
        return;
    }
    if (connecting_) {
        waitToWrite(true);
        return;
    }
    register_readfd(
        descriptor_, [](int, void *self) { static_cast<Connection *>(self)->readable(); }, this);
    listener_.connected();
}

void Connection::close()
{
    lookup_.cancel();
    if (descriptor_ < 0) {
        return;
    }
    waitToWrite(false);
    if (!connecting_) {
        unregister_readfd(descriptor_);
    }
    ::close(descriptor_);
    descriptor_ = -1;
    connecting_ = false;
    input_.clear();
    output_.clear();
}

void Connection::lose(const std::string &reason)
{
    close();
    listener_.lost(reason);
}

void Connection::waitToWrite(bool wait)
{
    if (wait == waitsToWrite_) {
        return;
    }
    waitsToWrite_ = wait;
    if (wait) {
        register_writefd(
            descriptor_, [](int, void *self) { static_cast<Connection *>(self)->writable(); }, this);
    } else {
        unregister_writefd(descriptor_);
    }
}

void Connection::writable()
{
    if (!connecting_) {
        flush();
        return;
    }
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
        error = errno;
    }
    if (error != 0) {
        lose(textOfErrno(error));
        return;
    }
    waitToWrite(false);
    connecting_ = false;
    register_readfd(
        descriptor_, [](int, void *self) { static_cast<Connection *>(self)->readable(); }, this);
    listener_.connected();
}

void Connection::send(netsnmp_pdu &message)
{
    const auto octets = codec_.encode(message);
    if (descriptor_ < 0 || octets.empty()) {
        return;
    }
    output_.insert(output_.end(), octets.begin(), octets.end());
    flush();
}

void Connection::flush()
{
    const ssize_t written = ::send(descriptor_, output_.data(), output_.size(), MSG_NOSIGNAL);
    if (written < 0 && errno != EAGAIN && errno != EINTR) {
        // Whoever calls is in the middle of something: the loss is reported when the end of the stream is read.
        output_.clear();
        shutdown(descriptor_, SHUT_RDWR);
    } else if (written > 0) {
        output_.erase(output_.begin(), output_.begin() + written);
    }
    if (output_.size() > mostUnwritten) {
        output_.clear();
        shutdown(descriptor_, SHUT_RDWR);
    }
    waitToWrite(!output_.empty());
}

void Connection::readable()
{
    std::uint8_t piece[pieceSize];
    const ssize_t length = recv(descriptor_, piece, sizeof piece, 0);
    const int error = errno;
    input_.insert(input_.end(), piece, piece + std::max<ssize_t>(length, 0));
    if (length > 0) {
        takeMessages();
    } else if (length == 0 || error == ECONNRESET) { // the second when it left something unread
        lose(masterClosed);
    } else if (error != EAGAIN && error != EINTR) {
        lose(textOfErrno(error));
    }
}

void Connection::takeMessages()
{
    std::vector<std::uint8_t> octets; // by itself, since a listener may close the connection
    octets.swap(input_);
    std::span<std::uint8_t> rest(octets);
    while (!rest.empty()) {
        const std::ptrdiff_t length = Codec::lengthOf(rest);
        if (length < 0 || static_cast<std::size_t>(length) > longestMessage) {
            lose("what the master sent is not AgentX");
            return;
        }
        const auto size = static_cast<std::size_t>(length);
        if (size == 0 || size > rest.size()) {
            break;
        }
        const Message message = codec_.decode(rest.first(size));
        rest = rest.subspan(size);
        if (!message) {
            lose("the master sent a message that cannot be read");
            return;
        }
        listener_.received(*message);
        if (descriptor_ < 0) {
            return;
        }
    }
    octets.erase(octets.begin(), octets.end() - static_cast<std::ptrdiff_t>(rest.size()));
    input_.swap(octets);
}

} // namespace ipmib::agent::agentx
