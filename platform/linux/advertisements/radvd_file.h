// SPDX-License-Identifier: BSD-3-Clause
// radvd's configuration file, read again whenever it changes; after a mistake in it the last good settings stay.
#pragma once

#include "advertisements/radvd_conf.h"
#include "core/platform_loop.h"

#include <sys/inotify.h>

#include <map>
#include <string>
#include <string_view>

namespace ipmib::platform
{

class RadvdFile
{
  public:
    ~RadvdFile();
    RadvdFile() = default;
    RadvdFile(const RadvdFile &) = delete;
    RadvdFile &operator=(const RadvdFile &) = delete;

    // Reads the file, which may be missing, and follows it from now on.
    void start(PlatformLoop &loop, std::string path);
    // Looks at the file whether or not it seems to have changed.
    void reload();

    // Null for an interface that the file does not name.
    const RadvdInterface *find(std::string_view interface) const;

  private:
    void watch();
    void watchEntry(const std::string &path);
    void readEvents();
    bool matters(const inotify_event &event, std::string_view name) const;
    void read();
    void use(const std::string &text);
    void complain(const std::string &line);

    PlatformLoop *loop_ = nullptr;
    std::string path_;
    Descriptor inotify_;
    std::multimap<int, std::string> entries_; // by watched directory: the entries in it whose change matters
    RadvdConf conf_;
    std::string text_;      // what conf_, or the complaint, came from
    std::string complaint_; // the last one, so that it is logged once
};

} // namespace ipmib::platform
