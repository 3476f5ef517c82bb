// SPDX-License-Identifier: BSD-3-Clause
// Instances of the platform come and go with the contexts; who may ask in which is the library's affair (VACM).

#include "contexts.h"

#include "net_snmp.h"

#include <exception>

namespace ipmib::agent
{

Contexts::Contexts(tables::ServedDevice &device, ContextServer &server, const ContextSettings &settings,
                   ContextAccess *access)
    : device_(device), server_(server), settings_(settings), access_(access)
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
    if (access_ != nullptr) {
        access_->renew();
    }
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
        if (access_ != nullptr) {
            access_->add(name);
        }
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "context %s: %s\n", name.c_str(), error.what());
        end(name);
    }
}

void Contexts::end(const std::string &name)
{
    const auto found = instances_.find(name);
    if (found != instances_.end()) {
        if (access_ != nullptr) {
            access_->remove(name);
        }
        server_.leave(name);
        device_.instances().destroy(found->second.number);
        instances_.erase(found);
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
