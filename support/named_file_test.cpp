// SPDX-License-Identifier: BSD-3-Clause
// Whatever a name may lead to.
#include "support/named_file.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace ipmib::support
{
namespace
{

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::size_t limit = 100'000; // more than one reading, and more than a pipe holds

class NamedFileTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "namedXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string &name = "it") const { return folder_ / name; }
    void write(const std::string &text) const { std::ofstream(path()) << text; }
    std::string reason(const std::string &of, std::chrono::milliseconds patience = {}) const
    {
        const NamedFile file = readNamedFile(of, limit, patience);
        EXPECT_EQ(file.error != 0, !file.reason.empty());
        EXPECT_EQ(file.text, "");
        return file.reason;
    }

    fs::path folder_;
};

TEST_F(NamedFileTest, aRegularFileIsReadWhole)
{
    for (const std::size_t size : {std::size_t(0), std::size_t(1), limit}) {
        write(std::string(size, 'x'));
        const NamedFile file = readNamedFile(path(), limit);
        EXPECT_EQ(file.error, 0);
        EXPECT_EQ(file.text, std::string(size, 'x'));
    }
    fs::create_symlink(path(), path("link"));
    EXPECT_EQ(readNamedFile(path("link"), limit).text.size(), limit);
}

TEST_F(NamedFileTest, oneThatIsTooLargeIsNot)
{
    write(std::string(limit + 1, 'x'));
    EXPECT_EQ(readNamedFile(path(), limit).error, EFBIG);
    EXPECT_EQ(reason(path()), "it is larger than 100000 bytes");
    fs::resize_file(path(), std::uintmax_t(1) << 40); // with a hole in it
    EXPECT_EQ(reason(path()), "it is larger than 100000 bytes");
}

TEST_F(NamedFileTest, whatCannotBeOpenedSaysWhy)
{
    EXPECT_EQ(readNamedFile(path(), limit).error, ENOENT);
    EXPECT_EQ(reason(path()), "No such file or directory");
    write("");
    EXPECT_EQ(reason(path() + "/below"), "Not a directory");
    EXPECT_EQ(reason(""), "No such file or directory");
    EXPECT_EQ(reason(folder_), "Is a directory");
}

TEST_F(NamedFileTest, theDeviceNullIsEmptyAndOtherDevicesAreRefused)
{
    EXPECT_EQ(reason("/dev/null"), "");
    for (const char *device : {"/dev/zero", "/dev/full", "/dev/random"}) {
        EXPECT_EQ(reason(device), "it is no regular file") << device;
        EXPECT_EQ(reason(device, 1ms), "it is no regular file") << device;
    }
}

TEST_F(NamedFileTest, aSocketIsRefused)
{
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    path().copy(place.sun_path, sizeof place.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&place), sizeof place), 0);
    EXPECT_EQ(reason(path(), 1ms), "No such device or address");
    close(listener);
}

TEST_F(NamedFileTest, aPipeIsRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(reason(path()), "it is no regular file");
}

TEST_F(NamedFileTest, aPipeIsAwaitedForAWhileByWhoeverHasPatience)
{
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(reason(path(), 1h), "") << "nobody writes it";

    const int both = open(path().c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(both, 0);
    EXPECT_EQ(reason(path(), 1ms), "it did not end in time") << "its writer says nothing";
    ASSERT_EQ(::write(both, "word", 4), 4);
    EXPECT_EQ(reason(path(), 1ms), "it did not end in time") << "its writer does not end";
    close(both);
}

TEST_F(NamedFileTest, aPipeIsReadToItsEndOrToTheLimit)
{
    for (const bool endless : {false, true}) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t writer = fork();
        if (writer == 0) {
            close(ends[0]);
            const std::string text(limit, 'x');
            do {
                for (std::size_t sent = 0; sent < text.size();) {
                    sent += static_cast<std::size_t>(::write(ends[1], text.data() + sent, text.size() - sent));
                }
            } while (endless); // until nobody reads
            _exit(0);
        }
        close(ends[1]);
        const NamedFile file = readNamedFile("/proc/self/fd/" + std::to_string(ends[0]), limit, 1h);
        EXPECT_EQ(file.error, endless ? EFBIG : 0) << file.reason;
        EXPECT_EQ(file.text.size(), endless ? 0 : limit);
        close(ends[0]);
        EXPECT_EQ(waitpid(writer, nullptr, 0), writer);
    }
}

} // namespace
} // namespace ipmib::support
