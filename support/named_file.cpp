// SPDX-License-Identifier: BSD-3-Clause
// Opens without waiting and looks at what it has opened before it reads.
#include "support/named_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace ipmib::support
{
namespace
{

using Clock = std::chrono::steady_clock;

class OpenFile
{
  public:
    explicit OpenFile(const std::string &path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile()
    {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

NamedFile failed(int error, const std::string &reason)
{
    return {"", error, reason};
}

NamedFile failed(int error)
{
    return failed(error, std::generic_category().message(error));
}

bool isNull(const struct stat &status)
{
    constexpr unsigned memoryDevices = 1;
    constexpr unsigned null = 3;
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(memoryDevices, null);
}

// Waits until a pipe has something to say, or its last writer has gone; false when the time is over.
bool awaitData(int descriptor, Clock::time_point end)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd data{descriptor, POLLIN, 0};
    return left > 0 && poll(&data, 1, static_cast<int>(left)) != 0;
}

NamedFile readAll(int descriptor, std::size_t limit, std::chrono::milliseconds patience)
{
    const bool isPipe = patience.count() > 0;
    const Clock::time_point end = Clock::now() + patience;
    NamedFile file;
    std::array<char, 65536> piece;
    for (;;) {
        const ssize_t length = read(descriptor, piece.data(), piece.size());
        if (length == 0) {
            return file;
        }
        if (length > 0) {
            file.text.append(piece.data(), static_cast<std::size_t>(length));
        } else if (errno != EINTR && (errno != EAGAIN || !isPipe)) {
            return failed(errno);
        }
        if (file.text.size() > limit) {
            return failed(EFBIG, "it is larger than " + std::to_string(limit) + " bytes");
        }
        if (isPipe && !awaitData(descriptor, end)) {
            return failed(ETIMEDOUT, "it did not end in time");
        }
    }
}

} // namespace

NamedFile readNamedFile(const std::string &path, std::size_t limit, std::chrono::milliseconds pipePatience)
{
    const OpenFile file(path);
    struct stat status;
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        return failed(errno);
    }
    if (isNull(status)) {
        return {};
    }
    if (S_ISREG(status.st_mode)) {
        return readAll(file.get(), limit, {});
    }
    if (S_ISFIFO(status.st_mode) && pipePatience.count() > 0) {
        return readAll(file.get(), limit, pipePatience);
    }
    return S_ISDIR(status.st_mode) ? failed(EISDIR) : failed(EINVAL, "it is no regular file");
}

} // namespace ipmib::support
