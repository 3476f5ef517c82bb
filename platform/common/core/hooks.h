// SPDX-License-Identifier: BSD-3-Clause
// What a host calls to drive a platform: the hooks over the instances of the platform, from start to stop.
#pragma once

#include "core/hook_call.h"
#include "core/log.h"
#include "core/selected.h"

#include <ipmib/platform_hooks.h>

#include <concepts>
#include <memory>
#include <string>
#include <utility>

namespace ipmib::platform
{

// What is answered is one line for the user when it fails, and nothing otherwise.
template <class Result>
concept Complaint = std::convertible_to<Result, std::string>;

// What the interface tables need: whether there was something to fill in.
template <class Platform>
concept HasInterfaces = requires(Platform &platform, IpmibInterface &interface, IpmibInterfaceTraffic &traffic)
{
    {
        platform.findInterface(std::uint32_t{}, interface)
        } -> std::same_as<bool>;
    {
        platform.interfaceAfter(std::uint32_t{}, interface)
        } -> std::same_as<bool>;
    {
        platform.traffic(std::uint32_t{}, traffic)
        } -> std::same_as<bool>;
    {
        platform.interfaceCount()
        } -> std::same_as<std::uint32_t>;
    {
        platform.interfacesChangedMs()
        } -> std::same_as<std::uint64_t>;
};

// Likewise for the IPv4 tables, which are followed first.
template <class Platform>
concept HasIpv4 = requires(Platform &platform, IpmibIpv4Address &address, IpmibIpv4Neighbour &neighbour)
{
    {
        platform.followIpv4()
        } -> Complaint;
    {
        platform.ipv4().findAddress(std::uint32_t{}, address)
        } -> std::same_as<bool>;
    {
        platform.ipv4().addressAfter(std::uint32_t{}, address)
        } -> std::same_as<bool>;
    {
        platform.ipv4().findNeighbour(std::uint32_t{}, std::uint32_t{}, neighbour)
        } -> std::same_as<bool>;
    {
        platform.ipv4().neighbourAfter(std::uint32_t{}, std::uint32_t{}, neighbour)
        } -> std::same_as<bool>;
};

// A platform is told its argument and its options, and then started; its services answer for `selected<Platform>`.
//
// It may have: uptimeBegan(std::uint64_t monotonicMs), uptimeMs(), onLinkChange(IpmibLinkChanged, void *),
// areCurrent(std::uint32_t rows), and ip(), routes() and connections(), objects with a member for each function of
// IpmibIpHooks, IpmibRouteHooks and IpmibConnectionHooks. For one that has it not the hook is null.
//
// One with startAnother(const std::string &argument, Platform &another) has instances: the one that `start` began fills
// another one there, and answers as start does. It also has findContext(std::size_t place, IpmibContext &context),
// contextsChanged() and followContexts(const char *argument), which answers as start does, and maybe
// contextAddress(std::size_t place). One that has a system group has findSystem(IpmibSystem &system), one with recorded
// objects recorded(), with a member for each function of IpmibRecordedHooks, and one that is made up
// nextAnswer(IpmibAnswerFaults &faults), reboots() and change(const char *text, std::size_t length, int takesEffect),
// which answers as start does.
template <class Platform>
concept HookedPlatform = HasInterfaces<Platform> && HasIpv4<Platform> && std::default_initializable<Platform> &&
    requires(Platform &platform, const IpmibPlatformOption &option)
{
    {
        platform.takeArgument("")
        } -> Complaint;
    {
        platform.takeOption(option)
        } -> Complaint;
    {
        platform.start()
        } -> Complaint;
    {
        platform.descriptor()
        } -> std::same_as<int>;
    platform.dispatch();
    platform.beginPacket();
    platform.reload();
    {
        platform.interfaceName(std::uint32_t{})
        } -> std::same_as<const char *>;
    setRunning(&platform);
};

template <HookedPlatform Platform>
class Hooks
{
  public:
    static constexpr IpmibPlatformHooks record()
    {
        return {sizeof(IpmibPlatformHooks),
                start,
                stop,
                descriptor,
                hookCall<first, &Platform::dispatch>,
                hookCall<running, &Platform::beginPacket>,
                hookCall<running, &Platform::reload>,
                hookCall<running, &Platform::interfaceName>,
                &interfaces,
                &ipv4,
                ipHooks(),
                uptimeBegan(),
                uptimeMs(),
                routeHooks(),
                onLinkChange(),
                instanceHooks(),
                systemHook(),
                connectionHooks(),
                recordedHooks(),
                rehearsalHooks(),
                areCurrent()};
    }

  private:
    static int start(const IpmibPlatformHost *host, char *error, std::size_t capacity)
    {
        setLogSink(host->log);
        first_ = std::make_unique<Platform>();
        const int result = startFirst(*host, error, capacity);
        if (result != 0) {
            stop();
            return result;
        }
        choose(first_.get());
        return 0;
    }

