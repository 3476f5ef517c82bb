// SPDX-License-Identifier: BSD-3-Clause
// Instances of the platform come and go with the contexts; who may ask in which is the library's affair (VACM).

#include "contexts.h"

#include "net_snmp.h"

#include <exception>
#include <utility>

namespace ipmib::agent
{

Contexts::Contexts(tables::ServedDevice &device, ContextServer &server, const ContextSettings &settings,
                   const Beside &beside)
    : device_(device), server_(server), settings_(settings), beside_(beside)
{
}

void Contexts::serve(const std::vector<const host::ServedTable *> &tables)
{
    tables_ = tables;
    const std::map<std::string, host::Instances::Context> named = wanted();
    for (auto each = instances_.begin(); each != instances_.end();) {
        const auto found = named.find(each->first);
        const bool stays = found != named.end() && found->second.argument == each->second.argument;
        const std::string name = each->first;
        ++each;
        if (!stays) {
            end(name);
        }
    }
    for (const auto &[name, context] : named) {
        begin(context);
    }
    if (beside_.access != nullptr) {
        beside_.access->renew();
    }
}

std::optional<std::size_t> Contexts::instanceOf(const std::string &context) const
{
    if (context.empty()) {
        return host::Instances::first;
    }
    const auto found = instances_.find(context);
    return found == instances_.end() ? std::nullopt : std::optional(found->second.number);
}

std::vector<Contexts::Numbered> Contexts::matching(const std::string &name) const
{
    if (!name.ends_with('*')) {
        const auto instance = instanceOf(name);
        return instance ? std::vector<Numbered>{{name, *instance}} : std::vector<Numbered>{};
    }
    const std::string beginning = name.substr(0, name.size() - 1);
    std::vector<Numbered> all;
    if (beginning.empty()) {
        all.emplace_back("", host::Instances::first);
    }
    for (const auto &[context, instance] : instances_) {
        if (context.starts_with(beginning)) {
            all.emplace_back(context, instance.number);
        }
    }
    return all;
}

std::map<std::string, host::Instances::Context> Contexts::wanted()
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
    std::map<std::string, host::Instances::Context> named;
    for (const auto &[name, argument] : settings_.contexts()) {
        named[name] = {name, argument, ""};
    }
    for (const host::Instances::Context &own : device_.instances().contexts()) {
        named.emplace(own.name, own);
    }
    return named;
}

void Contexts::begin(const host::Instances::Context &context)
{
    const auto &[name, argument, address] = context;
    try {
        auto found = instances_.find(name);
        if (found == instances_.end()) {
            found = instances_.emplace(name, Instance{argument, device_.instances().create(argument)}).first;
        }
        std::vector<const host::ServedTable *> tables = tables_;
        if (device_.systemGroup() != nullptr) {
            tables.push_back(device_.systemGroup());
        }
        device_.instances().select(found->second.number);
        const host::ServedTable *recorded = device_.recordedObjects();
        if (recorded != nullptr && beside_.access != nullptr) { // a master has objects of its own between the tables
            tables.push_back(recorded);
        }
        server_.serve(tables, {name, found->second.number});
        tell(context, found->second.number);
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "context %s: %s\n", name.c_str(), error.what());
        end(name);
    }
}

void Contexts::tell(const host::Instances::Context &context, std::size_t number)
{
    if (beside_.access != nullptr) {
        beside_.access->add(context.name);
    }
    if (beside_.links != nullptr) {
        beside_.links->begin({context.name, number});
    }
    std::vector<std::uint8_t> address;
    if (beside_.addresses != nullptr) {
        listen(context);
        address = beside_.addresses->addressOf(context.name);
    }
    if (beside_.entities != nullptr) {
        beside_.entities->set(static_cast<std::uint32_t>(number), {context.name, context.argument, std::move(address)});
    }
}

void Contexts::listen(const host::Instances::Context &context)
{
    try {
        if (context.address.empty()) {
            beside_.addresses->close(context.name);
        } else {
            beside_.addresses->open(context.name, context.address);
        }
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "context %s: %s\n", context.name.c_str(), error.what());
    }
}

void Contexts::end(const std::string &name)
{
    const auto found = instances_.find(name);
    if (found != instances_.end()) {
        if (beside_.access != nullptr) {
            beside_.access->remove(name);
        }
        if (beside_.addresses != nullptr) {
            beside_.addresses->close(name);
        }
        if (beside_.entities != nullptr) {
            beside_.entities->remove(static_cast<std::uint32_t>(found->second.number));
        }
        if (beside_.links != nullptr) {
            beside_.links->end(name);
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

bool Contexts::follow()
{
    const bool hasChanged = versionOfList() != version_;
    if (hasChanged) {
        serve(tables_);
    }
    return hasChanged;
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
