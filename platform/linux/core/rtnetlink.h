// SPDX-License-Identifier: BSD-3-Clause
// One netlink socket, mostly of rtnetlink: requests, dumps piece by piece, and the announcements of multicast groups.
#pragma once

#include <libmnl/libmnl.h>
#include <linux/rtnetlink.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>

namespace ipmib::platform
{

// A request under construction, in a buffer of its own.
class RtnetlinkRequest
{
  public:
    // The flags go on top of NLM_F_REQUEST.
    RtnetlinkRequest(std::uint16_t type, std::uint16_t flags);
    // The family header behind the message header (ifinfomsg, ndmsg, ...), zeroed.
    template <class Header>
    Header &family()
    {
        return *static_cast<Header *>(mnl_nlmsg_put_extra_header(header_, sizeof(Header)));
    }
    nlmsghdr *message() { return header_; }

  private:
    alignas(nlmsghdr) std::byte buffer_[256];
    nlmsghdr *header_;
};

class Rtnetlink
{
  public:
    using Handler = std::function<void(const nlmsghdr &)>;

    // What one read brought.
    enum class Read {
        rows,        // messages, all handed on; more may follow
        done,        // the end of the dump
        interrupted, // the end of a dump during which the table changed: rows may be missing or stand twice
        nothing,     // nothing is there to read now
        lost,        // the kernel had to drop announcements
        failed,      // the kernel refused, or the socket broke: see error()
    };

    ~Rtnetlink() { close(); }
    Rtnetlink() = default;
    Rtnetlink(const Rtnetlink &) = delete;
    Rtnetlink &operator=(const Rtnetlink &) = delete;

    // Non-blocking. The receive buffer is a wish in bytes, beyond the system's limit where we may; 0 leaves the
    // default.
    bool open(std::initializer_list<unsigned> groups = {}, int receiveBuffer = 0);
    bool open(const unsigned *groups, std::size_t count, int receiveBuffer)
    {
        return open(NETLINK_ROUTE, groups, count, receiveBuffer);
    }
    // The same for another protocol of netlink. A datagram of a dump is at most as long as a piece, and 32 KiB: so much
    // the kernel works for at one go.
    bool openFor(int protocol, std::size_t pieceSize)
    {
        pieceSize_ = pieceSize;
        return open(protocol, nullptr, 0, 0);
    }
    // For dumps that rest: see look(). A piece is as long as the kernel makes the shortest.
    bool openToLook();
    void close();
    bool isOpen() const { return socket_ != nullptr; }
    int descriptor() const { return mnl_socket_get_fd(socket_); }

    // Sends a request; its answers are what read() brings from now on, answers to earlier ones are passed over.
    bool send(RtnetlinkRequest &request);
    // Reads one datagram and hands its messages on.
    Read read(const Handler &handler);
    // Reads one datagram and leaves it in the socket, so that the kernel does not write the next piece of the dump
    // before drop() has taken this one out.
    Read look(const Handler &handler);
    void drop();
    // Reads one datagram of announcements and hands its messages on.
    Read readAnnouncements(const Handler &handler);
    // Whether there is something to read now.
    bool isReadable() const;
    // Sends a request and hands on what the kernel answers at once: one message, or with NLM_F_DUMP all of a (small)
    // dump. Never waits. 0, or the kernel's errno.
    int ask(RtnetlinkRequest &request, const Handler &handler);

    // The errno and the text (the kernel's own where it gave one) of the last failure.
    int errorNumber() const { return errno_; }
    const std::string &error() const { return error_; }

    // What a read takes at most.
    static constexpr std::size_t mostAtOnce = std::size_t{64} * 1024;

  private:
    bool open(int protocol, const unsigned *groups, std::size_t count, int receiveBuffer);
    Read receive(bool announcements, const Handler &handler);
    Read handOn(const std::byte *datagram, std::size_t length, bool announcements, const Handler &handler);
    Read readDone(const nlmsghdr &message);
    Read readError(const nlmsghdr &message);
    Read refused(const nlmsghdr &message, std::size_t attributesAt, int number);
    Read fail(int number, const char *what);

    mnl_socket *socket_ = nullptr;
    std::size_t pieceSize_ = mostAtOnce;
    std::uint32_t sequence_ = 0;
    bool interrupted_ = false;
    int errno_ = 0;
    std::string error_;
};

} // namespace ipmib::platform
