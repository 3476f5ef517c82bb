// SPDX-License-Identifier: BSD-3-Clause
// Follows radvd's configuration file. Directories are watched, not the file: editors replace it by renaming another one
// over it, and it need not exist yet.
#include "advertisements/radvd_file.h"

#include "core/log.h"

#include "support/named_file.h"

#include <sys/inotify.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace ipmib::platform
{
namespace
{

constexpr std::size_t largestFile = 1'048'576;
constexpr std::string_view noFile = "/dev/null"; // written all the time, by everybody, and always empty
// Not IN_MODIFY: a file that is being written is read when its writer closes it.
constexpr std::uint32_t watchedEvents = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE |
                                        IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

std::pair<std::string, std::string> split(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return {".", path};
    }
    return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

bool isPlainFile(const std::string &path)
{
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

} // namespace

RadvdFile::~RadvdFile()
{
    if (inotify_) {
        loop_->forget(inotify_.get());
    }
}

void RadvdFile::start(PlatformLoop &loop, std::string path)
{
    loop_ = &loop;
    path_ = std::move(path);
    inotify_ = Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify_ || !loop.watch(inotify_.get(), PlatformLoop::Work::background, [this] { readEvents(); })) {
        logWarning("radvd: cannot watch %s: %s; it is read again on reload only", path_.c_str(), std::strerror(errno));
    }
    reload();
}

void RadvdFile::reload()
{
    watch(); // first: what changes from here on is seen
    read();
}

const RadvdInterface *RadvdFile::find(std::string_view interface) const
{
    const auto found = conf_.find(interface);
    return found == conf_.end() ? nullptr : &found->second;
}

// The file's directory, and, when the file is a link to another place, the directory of that place.
void RadvdFile::watch()
{
    for (const auto &[directory, entry] : entries_) {
        inotify_rm_watch(inotify_.get(), directory);
    }
    entries_.clear();
    watchEntry(path_);
    char target[PATH_MAX];
    if (realpath(path_.c_str(), target) != nullptr) {
        watchEntry(target);
    }
}

// While a directory is missing, the nearest one above it that is there.
void RadvdFile::watchEntry(const std::string &path)
{
    if (path == noFile) {
        return;
    }
    const auto [directory, entry] = split(path);
    const int watched = inotify_add_watch(inotify_.get(), directory.c_str(), watchedEvents);
    if (watched >= 0) {
        entries_.emplace(watched, entry);
    } else if ((errno == ENOENT || errno == ENOTDIR) && directory != "/" && directory != ".") {
        watchEntry(directory);
    }
}

bool RadvdFile::matters(const inotify_event &event, std::string_view name) const
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        return true;
    }
    // A new file is still being written; its writer closes it. A new link or directory is complete.
    if ((event.mask & IN_CREATE) != 0 && (event.mask & IN_ISDIR) == 0 && isPlainFile(path_)) {
        return false;
    }
    const auto [first, last] = entries_.equal_range(event.wd);
    return std::any_of(first, last, [&](const auto &entry) { return name.empty() || name == entry.second; });
}

void RadvdFile::readEvents()
{
    std::array<char, 4096> buffer;
    bool changed = false;
    ssize_t length = 0;
    while ((length = ::read(inotify_.get(), buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < length;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + at, sizeof event);
            changed = changed || matters(event, event.len != 0 ? buffer.data() + at + sizeof event : "");
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    if (changed) {
        reload();
    }
}

void RadvdFile::read()
{
    const support::NamedFile file = support::readNamedFile(path_, largestFile);
    if (file.error != 0 && file.error != ENOENT && file.error != ENOTDIR) {
        complain(path_ + ": cannot be read: " + file.reason);
    } else if (file.text != text_ || !complaint_.empty()) {
        use(file.text);
    }
}

void RadvdFile::use(const std::string &text)
{
    if (const auto mistake = parseRadvdConf(text, path_, conf_)) {
        complain(*mistake);
        return;
    }
    text_ = text;
    complaint_.clear();
    logInfo("radvd: interfaces that %s names: %zu", path_.c_str(), conf_.size());
    for (const auto &[name, interface] : conf_) {
        if (interface.sendAdverts && !interface.refusal.empty()) {
            logWarning("radvd: %s:%u: radvd sends nothing on %s: %s", path_.c_str(), interface.line, name.c_str(),
                       interface.refusal.c_str());
        }
    }
}

void RadvdFile::complain(const std::string &line)
{
    if (line != complaint_) {
        logError("radvd: %s; the settings stay as they were", line.c_str());
        complaint_ = line;
    }
}

} // namespace ipmib::platform
