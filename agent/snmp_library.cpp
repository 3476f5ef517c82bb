// SPDX-License-Identifier: BSD-3-Clause
// Starts the libraries without the MIB modules that snmpd adds to them.

#include "snmp_library.h"

#include "net_snmp.h"
#include "options.h"
#include "stream_clients.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

// The library exports it and declares it in none of its installed headers.
extern "C" int vacm_warn_if_not_configured(int major, int minor, void *server, void *client);

namespace ipmib::agent
{

namespace
{

// The library's own place is shared with snmpd, whose user is another one.
constexpr const char *stateDirectory = "/var/lib/ipmibd";

std::string joined(const std::vector<std::string> &items)
{
    std::string list;
    for (const std::string &item : items) {
        list += list.empty() ? item : "," + item;
    }
    return list;
}

} // namespace

SnmpLibrary::SnmpLibrary(SnmpSettings settings) : settings_(std::move(settings))
{
    checkConfigurationFiles();
    setenv("SNMP_PERSISTENT_DIR", stateDirectory, 0);
    setenv("MIBS", "", 1); // identifiers are numbers here; parsing MIB texts would only cost time and memory
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS,
                           settings_.defaultConfiguration ? 0 : 1);
    for (const int part : {NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE}) {
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, part, settings_.keepsState ? 0 : 1);
    }
    if (!settings_.configuration.empty()) {
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_OPTIONALCONFIG, settings_.configuration.c_str());
    }
    if (!settings_.listenOn.empty()) {
        netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, joined(settings_.listenOn).c_str());
    }
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
    snmp_store(applicationName);       // the count of starts must not be lost in a crash
    netsnmp_set_lookup_cache_size(-1); // the library's default size
}

SnmpLibrary::~SnmpLibrary()
{
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
        checkConfigurationFiles();
    } catch (const std::runtime_error &error) {
        snmp_log(LOG_ERR, "%s, keeping the old configuration\n", error.what());
        return;
    }
    update_config();
}

void SnmpLibrary::checkConfigurationFiles() const
{
    for (const std::string &file : splitList(settings_.configuration)) {
        const int reason = std::filesystem::is_directory(file) ? EISDIR : access(file.c_str(), R_OK) != 0 ? errno : 0;
        if (reason != 0) {
            throw std::runtime_error("cannot read the configuration file " + file + ": " +
                                     std::generic_category().message(reason));
        }
    }
}

} // namespace ipmib::agent
