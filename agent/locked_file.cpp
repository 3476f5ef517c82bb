// SPDX-License-Identifier: BSD-3-Clause
// The lock belongs to the open file, so that a daemon takes it along when it leaves its starter.

#include "locked_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace ipmib::agent
{

namespace
{

constexpr int attempts = 10;

[[noreturn]] void failWithErrno()
{
    throw std::runtime_error(std::generic_category().message(errno));
}

// Opening a device may already do something, so the name is looked at first.
void requireRegularFile(const std::string &path)
{
    struct stat status {
    };
    if (lstat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            throw std::runtime_error("it is not a regular file");
        }
    } else if (errno != ENOENT) {
        failWithErrno();
    }
}

} // namespace

LockedFile::LockedFile(const std::string &path, mode_t mode) : path_(std::filesystem::absolute(path))
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (open(mode)) {
            return;
        }
    }
    throw std::runtime_error("others remove and make it all the time");
}

LockedFile::~LockedFile()
{
    close(descriptor_);
}

// False when whoever had the lock before has removed the file meanwhile.
bool LockedFile::open(mode_t mode)
{
    requireRegularFile(path_);
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode);
    if (descriptor_ < 0) {
        failWithErrno();
    }
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        const int reason = errno;
        close(descriptor_);
        throw std::runtime_error(reason == EWOULDBLOCK ? "another process has locked it"
                                                       : std::generic_category().message(reason));
    }
    if (!isInPlace()) {
        close(descriptor_);
        return false;
    }
    return true;
}

bool LockedFile::isInPlace() const
{
    struct stat ours {
    };
    struct stat named {
    };
    return fstat(descriptor_, &ours) == 0 && S_ISREG(ours.st_mode) && lstat(path_.c_str(), &named) == 0 &&
           ours.st_dev == named.st_dev && ours.st_ino == named.st_ino;
}

void LockedFile::replaceContent(std::string_view content) const
{
    const auto fail = [] { throw std::system_error(errno, std::generic_category()); };
    if (ftruncate(descriptor_, 0) != 0 || lseek(descriptor_, 0, SEEK_SET) != 0) {
        fail();
    }
    while (!content.empty()) {
        const ssize_t written = write(descriptor_, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            fail();
        }
        content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

} // namespace ipmib::agent
