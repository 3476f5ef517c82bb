// SPDX-License-Identifier: BSD-3-Clause
// One netlink socket: requests, dumps piece by piece, and the announcements of multicast groups.
#include "core/rtnetlink.h"

#include "core/attributes.h"
#include "core/datagram.h"
#include "namespaces/network_namespace.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

namespace ipmib::platform
{

namespace
{

// A handler may read another socket meanwhile: there are as many buffers as that has ever come about at once.
class ReceiveBuffer
{
  public:
    ReceiveBuffer() : place_(inUse++)
    {
        if (place_ == all.size()) {
            all.push_back(std::make_unique_for_overwrite<std::byte[]>(Rtnetlink::mostAtOnce));
        }
    }
    ~ReceiveBuffer() { --inUse; }
    ReceiveBuffer(const ReceiveBuffer &) = delete;
    ReceiveBuffer &operator=(const ReceiveBuffer &) = delete;

    std::byte *get() const { return all[place_].get(); }

  private:
    static inline std::vector<std::unique_ptr<std::byte[]>> all;
    static inline std::size_t inUse = 0;

    std::size_t place_;
};

void setOption(mnl_socket *socket, int option)
{
    int on = 1;
    mnl_socket_setsockopt(socket, option, &on, sizeof on); // an older kernel lacks some, and we then live without
}

} // namespace

RtnetlinkRequest::RtnetlinkRequest(std::uint16_t type, std::uint16_t flags) : header_(mnl_nlmsg_put_header(buffer_))
{
    header_->nlmsg_type = type;
    header_->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
}

bool Rtnetlink::open(std::initializer_list<unsigned> groups, int receiveBuffer)
{
    return open(groups.begin(), groups.size(), receiveBuffer);
}

bool Rtnetlink::open(int protocol, const unsigned *groups, std::size_t count, int receiveBuffer)
{
    close();
    Descriptor opened = NetworkNamespace::openNetlinkSocket(protocol);
    socket_ = opened ? mnl_socket_fdopen(opened.get()) : nullptr;
    if (socket_ == nullptr) {
        fail(errno, "socket");
        return false;
    }
    opened.release();
    setOption(socket_, NETLINK_EXT_ACK);
    setOption(socket_, NETLINK_CAP_ACK);
    setOption(socket_, NETLINK_GET_STRICT_CHK);
    if (receiveBuffer > 0 &&
        setsockopt(descriptor(), SOL_SOCKET, SO_RCVBUFFORCE, &receiveBuffer, sizeof receiveBuffer) != 0) {
        setsockopt(descriptor(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    if (mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) != 0) {
        fail(errno, "bind");
        close();
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        unsigned group = groups[i];
        if (mnl_socket_setsockopt(socket_, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0) {
            fail(errno, "membership");
            close();
            return false;
        }
    }
    return true;
}

bool Rtnetlink::openToLook()
{
    // NLMSG_GOODSIZE, which the kernel makes no piece shorter than.
    pieceSize_ = std::clamp<std::size_t>(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)), 4096, 8192);
    if (!open(NETLINK_ROUTE, nullptr, 0, 0)) {
        return false;
    }
    // The kernel goes on with a dump when half of the buffer is free: the least that it allows is less than two pieces.
    const int least = 1;
    if (setsockopt(descriptor(), SOL_SOCKET, SO_RCVBUF, &least, sizeof least) != 0) {
        fail(errno, "receive buffer");
        close();
        return false;
    }
    return true;
}

void Rtnetlink::close()
{
    if (socket_ != nullptr) {
        mnl_socket_close(socket_);
        socket_ = nullptr;
    }
}

bool Rtnetlink::send(RtnetlinkRequest &request)
{
    request.message()->nlmsg_seq = ++sequence_;
    interrupted_ = false;
    if (mnl_socket_sendto(socket_, request.message(), request.message()->nlmsg_len) < 0) {
        fail(errno, "send");
        return false;
    }
    return true;
}

Rtnetlink::Read Rtnetlink::read(const Handler &handler)
{
    return receive(false, handler);
}

Rtnetlink::Read Rtnetlink::readAnnouncements(const Handler &handler)
{
    return receive(true, handler);
}

bool Rtnetlink::isReadable() const
{
    pollfd socket{descriptor(), POLLIN, 0};
    return poll(&socket, 1, 0) > 0;
}

Rtnetlink::Read Rtnetlink::receive(bool announcements, const Handler &handler)
{
    const ReceiveBuffer buffer;
    const ssize_t length = mnl_socket_recvfrom(socket_, buffer.get(), pieceSize_);
    if (length < 0) {
        if (errno == EAGAIN || errno == EINTR) {
            return Read::nothing;
        }
        // A datagram beyond the buffer was cut off: what it said is as lost as if it had never been queued.
        return errno == ENOBUFS || (announcements && errno == ENOSPC) ? Read::lost : fail(errno, "receive");
    }
    return handOn(buffer.get(), static_cast<std::size_t>(length), announcements, handler);
}

Rtnetlink::Read Rtnetlink::look(const Handler &handler)
{
    const ReceiveBuffer buffer;
    const ssize_t length = recv(descriptor(), buffer.get(), pieceSize_, MSG_PEEK | MSG_TRUNC);
    if (length < 0) {
        return errno == EAGAIN || errno == EINTR ? Read::nothing : fail(errno, "receive");
    }
    if (static_cast<std::size_t>(length) > pieceSize_) {
        return fail(ENOSPC, "receive");
    }
    return handOn(buffer.get(), static_cast<std::size_t>(length), false, handler);
}

void Rtnetlink::drop()
{
    recv(descriptor(), nullptr, 0, MSG_TRUNC);
}

Rtnetlink::Read Rtnetlink::handOn(const std::byte *datagram, std::size_t length, bool announcements,
                                  const Handler &handler)
{
    int left = static_cast<int>(length);
    for (auto *message = reinterpret_cast<const nlmsghdr *>(datagram); holdsMessage(message, left);
         message = mnl_nlmsg_next(message, &left)) {
        if (announcements) {
            if (message->nlmsg_type >= NLMSG_MIN_TYPE) {
                handler(*message);
            }
            continue;
        }
        if (message->nlmsg_seq != sequence_) {
            continue;
        }
        interrupted_ = interrupted_ || (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        if (message->nlmsg_type == NLMSG_DONE) {
            return readDone(*message);
        }
        if (message->nlmsg_type == NLMSG_ERROR) {
            return readError(*message);
        }
        if (message->nlmsg_type >= NLMSG_MIN_TYPE) {
            handler(*message);
        }
    }
    return Read::rows;
}

int Rtnetlink::ask(RtnetlinkRequest &request, const Handler &handler)
{
    if (!send(request)) {
        return errno_;
    }
    const bool dump = (request.message()->nlmsg_flags & NLM_F_DUMP) != 0;
    bool answered = false;
    while (dump || !answered) {
        const Read result = receive(false, [&](const nlmsghdr &message) {
            answered = true;
            handler(message);
        });
        switch (result) {
        case Read::rows:
            break; // the answer, or what is left of an earlier one
        case Read::done:
        case Read::interrupted:
            return 0;
        case Read::nothing: // the kernel answers while it is sent to, and goes on with a dump while it is read
            fail(EAGAIN, "no answer");
            return EAGAIN;
        case Read::lost:
            fail(ENOBUFS, "receive");
            return ENOBUFS;
        case Read::failed:
            return errno_;
        }
    }
    return 0;
}

Rtnetlink::Read Rtnetlink::readDone(const nlmsghdr &message)
{
    std::int32_t result = 0;
    if (message.nlmsg_len >= mnl_nlmsg_size(sizeof result)) {
        std::memcpy(&result, mnl_nlmsg_get_payload(&message), sizeof result);
    }
    if (result < 0) {
        return refused(message, sizeof result, errnoOf(result));
    }
    return interrupted_ ? Read::interrupted : Read::done;
}

Rtnetlink::Read Rtnetlink::readError(const nlmsghdr &message)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(nlmsgerr))) {
        return fail(EBADMSG, "answer");
    }
    const auto *error = static_cast<const nlmsgerr *>(mnl_nlmsg_get_payload(&message));
    if (error->error == 0) {
        return Read::done;
    }
    // Behind the error stand the request's header (with NLM_F_CAPPED no more of it) and then the extended attributes.
    std::size_t skip = sizeof(nlmsgerr);
    if ((message.nlmsg_flags & NLM_F_CAPPED) == 0 && error->msg.nlmsg_len >= sizeof(nlmsghdr)) {
        skip += error->msg.nlmsg_len - sizeof(nlmsghdr);
    }
    return refused(message, skip, errnoOf(error->error));
}

Rtnetlink::Read Rtnetlink::refused(const nlmsghdr &message, std::size_t attributesAt, int number)
{
    char text[160] = "refused";
    if ((message.nlmsg_flags & NLM_F_ACK_TLVS) != 0) {
        const Attributes<NLMSGERR_ATTR_MAX> attributes(message, attributesAt);
        if (attributes[NLMSGERR_ATTR_MSG] != nullptr) {
            attributes.copyString(NLMSGERR_ATTR_MSG, text);
        }
    }
    return fail(number, text);
}

Rtnetlink::Read Rtnetlink::fail(int number, const char *what)
{
    errno_ = number;
    error_ = std::string(what) + ": " + std::strerror(number);
    return Read::failed;
}

} // namespace ipmib::platform
