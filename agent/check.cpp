// SPDX-License-Identifier: BSD-3-Clause
// As a sub-agent it claims the tables as always, since an agent tells what it serves in no other way, and leaves at
// once. What the master asks meanwhile is answered.

#include "check.h"

#include "agentx/presence_mark.h"
#include "agentx/session.h"
#include "ended_at_once.h"
#include "event_loop.h"
#include "net_snmp.h"
#include "ownership_report.h"
#include "platform_events.h"
#include "route_limit.h"
#include "snmp_library.h"
#include "system_group.h"

#include "tables/served_device.h"

#include <cstdio>
#include <set>
#include <utility>

namespace ipmib::agent
{

namespace
{

// Counts what the library complains about.
class Complaints
{
  public:
    Complaints()
    {
        snmp_enable_calllog();
        snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, count, this);
    }
    ~Complaints()
    {
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, count, this, 1);
        snmp_disable_calllog();
    }
    Complaints(const Complaints &) = delete;
    Complaints &operator=(const Complaints &) = delete;

    bool none() const { return count_ == 0; }

  private:
    static int count(int, int, void *message, void *self)
    {
        if (static_cast<const snmp_log_message *>(message)->priority <= LOG_WARNING) {
            ++static_cast<Complaints *>(self)->count_;
        }
        return 0;
    }

    unsigned count_ = 0;
};

bool readWithoutComplaint(SnmpLibrary &library)
{
    const Complaints complaints;
    library.readConfiguration();
    return complaints.none();
}

// One line for all scalars of a group that have the same owner.
class OwnerList
{
  public:
    OwnerList() { print("TABLE", "IDENTIFIER", "OWNER"); }

    void add(const host::ServedTable &table, const std::string &owner)
    {
        const std::string identifier = host::textOf(table.place());
        if (printed_.emplace(identifier, owner).second) {
            print(table.name, identifier, owner);
        }
    }

  private:
    static void print(const char *table, const std::string &identifier, const std::string &owner)
    {
        std::printf("%-24s %-22s %s\n", table, identifier.c_str(), owner.c_str());
    }

    std::set<std::pair<std::string, std::string>> printed_;
};

bool printClaims(const agentx::Session &session, bool isAnotherRunning)
{
    std::vector<Claim> faults;
    OwnerList owners;
    for (const Claim &claim : session.claims()) {
        const bool runs = claim.owner() == Owner::others && isAnotherRunning;
        owners.add(claim.table(), runs ? "ours, of the ipmibd that runs" : textOf(claim));
        if (claim.isFault() && !runs) {
            faults.push_back(claim);
        }
    }
    OwnershipReport("agentx", ServeSettings::directive).log(faults);
    return faults.empty();
}

bool checkSubagent(EventLoop &loop, tables::ServedDevice &device, const ServeSettings &settings,
                   const agentx::Address &master)
{
    const PlatformEvents platformEvents(device.catalogue().platform());
    agentx::Session session(
        device.catalogue(), device.sysUpTime(), settings, master, [&] { loop.stop(); }, agentx::Session::Purpose::look);
    session.start();
    loop.run([] {});
    if (!session.isServing()) {
        snmp_log(LOG_ERR, "agentx: %s\n", session.trouble().c_str());
        return false;
    }
    return printClaims(session, agentx::PresenceMark::isSet(master));
}

} // namespace

bool check(const Options &options)
{
    const bool isSubagent = !options.master.empty();
    const agentx::Address master = isSubagent ? agentx::parseAddress(options.master) : agentx::Address();
    EventLoop loop;
    const EndedAtOnce checking;
    SnmpLibrary library({options.defaultConfiguration, options.configuration, options.listenOn, false});
    host::Plugin plugin(options.plugin);
    tables::ServedDevice device(plugin);
    const std::vector<host::ServedTable> &tables = device.catalogue().tables();
    const ServeSettings settings(SnmpLibrary::applicationName, ServeSettings::directive, &tables);
    const RouteLimit routeLimit(SnmpLibrary::applicationName, RouteLimit::directive);
    if (isSubagent) {
        passOverSystemGroup();
    } else {
        serveSystemGroup();
    }
    const bool good = readWithoutComplaint(library);
    if (isSubagent) {
        return checkSubagent(loop, device, settings, master) && good;
    }
    OwnerList owners;
    for (const host::ServedTable &table : tables) {
        owners.add(table, settings.of(table) == Serve::off ? "off" : "ours");
    }
    return good;
}

} // namespace ipmib::agent
