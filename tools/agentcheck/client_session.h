// SPDX-License-Identifier: BSD-3-Clause
// One agent, asked over SNMP by the net-snmp library: one request at a time, and never more in a second than was
// agreed.
#pragma once

#include "variable.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ipmib::agentcheck
{

// One line for the user: the agent does not answer, or no longer.
struct NoAnswer : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class Version : std::uint8_t { v1, v2c, v3 };

// What requests may be answered with, beside variables: those of RFC 1157 and RFC 3416 that this program looks for.
enum ErrorStatus : long {
    noError = 0,
    tooBig = 1,
    noSuchName = 2,
    readOnly = 4,
    noAccess = 6,
    authorizationError = 16,
    notWritable = 17,
};
std::string errorText(long error);

struct Answer {
    bool isThere = false; // in time
    long error = noError;
    std::size_t errorIndex = 0; // from 1 on
    std::vector<Variable> variables;
};

// How often one may ask.
class Pace
{
  public:
    explicit Pace(unsigned packetsPerSecond)
        : between_(std::chrono::nanoseconds(std::chrono::seconds(1)) / packetsPerSecond)
    {
    }
    void wait();

  private:
    std::chrono::nanoseconds between_;
    std::chrono::steady_clock::time_point next_{};
};

class ClientSession
{
  public:
    // The words of the command line are the library's: snmpcmd(1). Throws host::UsageError when it cannot use them; it
    // has said why by then. Only once in a process.
    static void readCommandLine(int argc, char **argv);
    static std::string agent();

    // As the command line says, or in another version. The pace outlives it. Throws NoAnswer.
    explicit ClientSession(Pace &pace);
    ClientSession(Pace &pace, Version version);
    ~ClientSession();
    ClientSession(const ClientSession &) = delete;
    ClientSession &operator=(const ClientSession &) = delete;

    Version version() const;
    std::string versionText() const;

    Answer get(const std::vector<Name> &names);
    Answer getNext(const std::vector<Name> &names);
    Answer getBulk(const std::vector<Name> &names, int nonRepeaters, int maxRepetitions);
    Answer set(const Variable &variable);

  private:
    struct Pending;
    Answer ask(void *pdu);

    Pace &pace_;
    void *handle_;
};

} // namespace ipmib::agentcheck
