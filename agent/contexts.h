// SPDX-License-Identifier: BSD-3-Clause
// The contexts of an agent beside the one without a name: each is an instance of the platform, with all its tables.
#pragma once

#include "context_access.h"
#include "context_server.h"
#include "context_settings.h"

#include "tables/served_device.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ipmib::agent
{

class Contexts
{
  public:
    // All outlive it. Null for somebody else's access, and listing.
    Contexts(tables::ServedDevice &device, ContextServer &server, const ContextSettings &settings,
             ContextAccess *access = nullptr);
    Contexts(const Contexts &) = delete;
    Contexts &operator=(const Contexts &) = delete;

    // Serves these tables, and a system group, in each context that the settings and the platform name now; one that
    // nobody names any more ends. What cannot be begun is logged, and tried again the next time.
    void serve(const std::vector<const host::ServedTable *> &tables);
    // The same when the platform's list has changed.
    void follow();
    // Has the platform read its files again, for all instances.
    void reload();

    std::size_t size() const { return instances_.size(); }

  private:
    struct Instance {
        std::string argument;
        std::size_t number;
    };

    std::map<std::string, std::string> wanted();
    void begin(const std::string &name, const std::string &argument);
    void end(const std::string &name);
    std::uint64_t versionOfList() const;

    tables::ServedDevice &device_;
    ContextServer &server_;
    const ContextSettings &settings_;
    ContextAccess *access_;
    std::vector<const host::ServedTable *> tables_;
    std::map<std::string, Instance> instances_; // by the context's name
    std::uint64_t version_ = 0;                 // of the platform's list
};

} // namespace ipmib::agent
