// SPDX-License-Identifier: BSD-3-Clause
// The net-snmp libraries as this program uses them: started with its configuration, and stopped.
#pragma once

#include "configuration_files.h"
#include "saved_state.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

struct SnmpSettings {
    bool defaultConfiguration = true;
    std::string configuration;         // a comma list of files
    std::vector<std::string> listenOn; // the configuration may add to these
    bool keepsState = true;            // SNMPv3 users and the count of starts, if the default configuration is read
};

class SnmpLibrary
{
  public:
    // Under which the library looks for files and reads their lines.
    static constexpr const char *applicationName = "ipmibd";

    // Throws std::runtime_error that names a configuration file that cannot be read, std::system_error.
    explicit SnmpLibrary(SnmpSettings settings);
    ~SnmpLibrary();
    SnmpLibrary(const SnmpLibrary &) = delete;
    SnmpLibrary &operator=(const SnmpLibrary &) = delete;

    // To be called once, when everything that takes lines of the configuration is there. Saves the state.
    void readConfiguration();

    static const char *version();

    // Where to listen: what the settings say and what the configuration adds.
    static std::vector<std::string> listeningAddresses();

    // Whether the configuration grants anybody access.
    static bool mayAnybodyAsk();

    // Reopens log files, reads the configuration again, and saves the state; keeps all as it was when a file cannot be
    // read.
    void reload();

  private:
    void forgetAddressesOfConfiguration() const;

    ConfigurationFiles files_;
    SavedState state_;
    std::string listenOn_; // what the settings say, as a comma list
};

} // namespace ipmib::agent
