// SPDX-License-Identifier: BSD-3-Clause
// Starts the libraries without the MIB modules that snmpd adds to them.

#include "snmp_library.h"

#include "agentx_master.h"
#include "net_snmp.h"
#include "options.h"
#include "stream_clients.h"

#include <cstdlib>
#include <stdexcept>

// The library exports it and declares it in none of its installed headers.
extern "C" int vacm_warn_if_not_configured(int major, int minor, void *server, void *client);

namespace ipmib::agent
{

namespace
{

std::string joined(const std::vector<std::string> &items)
{
    std::string list;
    for (const std::string &item : items) {
        list += list.empty() ? item : "," + item;
    }
    return list;
}

} // namespace

SnmpLibrary::SnmpLibrary(SnmpSettings settings)
    : files_(splitList(settings.configuration), settings.defaultConfiguration),
      state_(settings.keepsState && settings.defaultConfiguration), listenOn_(joined(settings.listenOn))
{
    files_.begin();
    setenv("MIBS", "", 1); // identifiers are numbers here; parsing MIB texts would only cost time and memory
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS,
                           settings.defaultConfiguration ? 0 : 1);
    if (!settings.configuration.empty()) {
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OPTIONALCONFIG, settings.configuration.c_str());
    }
    forgetAddressesOfConfiguration();
    if (init_agent(applicationName) != 0) {
        throw std::runtime_error("the SNMP agent library could not be started");
    }
    StreamClients::all().readSettingsFrom(applicationName);
    // The library's own warning is four lines long and names another program's commands.
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, vacm_warn_if_not_configured,
                             nullptr, 0);
}

void SnmpLibrary::readConfiguration()
{
    init_snmp(applicationName);
    state_.begin();                    // neither the count of starts nor a new user may be lost in a crash
    netsnmp_set_lookup_cache_size(-1); // the library's default size
}

SnmpLibrary::~SnmpLibrary()
{
    state_.save();
    snmp_shutdown(applicationName);
    shutdown_agent();
}

const char *SnmpLibrary::version()
{
    return netsnmp_get_version();
}

std::vector<std::string> SnmpLibrary::listeningAddresses()
{
    const char *addresses = netsnmp_ds_get_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS);
    return splitList(addresses == nullptr ? "" : addresses);
}

bool SnmpLibrary::mayAnybodyAsk()
{
    return vacm_is_configured() != 0;
}

void SnmpLibrary::reload()
{
    snmp_log(LOG_INFO, "reading the configuration again\n");
    netsnmp_logging_restart(); // log files may have been rotated
    try {
        files_.renew();
    } catch (const std::runtime_error &error) {
        snmp_log(LOG_ERR, "%s, keeping the old configuration\n", error.what());
        return;
    }
    forgetAddressesOfConfiguration(); // the library would add the new ones to them
    AgentxMaster::forgetConfiguration();
    update_config();
    state_.save();
}

void SnmpLibrary::forgetAddressesOfConfiguration() const
{
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS,
                          listenOn_.empty() ? nullptr : listenOn_.c_str());
}

} // namespace ipmib::agent
