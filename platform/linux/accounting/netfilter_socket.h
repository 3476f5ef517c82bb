// SPDX-License-Identifier: BSD-3-Clause
// The socket to the kernel's packet filter: questions, and changes that happen all together or not at all.
#pragma once

#include "accounting/nft_message.h"

#include <libmnl/libmnl.h>
#include <linux/netfilter/nfnetlink.h>
#include <netinet/in.h> // before linux/in.h, which declares the same unless it knows of this

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace ipmib::platform
{

// Messages for one datagram, numbered in their order.
class NftMessages
{
  public:
    // The next message; the caller puts its attributes, up to `roomForMessage` bytes with the headers, before it asks
    // for another.
    static constexpr std::size_t roomForMessage = 1024; // none of ours comes near it
    NftMessage add(std::uint16_t type, std::uint16_t flags);

  private:
    friend class NetfilterSocket;
    explicit NftMessages(std::uint32_t firstSequence);
    enum class Batch : std::uint16_t { begins = NFNL_MSG_BATCH_BEGIN, ends = NFNL_MSG_BATCH_END };
    void add(Batch place);
    nlmsghdr *next(std::uint16_t type, std::uint16_t flags, std::uint8_t family, std::uint16_t resource);
    nlmsghdr *last() { return reinterpret_cast<nlmsghdr *>(buffer_.data() + last_); }
    std::size_t size() const;

    std::vector<char> buffer_; // grows, so the messages move
    std::size_t last_ = 0;     // where the latest message begins
    std::uint32_t firstSequence_;
    std::uint32_t sequence_; // of the next message
};

// The number of the message that is answered, counted from 0; an errno, 0 for none; and the answer.
using NftAnswerHandler = std::function<void(std::size_t index, int error, const nlmsghdr &answer)>;

// Hands on what a datagram, whatever it is, answers to the `count` messages that are numbered from `first` on.
void readNftAnswers(std::span<const char> datagram, std::uint32_t first, std::uint32_t count,
                    const NftAnswerHandler &handler);

class NetfilterSocket
{
  public:
    using Handler = NftAnswerHandler;

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
