// SPDX-License-Identifier: BSD-3-Clause
// The signals get their default action in the end, so that whoever waits for the process sees what ended it.

#include "ended_at_once.h"

#include <iterator>
#include <utility>

namespace ipmib::agent
{

namespace
{

constexpr int endings[] = {SIGTERM, SIGINT};

std::function<void()> tidyUpAtTheEnd;

void end(int number)
{
    if (tidyUpAtTheEnd) {
        tidyUpAtTheEnd();
    }
    raise(number); // once this handler, which is reset, has returned
}

} // namespace

EndedAtOnce::EndedAtOnce(std::function<void()> tidyUp)
{
    tidyUpAtTheEnd = std::move(tidyUp); // before the first signal can come
    struct sigaction action {
    };
    action.sa_handler = end;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigset_t set;
    sigemptyset(&set);
    for (std::size_t i = 0; i < std::size(endings); ++i) {
        sigaction(endings[i], &action, &before_[i]);
        sigaddset(&set, endings[i]);
    }
    sigprocmask(SIG_UNBLOCK, &set, &blocked_);
}

EndedAtOnce::~EndedAtOnce()
{
    sigprocmask(SIG_SETMASK, &blocked_, nullptr);
    for (std::size_t i = 0; i < std::size(endings); ++i) {
        sigaction(endings[i], &before_[i], nullptr);
    }
}

} // namespace ipmib::agent
