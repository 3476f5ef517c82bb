// SPDX-License-Identifier: BSD-3-Clause
// As a sub-agent it claims the tables as always, since an agent tells what it serves in no other way, and leaves at
// once. What the master asks meanwhile is answered.

#include "run_modes.h"

#include "agentx/presence_mark.h"
#include "agentx/session.h"
#include "comparison.h"
#include "context_settings.h"
#include "ended_at_once.h"
#include "event_loop.h"
#include "net_snmp.h"
#include "ownership_report.h"
#include "route_limit.h"
#include "snmp_library.h"
#include "system_group.h"

#include "tables/served_device.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <vector>

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
    void add(const host::ServedTable &table, const std::string &owner,
             const std::optional<Difference> &difference = std::nullopt)
    {
        const std::string identifier = host::textOf(table.place());
        const auto same = std::ranges::find_if(
            lines_, [&](const Line &line) { return line.identifier == identifier && line.owner == owner; });
        Line &line = same != lines_.end() ? *same : lines_.emplace_back(Line{table.name, identifier, owner, {}});
        line.difference.gained += difference ? difference->gained : 0;
        line.difference.lost += difference ? difference->lost : 0;
        withDifference_ = withDifference_ || difference;
    }

    void print() const
    {
        print({"TABLE", "IDENTIFIER", "OWNER", {}}, "GAINED", "LOST");
        for (const Line &line : lines_) {
            print(line, std::to_string(line.difference.gained), std::to_string(line.difference.lost));
        }
    }

  private:
    struct Line {
        std::string table;
        std::string identifier;
        std::string owner;
        Difference difference;
    };

    void print(const Line &line, const std::string &gained, const std::string &lost) const
    {
        std::printf("%-24s %-22s ", line.table.c_str(), line.identifier.c_str());
        if (withDifference_) {
            std::printf("%7s %7s ", gained.c_str(), lost.c_str());
        }
        std::printf("%s\n", line.owner.c_str());
    }

    std::vector<Line> lines_;
    bool withDifference_ = false;
};

// Of each table, in the catalogue's order; nothing when nobody is to be asked.
std::vector<Difference> differences(host::Catalogue &catalogue, const std::string &ask)
{
    std::vector<Difference> found;
    if (!ask.empty()) {
        Comparison comparison(ask);
        for (const host::ServedTable &table : catalogue.tables()) {
            catalogue.beginPacket();
            found.push_back(comparison.of(table));
        }
    }
    return found;
}

bool printClaims(const agentx::Session &session, const std::vector<Difference> &differences, bool isAnotherRunning)
{
    std::vector<Claim> faults;
    OwnerList owners;
    for (std::size_t i = 0; i < session.claims().size(); ++i) {
        const Claim &claim = session.claims()[i];
        const bool runs = claim.owner() == Owner::others && isAnotherRunning;
        owners.add(claim.table(), runs ? "ours, of the ipmibd that runs" : textOf(claim),
                   differences.empty() ? std::nullopt : std::optional(differences[i]));
        if (claim.isFault() && !runs) {
            faults.push_back(claim);
        }
    }
    owners.print();
    OwnershipReport("agentx", ServeSettings::directive).log(faults);
    return faults.empty();
}

bool checkSubagent(EventLoop &loop, tables::ServedDevice &device, const ServeSettings &settings,
                   const agentx::MasterAddress &master, const std::string &ask)
{
    const std::vector<Difference> compared = differences(device.catalogue(), ask); // before there is a claim
    const PlatformEvents platformEvents(device.catalogue().platform());
    agentx::Session session(
        device.catalogue(), device.instances(), device.sysUpTime(), settings, master, [&] { loop.stop(); },
        agentx::Session::Purpose::look);
    session.start();
    loop.run([] {});
    if (!session.isServing()) {
        snmp_log(LOG_ERR, "agentx: %s\n", session.trouble().c_str());
        return false;
    }
    return printClaims(session, compared, agentx::PresenceMark::isSet(master));
}

} // namespace

bool check(const Options &options)
{
    const bool isSubagent = !options.master.empty();
    const agentx::MasterAddress master = isSubagent ? agentx::parseAddress(options.master) : agentx::MasterAddress();
    EventLoop loop;
    const EndedAtOnce checking;
    SnmpLibrary library({options.defaultConfiguration, options.configuration, options.listenOn, false});
    host::Plugin plugin(options.plugin);
    tables::ServedDevice device(plugin);
    const std::vector<host::ServedTable> &tables = device.catalogue().tables();
    const ServeSettings settings(SnmpLibrary::applicationName, ServeSettings::directive, &tables);
    const RouteLimit routeLimit(SnmpLibrary::applicationName, RouteLimit::directive);
    const ContextSettings contextSettings(SnmpLibrary::applicationName);
    if (isSubagent) {
        passOverSystemGroup();
    } else {
        serveSystemGroup(SystemGroupOf::agent);
    }
    const bool good = readWithoutComplaint(library);
    if (isSubagent) {
        return checkSubagent(loop, device, settings, master, options.ask) && good;
    }
    OwnerList owners;
    for (const host::ServedTable &table : tables) {
        owners.add(table, settings.of(table) == Serve::off ? "off" : "ours");
    }
    owners.print();
    return good;
}

} // namespace ipmib::agent
