// SPDX-License-Identifier: BSD-3-Clause
// The socket to the kernel's packet filter: questions, and changes that happen all together or not at all.
#include "accounting/netfilter_socket.h"

#include "core/datagram.h"

#include <libnftnl/common.h>
#include <linux/netfilter.h>

#include <sys/socket.h>

#include <cassert>
#include <cerrno>

namespace ipmib::platform
{

namespace
{

constexpr std::size_t capacity = 8192;
constexpr std::size_t roomForMessage = 1024; // no message of ours comes near it

int errorOf(const nlmsghdr &message)
{
    if (message.nlmsg_type != NLMSG_ERROR) {
        return 0;
    }
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(nlmsgerr))) {
        return EBADMSG;
    }
    return -static_cast<const nlmsgerr *>(mnl_nlmsg_get_payload(&message))->error;
}

} // namespace

NftMessages::NftMessages(std::uint32_t firstSequence)
    : buffer_(capacity), firstSequence_(firstSequence), sequence_(firstSequence)
{
}

char *NftMessages::next()
{
    if (last_ != nullptr) {
        used_ += MNL_ALIGN(last_->nlmsg_len);
    }
    assert(used_ + roomForMessage <= capacity);
    return buffer_.data() + used_;
}

nlmsghdr *NftMessages::add(std::uint16_t type, std::uint16_t flags)
{
    return last_ = nftnl_nlmsg_build_hdr(next(), type, NFPROTO_IPV4, flags, sequence_++);
}

int NetfilterSocket::open()
{
    close();
    socket_ = mnl_socket_open2(NETLINK_NETFILTER, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket_ == nullptr) {
        return errno;
    }
    if (mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) != 0) {
        const int error = errno;
        close();
        return error;
    }
    buffer_.resize(capacity);
    return 0;
}

void NetfilterSocket::close()
{
    if (socket_ != nullptr) {
        mnl_socket_close(socket_);
        socket_ = nullptr;
    }
}

int NetfilterSocket::ask(NftMessages &questions, const Handler &handler)
{
    const char *end = questions.next();
    sequence_ = questions.sequence_;
    if (mnl_socket_sendto(socket_, questions.buffer_.data(), static_cast<std::size_t>(end - questions.buffer_.data())) <
        0) {
        return errno;
    }
    for (;;) {
        const ssize_t length = mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
        if (length < 0) {
            return errno == EAGAIN ? 0 : errno;
        }
        int left = static_cast<int>(length);
        for (auto *message = reinterpret_cast<const nlmsghdr *>(buffer_.data()); holdsMessage(message, left);
             message = mnl_nlmsg_next(message, &left)) {
            const std::size_t index = message->nlmsg_seq - questions.firstSequence_;
            if (index < questions.sequence_ - questions.firstSequence_) { // else an answer that nobody waited for
                handler(index, errorOf(*message), *message);
            }
        }
    }
}

NftMessages NetfilterSocket::batch() const
{
    NftMessages batch(sequence_);
    batch.last_ = nftnl_batch_begin(batch.next(), batch.sequence_++);
    return batch;
}

NetfilterSocket::Outcome NetfilterSocket::commit(NftMessages &batch)
{
    batch.last_->nlmsg_flags |= NLM_F_ACK; // refusals are always answered, success only on request
    batch.last_ = nftnl_batch_end(batch.next(), batch.sequence_++);
    Outcome outcome;
    bool answered = false;
    const int error = ask(batch, [&](std::size_t index, int refusal, const nlmsghdr &) {
        answered = true;
        if (outcome.error == 0) {
            outcome = {refusal, index == 0};
        }
    });
    if (error != 0) {
        return {error};
    }
    return answered ? outcome : Outcome{EBADMSG};
}

} // namespace ipmib::platform