    static int startFirst(const IpmibPlatformHost &host, char *error, std::size_t capacity)
    {
        const char *argument = host.argument == nullptr ? "" : host.argument;
        if (hookFailure(first_->takeArgument(argument), error, capacity) != 0) {
            return IPMIB_WRONG_ARGUMENT;
        }
        for (std::size_t i = 0; i < host.option_count; ++i) {
            if (hookFailure(first_->takeOption(host.options[i]), error, capacity) != 0) {
                return IPMIB_WRONG_OPTION + static_cast<int>(i);
            }
        }
        return hookFailure(first_->start(), error, capacity);
    }

    // A platform with wasSelected() is told.
    static void choose(Platform *platform)
    {
        selected<Platform> = platform;
        if constexpr (requires { platform->wasSelected(); }) {
            if (platform != nullptr) {
                platform->wasSelected();
            }
        }
    }

    static void stop()
    {
        choose(nullptr);
        first_.reset();
        setLogSink(nullptr);
    }

    static int descriptor() { return first_ ? first_->descriptor() : -1; }

    static Platform *first() { return first_.get(); }
    static Platform *running() { return selected<Platform>; }
    static constexpr IpmibInterfaceHooks interfaces = {
        hookCall<running, &Platform::findInterface>, hookCall<running, &Platform::interfaceAfter>,
        hookCall<running, &Platform::traffic>, hookCall<running, &Platform::interfaceCount>,
        hookCall<running, &Platform::interfacesChangedMs>};

    using Ipv4 = std::remove_reference_t<decltype(std::declval<Platform &>().ipv4())>;
    static Ipv4 *ipv4Rows() { return running() != nullptr ? &running()->ipv4() : nullptr; }
    static constexpr IpmibIpv4Hooks ipv4 = {
        hookCall<running, &Platform::followIpv4>, hookCall<ipv4Rows, &Ipv4::findAddress>,
        hookCall<ipv4Rows, &Ipv4::addressAfter>, hookCall<ipv4Rows, &Ipv4::findNeighbour>,
        hookCall<ipv4Rows, &Ipv4::neighbourAfter>};

