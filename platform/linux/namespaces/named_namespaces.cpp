// SPDX-License-Identifier: BSD-3-Clause
// After an event the folder is read as a whole: there are some hundred names at most, and events may be lost.
#include "namespaces/named_namespaces.h"

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace ipmib::platform
{
namespace
{

constexpr std::size_t longestName = 32; // of a context

std::string parentOf(const std::string &folder)
{
    return std::filesystem::path(folder).parent_path();
}

} // namespace

std::string NamedNamespaces::follow(PlatformLoop &loop)
{
    if (events_) {
        return "";
    }
    events_ = Descriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!events_ || !again_.open(loop, [this] { look(); }) ||
        !loop.watch(events_.get(), PlatformLoop::Work::background, [this] { takeEvents(); })) {
        return std::string("cannot watch for network namespaces: ") + std::strerror(errno);
    }
    inotify_add_watch(events_.get(), parentOf(folder_).c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR);
    watchFolder();
    look();
    return "";
}

// The first `ip netns add` after the start of the machine makes the folder.
void NamedNamespaces::watchFolder()
{
    watchesFolder_ =
        inotify_add_watch(events_.get(), folder_.c_str(),
                          IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_ONLYDIR) >= 0;
}

void NamedNamespaces::takeEvents()
{
    alignas(inotify_event) std::array<char, 4096> events;
    while (read(events_.get(), events.data(), events.size()) > 0) {
    }
    watchFolder();
    looks_ = 0;
    look();
}

void NamedNamespaces::look()
{
    std::vector<Named> found;
    bool isUnfinished = false;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder_, error)) {
        const std::string name = entry.path().filename();
        struct statfs about {
        };
        struct stat file {
        };
        if (name.size() > longestName || statfs(entry.path().c_str(), &about) != 0 ||
            stat(entry.path().c_str(), &file) != 0) {
            continue;
        }
        if (about.f_type != NSFS_MAGIC) {
            isUnfinished = true;
            continue;
        }
        found.push_back({name, "netns " + entry.path().string() + " " + std::to_string(file.st_ino)});
    }
    std::ranges::sort(found, {}, &Named::name);
    if (!std::ranges::equal(found, all_, {}, &Named::argument, &Named::argument)) {
        all_ = std::move(found);
        ++version_;
    }
    if (isUnfinished && looks_ < mostLooks) {
        ++looks_;
        again_.arm(looks_ <= looksSoon ? soonMs : laterMs);
    }
}

} // namespace ipmib::platform
