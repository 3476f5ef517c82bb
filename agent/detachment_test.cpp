// SPDX-License-Identifier: BSD-3-Clause
// What whoever starts a daemon sees of it.

#include "detachment.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>

namespace ipmib::agent
{

namespace
{

struct Seen {
    int status = -1;
    std::string errors; // when the starter has ended
};

// What the starter of a daemon sees that does this once it is on its own.
Seen start(const std::function<void(Detachment &)> &daemon)
{
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const pid_t starter = fork();
    if (starter == 0) {
        dup2(ends[1], STDERR_FILENO);
        {
            Detachment detachment;
            daemon(detachment);
        }
        usleep(200000); // as long as a platform may take to stop
        dprintf(STDERR_FILENO, "the reason\n");
        _exit(3);
    }
    Seen seen;
    EXPECT_EQ(waitpid(starter, &seen.status, 0), starter);
    char text[256];
    const ssize_t length = read(ends[0], text, sizeof text);
    seen.errors.assign(text, length > 0 ? static_cast<std::size_t>(length) : 0);
    close(ends[0]);
    close(ends[1]);
    return seen;
}

TEST(Detachment, TheStarterGoesWhenTheDaemonIsReady)
{
    const Seen seen = start([](Detachment &detachment) {
        detachment.ready(false);
        _exit(0);
    });
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.errors, "");
}

TEST(Detachment, TheStarterGoesAfterTheReasonWasWrittenAndWithItsStatus)
{
    const Seen seen = start([](Detachment &) {});
    EXPECT_TRUE(WIFEXITED(seen.status));
    EXPECT_EQ(WEXITSTATUS(seen.status), 3);
    EXPECT_EQ(seen.errors, "the reason\n");
}

TEST(Detachment, WhatTheDaemonCannotSayItselfTheStarterSays)
{
    const Seen killed = start([](Detachment &) { raise(SIGKILL); });
    EXPECT_TRUE(WIFEXITED(killed.status));
    EXPECT_EQ(WEXITSTATUS(killed.status), 1);
    EXPECT_EQ(killed.errors, "ipmibd: ended at its start by a signal: Killed\n");
    const Seen stopped = start([](Detachment &) { _exit(0); });
    EXPECT_EQ(WEXITSTATUS(stopped.status), 1);
    EXPECT_EQ(stopped.errors, "ipmibd: told to stop before it was ready\n");
}

} // namespace

} // namespace ipmib::agent
