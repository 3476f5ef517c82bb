// SPDX-License-Identifier: BSD-3-Clause
// The contexts of an agent beside the one without a name: each is an instance of the platform, with all its tables.
#pragma once

#include "context_access.h"
#include "context_server.h"
#include "context_settings.h"
#include "device_addresses.h"
#include "link_notifications.h"
#include "logical_entities.h"

#include "tables/served_device.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ipmib::agent
{

class Contexts
{
  public:
    // What else is told of contexts. Null where that is somebody else's affair, or nobody's.
    struct Beside {
        ContextAccess *access = nullptr;
        DeviceAddresses *addresses = nullptr;
        LogicalEntities *entities = nullptr;
        LinkNotifications *links = nullptr;
    };

    // All outlive it.
    Contexts(tables::ServedDevice &device, ContextServer &server, const ContextSettings &settings,
             const Beside &beside);
    Contexts(const Contexts &) = delete;
    Contexts &operator=(const Contexts &) = delete;

    // Serves these tables, and a system group, in each context that the settings and the platform name now; one that
    // nobody names any more ends. What cannot be begun is logged, and tried again the next time.
    void serve(const std::vector<const host::ServedTable *> &tables);
    // The same when the platform's list has changed; whether it has.
    bool follow();
    // Has the platform read its files again, for all instances.
    void reload();

    std::size_t size() const { return instances_.size(); }

    // The instance behind a context, also behind the one without a name.
    std::optional<std::size_t> instanceOf(const std::string &context) const;
    // All that a name stands for, with the instances: one context, or with a `*` at its end all that begin so.
    using Numbered = std::pair<std::string, std::size_t>;
    std::vector<Numbered> matching(const std::string &name) const;

  private:
    struct Instance {
        std::string argument;
        std::size_t number;
    };

    std::map<std::string, host::Instances::Context> wanted();
    void begin(const host::Instances::Context &context);
    void tell(const host::Instances::Context &context, std::size_t number);
    void listen(const host::Instances::Context &context);
    void end(const std::string &name);
    std::uint64_t versionOfList() const;

    tables::ServedDevice &device_;
    ContextServer &server_;
    const ContextSettings &settings_;
    Beside beside_;
    std::vector<const host::ServedTable *> tables_;
    std::map<std::string, Instance> instances_; // by the context's name
    std::uint64_t version_ = 0;                 // of the platform's list
};

} // namespace ipmib::agent
