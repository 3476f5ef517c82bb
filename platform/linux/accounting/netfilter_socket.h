// SPDX-License-Identifier: BSD-3-Clause
// The socket to the kernel's packet filter: questions, and changes that happen all together or not at all.
#pragma once

#include <libmnl/libmnl.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace ipmib::platform
{

// Messages for one datagram, numbered in their order.
class NftMessages
{
  public:
    // The header of the next message; the caller appends the payload before it asks for another.
    nlmsghdr *add(std::uint16_t type, std::uint16_t flags);

  private:
    friend class NetfilterSocket;
    explicit NftMessages(std::uint32_t firstSequence);
    char *next();

    std::vector<char> buffer_;
    std::size_t used_ = 0;
    nlmsghdr *last_ = nullptr;
    std::uint32_t firstSequence_;
    std::uint32_t sequence_; // of the next message
};

class NetfilterSocket
{
  public:
    // The number of the message that is answered, counted from 0; an errno, 0 for none; and the answer.
    using Handler = std::function<void(std::size_t index, int error, const nlmsghdr &answer)>;

    // What became of a batch; the error is an errno, 0 for success.
    struct Outcome {
        int error = 0;
        bool refusedAsWhole = false; // before the kernel looked at the first change
    };

    NetfilterSocket() = default;
    ~NetfilterSocket() { close(); }
    NetfilterSocket(const NetfilterSocket &) = delete;
    NetfilterSocket &operator=(const NetfilterSocket &) = delete;

    // 0, or the errno. The socket never blocks: the kernel answers within the call that asks.
    int open();
    void close();
    bool isOpen() const { return socket_ != nullptr; }

    // Each question is answered once. 0, or the errno of the socket itself.
    NftMessages questions() const { return NftMessages(sequence_); }
    int ask(NftMessages &questions, const Handler &handler);

    NftMessages batch() const;
    Outcome commit(NftMessages &batch);

  private:
    mnl_socket *socket_ = nullptr;
    std::uint32_t sequence_ = 1;
    std::vector<char> buffer_;
};

} // namespace ipmib::platform
