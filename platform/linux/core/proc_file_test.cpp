// SPDX-License-Identifier: BSD-3-Clause
// A file that is not there, and one that cannot be opened just now.
#include "core/proc_file.h"

#include "core/log.h"
#include "counters/system_counters.h"
#include "test_descriptors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ipmib::platform
{
namespace
{

TEST(ProcFile, onlyWhatIsNotThereIsAbsent)
{
    ProcFile none("/proc/there/is/none");
    EXPECT_TRUE(none.isAbsent());
    EXPECT_EQ(none.readNumber(), std::nullopt);
    ProcFile there("/proc/sys/kernel/pid_max");
    NoDescriptors starving;
    EXPECT_FALSE(there.isAbsent());
    EXPECT_EQ(there.error(), EMFILE);
    starving.end();
    EXPECT_FALSE(there.isAbsent());
    EXPECT_EQ(there.error(), 0);
    const auto number = there.readNumber();
    EXPECT_NE(number, std::nullopt);
    there.close();
    const NoDescriptors again;
    EXPECT_EQ(there.readNumber(), number);
}

std::vector<std::string> lines;

TEST(SystemCounters, wantOfDescriptorsIsNoWantOfIpv6)
{
    if (ProcFile("/proc/thread-self/net/snmp6").isAbsent()) {
        GTEST_SKIP() << "the kernel has no IPv6 here";
    }
    lines.clear();
    setLogSink([](int, const char *line) { lines.emplace_back(line); });
    SystemCounters counters;
    NoDescriptors starving;
    EXPECT_TRUE(counters.available());
    EXPECT_EQ(counters.read(), nullptr);
    EXPECT_EQ(counters.read(), nullptr);
    EXPECT_EQ(lines, std::vector<std::string>{"ipv6: cannot read the system's counters: Too many open files, trying "
                                              "again with the next request"});
    starving.end();
    EXPECT_NE(counters.read(), nullptr);
    setLogSink(nullptr);
}

} // namespace
} // namespace ipmib::platform
