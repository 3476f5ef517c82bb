// SPDX-License-Identifier: BSD-3-Clause
// A device in this process: its platform, the module, and the tables through which every value comes.
#pragma once

#include "object_tree.h"
#include "options.h"

#include "host/byte_store.h"
#include "host/plugin.h"
#include "tables/served_device.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::cli
{

class LocalDevice
{
  public:
    // Throws host::PluginError.
    explicit LocalDevice(const host::PluginOptions &options);

    // Shows this context from here on; throws std::runtime_error when there is none of this name. Empty stands for the
    // one without a name.
    void select(const std::string &context);
    // Those with a name that the platform has by itself.
    std::vector<host::Instances::Context> contexts();

    const ObjectTree &tree() const { return device_.catalogue(); }

    // Answers the variables from whatever tables they ask for.
    void get(std::span<host::Variable> variables);
    // The same for the successors within a table; none follows within what is no table.
    void getNext(std::span<host::Variable> variables, host::OidView table);

    // Of which version rows are read from here on, unless a reader wants all.
    void show(Version version) { shown_ = version; }
    Version shown() const { return shown_; }

    // What is asked from here on is answered from the device's state of this moment.
    void freshState();
    // Lets the platform work, until so many milliseconds have passed or a signal has come; false for a signal.
    bool wait(int milliseconds);

    // Its tables, its system group when it has one of its own, and recorded objects beside them. All are begun.
    std::vector<const host::ServedTable *> allServed();
    // Has the platform read its files again.
    void reload();

    // Null when the platform knows of none.
    const IpmibRouteHooks *routes();

    // Seconds since the device's boot.
    std::uint32_t uptime() const;

    // How many bits of an interface's link-local address are its prefix; 0 when that is not known.
    std::uint32_t linkLocalPrefixLength(std::uint32_t ifIndex) const;

    // As people know it, with what is not printable escaped; its number when it has no name.
    std::string interfaceName(std::uint32_t ifIndex) const;
    // Of all interfaces, as interfaceName has them.
    std::vector<std::string> interfaceNames();
    // The ifIndex of a name, escaped or not, or of a number; throws std::runtime_error when there is no such interface.
    std::uint32_t interfaceIndex(std::string_view name);

  private:
    std::vector<std::uint32_t> interfaceIndexes();
    void begin(host::Source &source);

    host::Plugin plugin_;
    tables::ServedDevice device_;
    Version shown_ = Version::both;
    host::ByteStore store_; // of what get has answered
};

} // namespace ipmib::cli
