// SPDX-License-Identifier: BSD-3-Clause
// A kind of line of the configuration, read by an object for as long as both live. The library's parsers get no pointer
// of ours, hence the one that is in force: one at a time of each class, as the library has it. A class that has several
// kinds of lines names the member that reads each.
#pragma once

#include "net_snmp.h"

#include <string>

namespace ipmib::agent
{

// It reads a line, without the word, and returns what is wrong with it or nothing. Settings may have forget(), for when
// the lines before do not count any more, since the files are read again.
template <class Settings, auto read = &Settings::read>
class ConfigLine
{
  public:
    // In files of this type (ipmibd, snmpd), lines that begin with this word; the usage is what may follow it.
    ConfigLine(Settings &settings, const char *fileType, const char *word, const char *usage)
        : fileType_(fileType), word_(word)
    {
        inForce = &settings;
        void (*forget)() = nullptr;
        if constexpr (requires { settings.forget(); }) {
            forget = [] { inForce->forget(); };
        }
        register_config_handler(fileType, word, parse, forget, usage);
    }
    ~ConfigLine()
    {
        unregister_config_handler(fileType_, word_);
        inForce = nullptr;
    }
    ConfigLine(const ConfigLine &) = delete;
    ConfigLine &operator=(const ConfigLine &) = delete;

  private:
    static void parse(const char *word, char *line)
    {
        const std::string mistake = (inForce->*read)(line);
        if (!mistake.empty()) {
            netsnmp_config_error("%s: %s", word, mistake.c_str());
        }
    }

    static inline Settings *inForce = nullptr;

    const char *fileType_;
    const char *word_;
};

} // namespace ipmib::agent
