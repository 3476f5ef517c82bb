// SPDX-License-Identifier: BSD-3-Clause
// A file of /proc that is read again and again.
#include "core/proc_file.h"

#include "namespaces/network_namespace.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>

namespace ipmib::platform
{

bool ProcFile::open()
{
    if (!fd_) {
        fd_ = NetworkNamespace::openFile(path_);
        error_ = fd_ ? 0 : errno;
    }
    return static_cast<bool>(fd_);
}

std::string_view ProcFile::read(char *buffer, std::size_t capacity)
{
    // These files give all they have in one read.
    const ssize_t length = open() ? pread(fd_.get(), buffer, capacity, 0) : 0;
    return {buffer, static_cast<std::size_t>(length > 0 ? length : 0)};
}

bool ProcFile::readAll(std::string &content)
{
    content.clear();
    if (!open()) {
        return false;
    }
    constexpr std::size_t piece = 16 * 1024;
    ssize_t length = 0;
    do {
        const std::size_t at = content.size();
        content.resize(at + piece);
        length = pread(fd_.get(), content.data() + at, piece, static_cast<off_t>(at));
        content.resize(at + static_cast<std::size_t>(length > 0 ? length : 0));
    } while (length > 0);
    return length == 0;
}

std::optional<std::uint32_t> ProcFile::readNumber()
{
    char buffer[32];
    const std::string_view text = read(buffer, sizeof buffer);
    std::uint32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc()) {
        number_ = value;
    } else if (isAbsent()) {
        number_.reset();
    }
    return number_;
}

} // namespace ipmib::platform
