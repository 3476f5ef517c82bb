// SPDX-License-Identifier: BSD-3-Clause
// Who may ask in contexts by the lines `contextcommunity`. For com2sec and access the library would want a line for
// each context, and go through all of them for each variable of each packet; here it is one look-up, in front of the
// library's own check.
#pragma once

#include "context_settings.h"
#include "net_snmp.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace ipmib::agent
{

class ContextAccess
{
  public:
    // Whether the agent has vacmContextTable, which lists what the library knows of contexts, by itself.
    enum class Listing { agents, ours };

    // From here on the library asks here what a packet may see. One at a time; the settings outlive it.
    ContextAccess(const ContextSettings &settings, Listing listing);
    ~ContextAccess();
    ContextAccess(const ContextAccess &) = delete;
    ContextAccess &operator=(const ContextAccess &) = delete;

    // There is this context now, or not any more.
    void add(const std::string &context);
    void remove(const std::string &context) { contexts_.erase(context); }
    // The configuration may have been read anew.
    void renew();

  private:
    static int check(int major, int minor, void *parameters, void *self);

    // The context that the packet's community may ask in.
    const std::string *admits(const netsnmp_pdu &packet) const;
    const std::string *admits(const ContextSettings::Community &line, std::string_view community,
                              const std::string *own) const;
    static int checkAt(const std::string &own, int major, int minor, view_parameters &asked);
    bool isFrom(std::size_t line, const netsnmp_pdu &packet) const;

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    const ContextSettings &settings_;
    Listing listing_;
    std::optional<unsigned> renewed_; // the version of the settings whose sources the library knows
    std::unordered_set<std::string, Hash, std::equal_to<>> contexts_;
};

} // namespace ipmib::agent
