// SPDX-License-Identifier: BSD-3-Clause
// Questions of one session whose answers are held to the protocol's own rules, whatever the objects are.
#pragma once

#include "client_session.h"
#include "findings.h"

#include <optional>
#include <vector>

namespace ipmib::agentcheck
{

class Exchange
{
  public:
    // Both outlive it.
    Exchange(ClientSession &session, Report &report) : session_(session), report_(report) {}

    Version version() const { return session_.version(); }
    std::string versionText() const { return session_.versionText(); }

    // One packet, or several where the agent has no room for one. Of each name what was found, which may be an
    // exception; in SNMPv1 noSuchName counts as noSuchInstance and, of a GETNEXT, as endOfMibView. Empty where no
    // answer can be used; the report has the reason then. Throws NoAnswer when the agent no longer answers at all.
    using Found = std::vector<std::optional<Variable>>;
    Found get(const std::vector<Name> &names) { return ask(Kind::get, names); }
    Found getNext(const std::vector<Name> &names) { return ask(Kind::getNext, names); }
    // What follows the first names once, as many as there are non-repeaters, and the others again and again; empty
    // where no answer can be used.
    std::vector<Variable> getBulk(const std::vector<Name> &names, int nonRepeaters, int maxRepetitions);
    // As it comes, with nothing held against it.
    Answer rawGet(const std::vector<Name> &names) { return still(session_.get(names), names.front()); }
    Answer rawGetNext(const Name &name) { return still(session_.getNext({name}), name); }
    Answer set(const Variable &variable) { return still(session_.set(variable), variable.name); }

  private:
    enum class Kind { get, getNext };
    Found ask(Kind kind, const std::vector<Name> &names);
    Found inHalves(Kind kind, const std::vector<Name> &names);
    Found withoutOne(Kind kind, const std::vector<Name> &names, std::size_t place);
    Answer still(Answer answer, const Name &name);
    bool isUsable(Kind kind, const Name &asked, const Variable &found);

    ClientSession &session_;
    Report &report_;
    int unanswered_ = 0;
};

inline const Name sysUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};

} // namespace ipmib::agentcheck
