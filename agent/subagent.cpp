// SPDX-License-Identifier: BSD-3-Clause
// The plug-in is loaded, and its mirrors are full, before the master hears of us.

#include "run_modes.h"

#include "agentx/presence_mark.h"
#include "agentx/session.h"
#include "contexts.h"
#include "detachment.h"
#include "ended_at_once.h"
#include "event_loop.h"
#include "link_notifications.h"
#include "net_snmp.h"
#include "pid_file.h"
#include "route_limit.h"
#include "service_manager.h"
#include "snmp_library.h"
#include "start_rights.h"
#include "system_group.h"

#include "tables/served_device.h"

#include <optional>

namespace ipmib::agent
{

void serveAsSubagent(const Options &options)
{
    const agentx::MasterAddress master = agentx::parseAddress(options.master);
    EventLoop loop;
    std::optional<EndedAtOnce> endedAtOnce(std::in_place);
    SnmpLibrary library({options.defaultConfiguration, options.configuration, {}, false});
    host::Plugin plugin(options.plugin);
    tables::ServedDevice device(plugin);
    const ServeSettings settings(SnmpLibrary::applicationName, ServeSettings::directive, &device.catalogue().tables());
    const RouteLimit routeLimit(SnmpLibrary::applicationName, RouteLimit::directive);
    const LinkNotificationSettings linkSettings(SnmpLibrary::applicationName, LinkNotificationSettings::directive);
    const ContextSettings contextSettings(SnmpLibrary::applicationName);
    passOverSystemGroup();
    library.readConfiguration();
    routeLimit.handTo(plugin.platform());
    PlatformEvents platformEvents(plugin.platform(), &device.instances());
    endedAtOnce.reset();
    const PidFile pidFile(options.pidFile);

    const agentx::PresenceMark mark(master);
    std::optional<Detachment> detachment;
    if (!options.foreground) {
        detachment.emplace();
    }
    pidFile.write();
    snmp_log(LOG_INFO, "ipmibd %s serves as a sub-agent\n", IPMIB_VERSION);
    bool isReady = false;
    agentx::Session session(device.catalogue(), device.instances(), device.sysUpTime(), settings, master, [&] {
        if (isReady) {
            return;
        }
        isReady = true;
        if (detachment) {
            detachment->ready(snmp_stderrlog_status() != 0);
        }
        notifyReady();
    });
    device.notifiesOfLinks(linkSettings.areSent());
    LinkNotifications linkNotifications(plugin.platform(), device.instances(), linkSettings,
                                        [&session](const netsnmp_variable_list &variables, const std::string &context) {
                                            session.notify(variables, context);
                                        });
    Contexts contexts(device, session, contextSettings, {.links = &linkNotifications});
    contexts.serve(settings.notOff(device.catalogue().tables()));
    platformEvents.whenDone([&contexts] { contexts.follow(); });
    letGoOfStartRights();
    session.start();
    loop.run([&] {
        notifyReloading();
        endedAtOnce.emplace([&pidFile] { pidFile.remove(); });
        library.reload();
        contexts.reload();
        contexts.serve(settings.notOff(device.catalogue().tables()));
        device.instances().select(host::Instances::first);
        device.notifiesOfLinks(linkSettings.areSent());
        session.start();
        endedAtOnce.reset();
        notifyReady();
    });
    notifyStopping();
    snmp_log(LOG_INFO, "ipmibd stops\n");
}

} // namespace ipmib::agent
