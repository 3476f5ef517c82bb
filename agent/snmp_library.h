// SPDX-License-Identifier: BSD-3-Clause
// The net-snmp libraries as this program uses them: started with its configuration, and stopped.
#pragma once

#include <string>
#include <vector>

namespace ipmib::agent
{

struct SnmpSettings {
    bool defaultConfiguration = true;
    std::string configuration;         // a comma list of files
    std::vector<std::string> listenOn; // the configuration may add to these
    bool keepsState = true;            // the count of starts, which SNMPv3 needs
};

class SnmpLibrary
{
  public:
    // Under which the library looks for files and reads their lines.
    static constexpr const char *applicationName = "ipmibd";

    // Throws std::runtime_error that names a configuration file that cannot be read.
    explicit SnmpLibrary(SnmpSettings settings);
    ~SnmpLibrary();
    SnmpLibrary(const SnmpLibrary &) = delete;
    SnmpLibrary &operator=(const SnmpLibrary &) = delete;

    // To be called once, when everything that takes lines of the configuration is there.
    void readConfiguration();

    static const char *version();

    // Where to listen: what the settings say and what the configuration adds.
    static std::vector<std::string> listeningAddresses();

    // Whether the configuration grants anybody access.
    static bool mayAnybodyAsk();

    // Reopens log files and reads the configuration again; keeps the old one when a file cannot be read.
    void reload();

  private:
    void checkConfigurationFiles() const;

    SnmpSettings settings_;
};

} // namespace ipmib::agent
