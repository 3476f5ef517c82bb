// SPDX-License-Identifier: BSD-3-Clause
// What a program does before it looks at its command line.
#include "host/command_line.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ipmib::host
{
namespace
{

bool isNull(int descriptor)
{
    struct stat status {
    };
    return fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

// In a process of its own that starts with these closed, a bit each: the first step that goes wrong, or 0.
int firstBroken(unsigned closed)
{
    const pid_t child = fork();
    if (child == 0) {
        const int pipeEnd = dup(STDERR_FILENO);
        for (int standard = 0; standard <= 2; ++standard) {
            dup2(pipeEnd, standard);
            if ((closed >> standard & 1) != 0) {
                close(standard);
            }
        }
        occupyStandardDescriptors();
        for (int standard = 0; standard <= 2; ++standard) {
            const bool wasClosed = (closed >> standard & 1) != 0;
            if (isNull(standard) != wasClosed) {
                _exit(1);
            }
            char octet = 0;
            if (wasClosed && (standard == STDIN_FILENO ? read(standard, &octet, 1) : write(standard, &octet, 1)) >= 0) {
                _exit(2);
            }
        }
        _exit(open("/", O_RDONLY | O_DIRECTORY) > STDERR_FILENO ? 0 : 3);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WEXITSTATUS(status);
}

TEST(CommandLine, StandardDescriptorsThatAreClosedAreTakenByTheDeviceNull)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int errors = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO); // what is no device in any case
    for (unsigned closed = 0; closed < 8; ++closed) {
        EXPECT_EQ(firstBroken(closed), 0) << "closed: " << closed;
    }
    dup2(errors, STDERR_FILENO);
    for (const int descriptor : {errors, ends[0], ends[1]}) {
        close(descriptor);
    }
}

} // namespace
} // namespace ipmib::host
