// SPDX-License-Identifier: BSD-3-Clause
// Instances of the platform come and go with the contexts; who may ask in which is the library's affair (VACM).

#include "contexts.h"

#include "net_snmp.h"
#include "snmp_library.h"

#include <exception>
#include <utility>

// The libraries export them and declare them in none of their installed headers.
extern "C" {
void init_vacm_context(void); // vacmContextTable
void netsnmp_udp_parse_security(const char *token, char *line);
void netsnmp_udp6_parse_security(const char *token, char *line);
}

namespace ipmib::agent
{
namespace
{

void configure(std::string line)
{
    line = "[" + std::string(SnmpLibrary::applicationName) + "] " + line;
    netsnmp_config(line.data());
}

// Security names of communities that ask in contexts: one for each line of the configuration.
std::string securityName(std::size_t place)
{
    return "contextcommunity" + std::to_string(place + 1);
}

// The library's own lines: what com2sec, group, view and access would say. The context follows from the community.
void letInto(const ContextSettings::Community &community, std::size_t place, const std::string &context)
{
    const auto lineFrom = [&](const char *source) {
        return "-Cn \"" + context + "\" " + securityName(place) + " " + source + " \"" + community.community + "@" +
               context + "\"";
    };
    const bool isIpv6 = community.source.find(':') != std::string::npos;
    const char *const source = community.source.empty() ? "default" : community.source.c_str();
    const bool isAnywhere = std::string("default") == source;
    std::string line = lineFrom(source);
    if (!isIpv6) {
        netsnmp_udp_parse_security("com2sec", line.data());
    }
    line = lineFrom(source);
    if (isIpv6 || isAnywhere) {
        netsnmp_udp6_parse_security("com2sec6", line.data());
    }
}

void makeGroup(std::size_t place)
{
    const std::string name = securityName(place);
    configure("group " + name + " v1 " + name);
    configure("group " + name + " v2c " + name);
    configure("view " + name + " included .1");
    configure("access " + name + " \"\" any noauth prefix " + name + " none none");
}

} // namespace

Contexts::Contexts(tables::ServedDevice &device, ContextServer &server, const ContextSettings &settings)
    : device_(device), server_(server), settings_(settings)
{
}

void Contexts::serve(const std::vector<const host::ServedTable *> &tables)
{
    tables_ = tables;
    const std::map<std::string, std::string> named = wanted();
    for (auto each = instances_.begin(); each != instances_.end();) {
        const auto found = named.find(each->first);
        const bool stays = found != named.end() && found->second == each->second.argument;
        const std::string name = each->first;
        ++each;
        if (!stays) {
            end(name);
        }
    }
    for (const auto &[name, argument] : named) {
        begin(name, argument);
    }
    if (!instances_.empty() && !std::exchange(areListed_, true)) {
        init_vacm_context();
    }
    letIn();
}

std::map<std::string, std::string> Contexts::wanted()
{
    const IpmibPlatformHooks *platform = device_.catalogue().platform();
    for (const std::string &argument : settings_.followed()) {
        char error[512] = "this platform has one device and no other";
        if (!device_.instances().canBeMany() || platform->instances->follow_contexts == nullptr ||
            platform->instances->follow_contexts(argument.c_str(), error, sizeof error) != 0) {
            error[sizeof error - 1] = '\0';
            snmp_log(LOG_ERR, "contexts %s: %s\n", argument.c_str(), error);
        }
    }
    version_ = versionOfList();
    std::map<std::string, std::string> named = settings_.contexts();
    for (const host::Instances::Context &own : device_.instances().contexts()) {
        named.emplace(own.name, own.argument);
    }
    return named;
}

void Contexts::begin(const std::string &name, const std::string &argument)
{
    try {
        auto found = instances_.find(name);
        if (found == instances_.end()) {
            found = instances_.emplace(name, Instance{argument, device_.instances().create(argument)}).first;
        }
        std::vector<const host::ServedTable *> tables = tables_;
        if (device_.systemGroup() != nullptr) {
            tables.push_back(device_.systemGroup());
        }
        server_.serve(tables, {name, found->second.number});
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "context %s: %s\n", name.c_str(), error.what());
        end(name);
    }
}

void Contexts::end(const std::string &name)
{
    const auto found = instances_.find(name);
    if (found != instances_.end()) {
        server_.leave(name);
        device_.instances().destroy(found->second.number);
        instances_.erase(found);
    }
}

void Contexts::letIn()
{
    const auto &communities = settings_.communities();
    if (groups_ != settings_.version() + 1) {
        groups_ = settings_.version() + 1;
        letIn_.clear();
        for (std::size_t i = 0; i < communities.size(); ++i) {
            makeGroup(i);
        }
    }
    for (const auto &[name, instance] : instances_) {
        if (!letIn_.emplace(name, groups_).second || name.find_first_of("\"\\") != std::string::npos) {
            continue; // once is enough for a context that goes and comes back
        }
        for (std::size_t i = 0; i < communities.size(); ++i) {
            if (communities[i].includes(name)) {
                letInto(communities[i], i, name);
            }
        }
    }
}

std::uint64_t Contexts::versionOfList() const
{
    const IpmibPlatformHooks *platform = device_.catalogue().platform();
    const bool changes = device_.instances().canBeMany() && platform->instances->contexts_changed != nullptr;
    return changes ? platform->instances->contexts_changed() : 0;
}

void Contexts::follow()
{
    if (versionOfList() != version_) {
        serve(tables_);
    }
}

void Contexts::reload()
{
    const IpmibPlatformHooks *platform = device_.catalogue().platform();
    if (platform == nullptr || platform->reload == nullptr) {
        return;
    }
    device_.instances().select(host::Instances::first);
    platform->reload();
    for (const auto &[name, instance] : instances_) {
        device_.instances().select(instance.number);
        platform->reload();
    }
    device_.instances().select(host::Instances::first);
}

} // namespace ipmib::agent
