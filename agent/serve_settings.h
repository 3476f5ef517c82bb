// SPDX-License-Identifier: BSD-3-Clause
// The configuration's lines `serve TABLE auto|take|off`.
#pragma once

#include "config_line.h"
#include "ownership.h"

#include <map>
#include <string>
#include <vector>

namespace ipmib::agent
{

class ServeSettings
{
  public:
    static constexpr const char *directive = "serve"; // in ipmibd.conf

    // From here on the library hands the lines to it whenever it reads the files of this type (ipmibd, snmpd); wrong
    // ones are complained about there, with file and line, and left aside. One at a time, as the library has it.
    // Without tables every name is taken, until `unknownNames` is asked.
    ServeSettings(const char *fileType, const char *word, const std::vector<host::ServedTable> *tables);

    Serve of(const host::ServedTable &table) const;
    // Those of all tables.
    std::vector<const host::ServedTable *> notOff(const std::vector<host::ServedTable> &tables) const;
    std::vector<std::string> unknownNames(const std::vector<host::ServedTable> &tables) const;

    // Reads a line without the directive. Returns what is wrong with it, or nothing.
    std::string read(const std::string &line);
    void forget() { wishes_.clear(); }

  private:
    const std::vector<host::ServedTable> *tables_;
    std::map<std::string, Serve> wishes_; // "all" among them
    ConfigLine<ServeSettings> line_;
};

} // namespace ipmib::agent
