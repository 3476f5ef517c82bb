// SPDX-License-Identifier: BSD-3-Clause
// Selecting is done for each packet: it costs nothing when nothing changes.
#include "instances.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace ipmib::host
{
namespace
{

const IpmibInstanceHooks *hooksOf(const IpmibPlatformHooks *platform)
{
    const IpmibInstanceHooks *hooks = platform == nullptr ? nullptr : platform->instances;
    const bool areUsable =
        hooks != nullptr && hooks->create != nullptr && hooks->destroy != nullptr && hooks->select != nullptr;
    return areUsable ? hooks : nullptr;
}

} // namespace

Instances::Instances(Catalogue &catalogue, SysUpTime &upTime)
    : catalogue_(catalogue), upTime_(upTime), hooks_(hooksOf(catalogue.platform()))
{
}

Instances::~Instances()
{
    for (std::size_t i = first + 1; i < instances_.size(); ++i) {
        destroy(i);
    }
}

std::size_t Instances::create(const std::string &argument)
{
    if (hooks_ == nullptr) {
        throw std::runtime_error("this platform has one device and no other");
    }
    char error[512] = "it does not say why";
    IpmibInstance *handle = nullptr;
    if (hooks_->create(argument.c_str(), &handle, error, sizeof error) != 0) {
        error[sizeof error - 1] = '\0';
        throw std::runtime_error(error);
    }
    const auto place = std::find_if(instances_.begin() + 1, instances_.end(),
                                    [](const Instance &instance) { return instance.handle == nullptr; });
    const auto number = static_cast<std::size_t>(place - instances_.begin());
    instances_.resize(std::max(instances_.size(), number + 1));
    instances_[number] = {handle, 0};
    return number;
}

void Instances::destroy(std::size_t instance)
{
    if (instance == first || instances_[instance].handle == nullptr) {
        return;
    }
    if (instance == selected_) {
        select(first);
    }
    catalogue_.forget(instance);
    hooks_->destroy(std::exchange(instances_[instance].handle, nullptr));
}

void Instances::select(std::size_t instance)
{
    if (instance == selected_) {
        const IpmibPlatformHooks *platform = catalogue_.platform();
        if (upTime_.isOfDevice() && platform->rehearsal != nullptr) { // it may have been booted again
            showUpTime();
        }
        return;
    }
    hooks_->select(instances_[instance].handle);
    catalogue_.select(instance);
    selected_ = instance;
    showUpTime();
}

void Instances::showUpTime()
{
    const IpmibPlatformHooks *platform = catalogue_.platform();
    if (selected_ != first && platform->uptime_ms != nullptr) {
        upTime_.showOthers(platform->uptime_ms());
        return;
    }
    upTime_.showOwn();
    if (upTime_.isOfDevice()) {
        upTime_.isDevices(catalogue_.platform()->uptime_ms());
        return;
    }
    std::uint64_t &told = instances_[selected_].uptimeVersion;
    if (told != upTime_.version()) {
        told = upTime_.version();
        upTime_.tellAgain();
    }
}

std::vector<Instances::Context> Instances::contexts() const
{
    std::vector<Context> contexts;
    IpmibContext context{};
    while (hooks_ != nullptr && hooks_->context != nullptr && hooks_->context(contexts.size(), &context) == 0) {
        contexts.push_back({context.name, context.argument, ""});
        const char *const address =
            hooks_->context_address == nullptr ? nullptr : hooks_->context_address(contexts.size() - 1);
        if (address != nullptr) {
            contexts.back().address = address;
        }
    }
    return contexts;
}

} // namespace ipmib::host
