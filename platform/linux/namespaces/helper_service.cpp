// SPDX-License-Identifier: BSD-3-Clause
// The helper is in another namespace while it opens something there, and at no other time: where it is, it keeps alive.
#include "namespaces/helper_service.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <linux/netlink.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace ipmib::platform
{
namespace
{

HelperService::Reply refusal(HelperAnswer::Step step, int error)
{
    HelperService::Reply reply;
    reply.answer = {error, step, 0};
    return reply;
}

} // namespace

HelperService::HelperService() : home_(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)) {}

bool HelperService::mayOpen(const std::string &path)
{
    if (!isSettled_ && !path.empty() && named_.size() < mostNamespaces) {
        named_.insert(path);
    }
    return named_.contains(path) || (follows_ && isNamed(path));
}

// A file that is none of a namespace is looked at and not opened, which for a device, say, would be an act.
HelperService::Reply HelperService::open(const HelperQuestion &question)
{
    const std::string path = pathOfNamespace(question.text);
    if (!mayOpen(path)) {
        return refusal(HelperAnswer::allow, EACCES);
    }
    const Descriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    struct statfs about {
    };
    if (!file || fstatfs(file.get(), &about) != 0) {
        return refusal(HelperAnswer::find, errno);
    }
    if (about.f_type != NSFS_MAGIC) {
        return refusal(HelperAnswer::recognise, EINVAL);
    }
    Descriptor space(::open(("/proc/self/fd/" + std::to_string(file.get())).c_str(), O_RDONLY | O_CLOEXEC));
    if (!space) {
        return refusal(HelperAnswer::find, errno);
    }
    if (!home_ || setns(space.get(), CLONE_NEWNET) != 0) {
        return refusal(errno == EINVAL ? HelperAnswer::recognise : HelperAnswer::enter, errno);
    }
    if (setns(home_.get(), CLONE_NEWNET) != 0) {
        std::abort();
    }
    auto place = std::ranges::find_if(spaces_, [](const Descriptor &each) { return !each; });
    if (place == spaces_.end()) {
        if (spaces_.size() >= mostNamespaces) {
            return refusal(HelperAnswer::obtain, EMFILE);
        }
        place = spaces_.emplace(place);
    }
    *place = std::move(space);
    Reply reply;
    reply.answer.space = static_cast<std::uint32_t>(place - spaces_.begin());
    return reply;
}

bool HelperService::mayUse(const HelperQuestion &question) const
{
    if (question.kind == HelperQuestion::file) {
        return !pathOfFile(question).empty();
    }
    return question.text[0] == '\0' && (question.which == NETLINK_ROUTE || question.which == NETLINK_SOCK_DIAG ||
                                        (question.which == NETLINK_NETFILTER && mayFilter_));
}

HelperService::Reply HelperService::obtain(const HelperQuestion &question)
{
    if (question.space >= spaces_.size() || !spaces_[question.space] || !mayUse(question)) {
        return refusal(HelperAnswer::allow, EACCES);
    }
    if (setns(spaces_[question.space].get(), CLONE_NEWNET) != 0) {
        return refusal(HelperAnswer::enter, errno);
    }
    Reply reply;
    reply.handed =
        Descriptor(question.kind == HelperQuestion::file ? ::open(pathOfFile(question).c_str(), O_RDONLY | O_CLOEXEC)
                                                         : ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK,
                                                                    static_cast<int>(question.which)));
    if (!reply.handed) {
        reply.answer = {errno, HelperAnswer::obtain, 0};
    }
    if (setns(home_.get(), CLONE_NEWNET) != 0) {
        std::abort(); // rather than show one namespace as another
    }
    return reply;
}

std::optional<HelperService::Reply> HelperService::answer(std::span<const std::byte> message)
{
    const auto question = readQuestion(message);
    if (!question) {
        return std::nullopt;
    }
    switch (question->kind) {
    case HelperQuestion::open:
        return open(*question);
    case HelperQuestion::close:
        if (question->space < spaces_.size()) {
            spaces_[question->space].reset();
        }
        return Reply();
    case HelperQuestion::follow:
        follows_ = follows_ || !isSettled_;
        return follows_ ? Reply() : refusal(HelperAnswer::allow, EACCES);
    case HelperQuestion::settle:
        isSettled_ = true;
        mayFilter_ = mayFilter_ && question->which == 1;
        return Reply();
    default:
        return obtain(*question);
    }
}

} // namespace ipmib::platform
