// SPDX-License-Identifier: BSD-3-Clause
// The socket to the kernel's packet filter: questions, and changes that happen all together or not at all.
#include "accounting/netfilter_socket.h"

#include "namespaces/network_namespace.h"

#include "core/datagram.h"

#include <linux/netfilter.h>

#include <sys/socket.h>

#include <cerrno>

namespace ipmib::platform
{

namespace
{

constexpr std::size_t usualSize = 8192;  // of what is sent at once
constexpr std::size_t answerSize = 8192; // of a datagram; a message comes back with its refusal

int errorOf(const nlmsghdr &message)
{
    if (message.nlmsg_type != NLMSG_ERROR) {
        return 0;
    }
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(nlmsgerr))) {
        return EBADMSG;
    }
    return errnoOf(static_cast<const nlmsgerr *>(mnl_nlmsg_get_payload(&message))->error);
}

} // namespace

NftMessages::NftMessages(std::uint32_t firstSequence) : firstSequence_(firstSequence), sequence_(firstSequence)
{
    buffer_.reserve(usualSize);
}

std::size_t NftMessages::size() const
{
    return buffer_.empty() ? 0
                           : last_ + MNL_ALIGN(reinterpret_cast<const nlmsghdr *>(buffer_.data() + last_)->nlmsg_len);
}

nlmsghdr *NftMessages::next(std::uint16_t type, std::uint16_t flags, std::uint8_t family, std::uint16_t resource)
{
    last_ = size();
    buffer_.resize(last_ + roomForMessage);
    nlmsghdr *const header = mnl_nlmsg_put_header(buffer_.data() + last_);
    header->nlmsg_type = type;
    header->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
    header->nlmsg_seq = sequence_++;
    *static_cast<nfgenmsg *>(mnl_nlmsg_put_extra_header(header, sizeof(nfgenmsg))) = {family, NFNETLINK_V0,
                                                                                      htobe16(resource)};
    return header;
}

NftMessage NftMessages::add(std::uint16_t type, std::uint16_t flags)
{
    return NftMessage(next(static_cast<std::uint16_t>(NFNL_SUBSYS_NFTABLES << 8 | type), flags, NFPROTO_IPV4, 0));
}

void NftMessages::add(Batch place)
{
    next(static_cast<std::uint16_t>(place), 0, AF_UNSPEC, NFNL_SUBSYS_NFTABLES);
}

void readNftAnswers(std::span<const char> datagram, std::uint32_t first, std::uint32_t count,
                    const NftAnswerHandler &handler)
{
    int left = static_cast<int>(datagram.size());
    for (auto *message = reinterpret_cast<const nlmsghdr *>(datagram.data()); holdsMessage(message, left);
         message = mnl_nlmsg_next(message, &left)) {
        const std::uint32_t index = message->nlmsg_seq - first;
        if (index < count) { // else an answer that nobody waited for
            handler(index, errorOf(*message), *message);
        }
    }
}

int NetfilterSocket::open()
{
    close();
    Descriptor opened = NetworkNamespace::openNetlinkSocket(NETLINK_NETFILTER);
    socket_ = opened ? mnl_socket_fdopen(opened.get()) : nullptr;
    if (socket_ == nullptr) {
        return errno;
    }
    opened.release();
    if (mnl_socket_bind(socket_, 0, MNL_SOCKET_AUTOPID) != 0) {
        const int error = errno;
        close();
        return error;
    }
    buffer_.resize(answerSize);
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
    sequence_ = questions.sequence_;
    if (mnl_socket_sendto(socket_, questions.buffer_.data(), questions.size()) < 0) {
        return errno;
    }
    for (;;) {
        const ssize_t length = mnl_socket_recvfrom(socket_, buffer_.data(), buffer_.size());
        if (length < 0) {
            return errno == EAGAIN ? 0 : errno;
        }
        readNftAnswers(std::span(buffer_).first(static_cast<std::size_t>(length)), questions.firstSequence_,
                       questions.sequence_ - questions.firstSequence_, handler);
    }
}

NftMessages NetfilterSocket::batch() const
{
    NftMessages batch(sequence_);
    batch.add(NftMessages::Batch::begins);
    return batch;
}

NetfilterSocket::Outcome NetfilterSocket::commit(NftMessages &batch)
{
    batch.last()->nlmsg_flags |= NLM_F_ACK; // refusals are always answered, success only on request
    batch.add(NftMessages::Batch::ends);
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
