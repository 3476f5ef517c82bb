// SPDX-License-Identifier: BSD-3-Clause
// Opened early, so that a path that cannot be written is reported to the terminal; written late, by the daemon itself.

#include "pid_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace ipmib::agent
{

namespace
{

using Seconds = std::chrono::duration<double>;

[[noreturn]] void failToWrite(const std::string &path, const std::string &reason)
{
    throw std::runtime_error("cannot write the process id to " + path + ": " + reason);
}

// When a process began, in seconds since 1970; nothing when there is none.
std::optional<Seconds> beginOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    // The name stands in parentheses, and may itself have spaces and parentheses; the time is the 20th word behind it.
    std::istringstream words(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string ticks;
    for (int word = 0; word < 20; ++word) {
        words >> ticks;
    }
    long long sinceBoot = 0;
    if (!words || std::from_chars(ticks.data(), ticks.data() + ticks.size(), sinceBoot).ec != std::errc()) {
        return std::nullopt;
    }
    timespec upTime{};
    clock_gettime(CLOCK_BOOTTIME, &upTime);
    const Seconds age = Seconds(static_cast<double>(upTime.tv_sec) + static_cast<double>(upTime.tv_nsec) * 1e-9) -
                        Seconds(static_cast<double>(sinceBoot) / static_cast<double>(sysconf(_SC_CLK_TCK)));
    return Seconds(std::chrono::system_clock::now().time_since_epoch()) - age;
}

// Why the file is not ours to take; empty when it is. A daemon may keep its id there without a lock. A process that has
// begun after the file was written got the number of one that has ended.
std::string objection(int descriptor)
{
    char text[32];
    const ssize_t length = pread(descriptor, text, sizeof text, 0);
    struct stat status {
    };
    if (length < 0 || fstat(descriptor, &status) != 0) {
        return "it cannot be read";
    }
    if (length == 0) {
        return "";
    }
    pid_t process = 0;
    const auto [end, error] = std::from_chars(text, text + length, process);
    if (error != std::errc() || process <= 0 ||
        std::string_view(end, text + length).find_first_not_of('\n') != std::string_view::npos) {
        return "it holds something else";
    }
    constexpr Seconds precision(1);
    const std::optional<Seconds> begin = beginOf(process);
    const bool isItsOwn = begin && *begin < Seconds(static_cast<double>(status.st_mtime)) + precision;
    return isItsOwn && process != getpid() ? "it is that of process " + std::to_string(process) + ", which runs" : "";
}

} // namespace

PidFile::PidFile(const std::string &path)
{
    if (path.empty()) {
        return;
    }
    try {
        file_.emplace(path, 0644);
    } catch (const std::runtime_error &error) {
        failToWrite(path, error.what());
    }
    if (const std::string reason = objection(file_->descriptor()); !reason.empty()) {
        failToWrite(path, reason);
    }
}

void PidFile::remove() const
{
    if (file_ && file_->isInPlace()) {
        unlink(file_->path().c_str());
    }
}

void PidFile::write() const
{
    try {
        if (file_) {
            file_->replaceContent(std::to_string(getpid()) + "\n");
        }
    } catch (const std::system_error &error) {
        failToWrite(file_->path(), error.code().message());
    }
}

} // namespace ipmib::agent
