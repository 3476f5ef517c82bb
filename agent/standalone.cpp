// SPDX-License-Identifier: BSD-3-Clause
// Everything that can fail comes before the process lets go of its terminal and says that it is ready.

#include "run_modes.h"

#include "agentx_master.h"
#include "answer_faults.h"
#include "contexts.h"
#include "detachment.h"
#include "device_addresses.h"
#include "device_socket.h"
#include "ended_at_once.h"
#include "event_loop.h"
#include "frontend.h"
#include "link_notifications.h"
#include "listeners.h"
#include "log.h"
#include "logical_entities.h"
#include "net_snmp.h"
#include "notification_sinks.h"
#include "pid_file.h"
#include "route_limit.h"
#include "serve_settings.h"
#include "service_manager.h"
#include "snmp_library.h"
#include "start_rights.h"
#include "stream_clients.h"
#include "system_group.h"

#include "tables/served_device.h"

#include <net-snmp/library/lcd_time.h>

#include <optional>

namespace ipmib::agent
{

namespace
{

// A device that has a clock of its own shows that as sysUpTime.
void shareUpTime(tables::ServedDevice &device)
{
    if (const auto own = device.ownUpTimeMs()) {
        constexpr std::uint64_t msPerTick = 10;
        netsnmp_set_agent_uptime(*own / msPerTick);
        device.sysUpTime().isDevices(*own);
    } else {
        device.sysUpTime().isNow(netsnmp_get_agent_uptime());
    }
}

// The library keeps the count, and with the time once more for messages that it sends. The time itself goes on.
void countEngineBoot()
{
    std::string boots = std::to_string(snmpv3_local_snmpEngineBoots());
    engineBoots_conf("engineBoots", boots.data()); // it counts one more than it reads
    u_char engine[MAX_ENGINEID_LENGTH];
    const auto length = static_cast<u_int>(snmpv3_get_engineID(engine, sizeof engine));
    set_enginetime(engine, length, static_cast<u_int>(snmpv3_local_snmpEngineBoots()),
                   static_cast<u_int>(snmpv3_local_snmpEngineTime()), TRUE);
}

// What a manager sees of an agent that has been booted again. Devices in contexts have a sysUpTime alone.
void followReboots(tables::ServedDevice &device, unsigned &followed)
{
    const IpmibPlatformHooks *platform = device.catalogue().platform();
    if (platform == nullptr || platform->rehearsal == nullptr || platform->rehearsal->reboots == nullptr) {
        return;
    }
    device.instances().select(host::Instances::first);
    const unsigned reboots = platform->rehearsal->reboots();
    if (reboots == followed) {
        return;
    }
    followed = reboots;
    shareUpTime(device);
    countEngineBoot();
    snmp_log(LOG_INFO, "the device has been booted again\n");
    send_easy_trap(SNMP_TRAP_COLDSTART, 0);
}

} // namespace

void serveStandalone(const Options &options)
{
    EventLoop loop;
    std::optional<EndedAtOnce> endedAtOnce(std::in_place);
    SnmpLibrary library({options.defaultConfiguration, options.configuration, options.listenOn});
    host::Plugin plugin(options.plugin);
    tables::ServedDevice device(plugin);
    const ServeSettings settings(SnmpLibrary::applicationName, ServeSettings::directive, &device.catalogue().tables());
    const RouteLimit routeLimit(SnmpLibrary::applicationName, RouteLimit::directive);
    const LinkNotificationSettings linkSettings(SnmpLibrary::applicationName, LinkNotificationSettings::directive);
    const ContextSettings contextSettings(SnmpLibrary::applicationName);
    NotificationSinks sinks(contextSettings);
    const bool saysWhatItIs = device.hasSystemGroup();
    serveSystemGroup(saysWhatItIs ? SystemGroupOf::device : SystemGroupOf::agent);
    library.readConfiguration();
    routeLimit.handTo(plugin.platform());
    const std::vector<std::string> addresses = SnmpLibrary::listeningAddresses();
    Listeners listeners(addresses);
    loop.chooseReadable([](netsnmp_large_fd_set &readable) { StreamClients::all().leaveOne(readable); });
    shareUpTime(device);
    Frontend frontend(device.catalogue(), device.instances());
    ContextAccess access(contextSettings, ContextAccess::Listing::ours);
    DeviceAddresses deviceAddresses(
        [&listeners](netsnmp_transport *all) { listeners.add(all, "the addresses of devices"); });
    LogicalEntities entities;
    device.notifiesOfLinks(linkSettings.areSent());
    LinkNotifications linkNotifications(
        plugin.platform(), device.instances(), linkSettings,
        [&sinks](netsnmp_variable_list &variables, const std::string &context) { sinks.send(variables, context); });
    Contexts contexts(device, frontend, contextSettings, {&access, &deviceAddresses, &entities, &linkNotifications});
    const auto serve = [&] {
        std::vector<const host::ServedTable *> tables = settings.notOff(device.catalogue().tables());
        if (saysWhatItIs) {
            tables.push_back(device.systemGroup());
        }
        if (contexts.size() != 0) {
            tables.push_back(&entities.table());
        }
        device.instances().select(host::Instances::first);
        if (const host::ServedTable *recorded = device.recordedObjects()) {
            tables.push_back(recorded);
        }
        frontend.serve(tables, {});
    };
    contexts.serve(settings.notOff(device.catalogue().tables()));
    serve();
    unsigned followedReboots = 0;
    frontend.whenPlatformHasWorked([&] {
        followReboots(device, followedReboots);
        if (contexts.follow()) {
            serve();
        }
    });
    const AnswerFaults answerFaults(plugin.platform(), device.instances(), contexts);
    const DeviceSocket deviceSocket(options.deviceSocket, plugin.platform(), device.instances(), contexts,
                                    [&] { followReboots(device, followedReboots); });
    const SystemCapabilities capabilities(device.catalogue());
    const std::vector<std::string> masterAt = AgentxMaster::addressesOfConfiguration();
    const AgentxMaster master(masterAt);
    endedAtOnce.reset();
    const PidFile pidFile(options.pidFile);

    std::optional<Detachment> detachment;
    if (!options.foreground) {
        detachment.emplace();
    }
    pidFile.write();
    letGoOfStartRights();
    if (!SnmpLibrary::mayAnybodyAsk() && contextSettings.communities().empty()) {
        snmp_log(LOG_WARNING,
                 "nobody may ask anything: the configuration grants no access (rocommunity, rouser, ...)\n");
    }
    snmp_log(LOG_INFO, "ipmibd %s serves %zu tables\n", IPMIB_VERSION,
             host::countNames(settings.notOff(device.catalogue().tables())));
    if (contexts.size() != 0) {
        snmp_log(LOG_INFO, "contexts: %zu beside the one without a name\n", contexts.size());
    }
    if (detachment) {
        detachment->ready(snmp_stderrlog_status() != 0);
    }
    notifyReady();
    send_easy_trap(SNMP_TRAP_COLDSTART, 0);
    loop.run([&] {
        notifyReloading();
        endedAtOnce.emplace([&pidFile] { pidFile.remove(); });
        library.reload();
        if (SnmpLibrary::listeningAddresses() != addresses || AgentxMaster::addressesOfConfiguration() != masterAt) {
            snmp_log(LOG_WARNING, "other listening addresses take a restart; listening where it began\n");
        }
        contexts.reload();
        contexts.serve(settings.notOff(device.catalogue().tables()));
        serve();
        device.instances().select(host::Instances::first);
        shareUpTime(device);
        device.notifiesOfLinks(linkSettings.areSent());
        endedAtOnce.reset();
        notifyReady();
    });
    notifyStopping();
    snmp_log(LOG_INFO, "ipmibd stops\n");
}

} // namespace ipmib::agent