    static constexpr const IpmibIpHooks *ipHooks()
    {
        if constexpr (requires(Platform & platform) { platform.ip(); }) {
            return &IpRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }
    static constexpr const IpmibRouteHooks *routeHooks()
    {
        if constexpr (requires(Platform & platform) { platform.routes(); }) {
            return &RouteRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }
    static constexpr const IpmibConnectionHooks *connectionHooks()
    {
        if constexpr (requires(Platform & platform) { platform.connections(); }) {
            return &ConnectionRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }
    static constexpr decltype(IpmibPlatformHooks::uptime_began) uptimeBegan()
    {
        if constexpr (requires(Platform & platform) { platform.uptimeBegan(std::uint64_t{}); }) {
            return hookCall<running, &Platform::uptimeBegan>;
        } else {
            return nullptr;
        }
    }

    static constexpr decltype(IpmibPlatformHooks::uptime_ms) uptimeMs()
    {
        if constexpr (requires(Platform & platform) { platform.uptimeMs(); }) {
            return hookCall<running, &Platform::uptimeMs>;
        } else {
            return nullptr;
        }
    }

    static constexpr decltype(IpmibPlatformHooks::on_link_change) onLinkChange()
    {
        if constexpr (requires(Platform & platform) { platform.onLinkChange(nullptr, nullptr); }) {
            return hookCall<running, &Platform::onLinkChange>;
        } else {
            return nullptr;
        }
    }

    static constexpr decltype(IpmibPlatformHooks::are_current) areCurrent()
    {
        if constexpr (requires(Platform & platform) { platform.areCurrent(std::uint32_t{}); }) {
            return hookCall<running, &Platform::areCurrent>;
        } else {
            return nullptr;
        }
    }

    static constexpr decltype(IpmibPlatformHooks::system) systemHook()
    {
        if constexpr (requires(Platform & platform, IpmibSystem & system) { platform.findSystem(system); }) {
            return hookCall<running, &Platform::findSystem>;
        } else {
            return nullptr;
        }
    }

    static constexpr const IpmibInstanceHooks *instanceHooks()
    {
        if constexpr (requires(Platform & platform) { platform.startAnother(std::string(), platform); }) {
            return &InstanceRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }

    static constexpr const IpmibRecordedHooks *recordedHooks()
    {
        if constexpr (requires(Platform & platform) { platform.recorded(); }) {
            return &RecordedRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }

    static constexpr const IpmibRehearsalHooks *rehearsalHooks()
    {
        if constexpr (requires(Platform & platform) { platform.reboots(); }) {
            return &RehearsalRecord<Platform>::hooks;
        } else {
            return nullptr;
        }
    }

    // A template of its own, of which nothing is looked at for a platform without ip().
    template <class WithIp>
    struct IpRecord {
        using Ip = std::remove_reference_t<decltype(std::declval<WithIp &>().ip())>;
        static Ip *rows() { return running() != nullptr ? &running()->ip() : nullptr; }
        static constexpr IpmibIpHooks hooks = {
            sizeof(IpmibIpHooks),
            hookCall<rows, &Ip::follow>,
            hookCall<rows, &Ip::settings>,
            hookCall<rows, &Ip::systemCounters>,
            hookCall<rows, &Ip::interfaceCounters>,
            hookCall<rows, &Ip::icmpCounters>,
            hookCall<rows, &Ip::tcpCounters>,
            hookCall<rows, &Ip::udpCounters>,
            hookCall<rows, &Ip::findInterface>,
            hookCall<rows, &Ip::interfaceAfter>,
            hookCall<rows, &Ip::interfacesChanged>,
            hookCall<rows, &Ip::findAddress>,
            hookCall<rows, &Ip::addressAfter>,
            hookCall<rows, &Ip::findPrefix>,
            hookCall<rows, &Ip::prefixAfter>,
            hookCall<rows, &Ip::findNeighbour>,
            hookCall<rows, &Ip::neighbourAfter>,
            hookCall<rows, &Ip::findRouter>,
            hookCall<rows, &Ip::routerAfter>,
            hookCall<rows, &Ip::findStack>,
            hookCall<rows, &Ip::stackAfter>,
            hookCall<rows, &Ip::stackChanged>,
            hookCall<rows, &Ip::findReceiveAddress>,
            hookCall<rows, &Ip::receiveAddressAfter>,
            hookCall<rows, &Ip::linkLocalPrefixLength>,
        };
    };

    // Likewise.
    template <class WithRoutes>
    struct RouteRecord {
        using Routes = std::remove_reference_t<decltype(std::declval<WithRoutes &>().routes())>;
        static Routes *rows() { return running() != nullptr ? &running()->routes() : nullptr; }
        static constexpr IpmibRouteHooks hooks = {
            sizeof(IpmibRouteHooks),          hookCall<rows, &Routes::follow>, hookCall<rows, &Routes::limit>,
            hookCall<rows, &Routes::areRead>, hookCall<rows, &Routes::count>,  hookCall<rows, &Routes::discards>,
            hookCall<rows, &Routes::find>,    hookCall<rows, &Routes::next>,   hookCall<rows, &Routes::match>,
        };
    };

    // Likewise.
    template <class WithConnections>
    struct ConnectionRecord {
        using Connections = std::remove_reference_t<decltype(std::declval<WithConnections &>().connections())>;
        static Connections *rows() { return running() != nullptr ? &running()->connections() : nullptr; }
        static constexpr IpmibConnectionHooks hooks = {
            sizeof(IpmibConnectionHooks),
            hookCall<rows, &Connections::areRead>,
            hookCall<rows, &Connections::find>,
            hookCall<rows, &Connections::next>,
        };
    };

    // Likewise.
    template <class WithRecorded>
    struct RecordedRecord {
        using Recorded = std::remove_reference_t<decltype(std::declval<WithRecorded &>().recorded())>;
        static Recorded *objects() { return running() != nullptr ? &running()->recorded() : nullptr; }
        static constexpr IpmibRecordedHooks hooks = {
            sizeof(IpmibRecordedHooks),         hookCall<objects, &Recorded::any>,   hookCall<objects, &Recorded::find>,
            hookCall<objects, &Recorded::next>, hookCall<objects, &Recorded::lacks>,
        };
    };

    // Likewise. The handle of an instance is its address.
    template <class WithInstances>
    struct InstanceRecord {
        static int create(const char *argument, IpmibInstance **instance, char *error, std::size_t capacity)
        {
            auto another = std::make_unique<WithInstances>();
            const int result = hookFailure(first_->startAnother(argument, *another), error, capacity);
            if (result == 0) {
                *instance = reinterpret_cast<IpmibInstance *>(another.release());
            }
            return result;
        }
        static void destroy(IpmibInstance *instance)
        {
            const std::unique_ptr<WithInstances> ended(reinterpret_cast<WithInstances *>(instance));
            if (selected<WithInstances> == ended.get()) {
                choose(first_.get());
            }
        }
        static void select(IpmibInstance *instance)
        {
            choose(instance == nullptr ? first_.get() : reinterpret_cast<WithInstances *>(instance));
        }
        static constexpr decltype(IpmibInstanceHooks::context_address) contextAddress()
        {
            if constexpr (requires(WithInstances & platform) { platform.contextAddress(std::size_t{}); }) {
                return hookCall<first, &WithInstances::contextAddress>;
            } else {
                return nullptr;
            }
        }
        static constexpr IpmibInstanceHooks hooks = {
            sizeof(IpmibInstanceHooks),
            create,
            destroy,
            select,
            hookCall<first, &WithInstances::findContext>,
            hookCall<first, &WithInstances::contextsChanged>,
            hookCall<first, &WithInstances::followContexts>,
            contextAddress(),
        };
    };

    // Likewise.
    template <class Rehearsed>
    struct RehearsalRecord {
        static constexpr IpmibRehearsalHooks hooks = {
            sizeof(IpmibRehearsalHooks),
            hookCall<running, &Rehearsed::nextAnswer>,
            hookCall<running, &Rehearsed::reboots>,
            hookCall<running, &Rehearsed::change>,
        };
    };

    static inline std::unique_ptr<Platform> first_;
};

} // namespace ipmib::platform
