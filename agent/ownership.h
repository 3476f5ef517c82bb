// SPDX-License-Identifier: BSD-3-Clause
// Who serves a table in an agent that has tables of its own: what the user wishes, what the agent grants.
#pragma once

#include "host/catalogue.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ipmib::agent
{

// What the setting `serve TABLE ...` says.
enum class Serve {
    automatic, // what the agent lacks, and tables of which ours have all rows of its
    take,      // in the agent's place
    off
};

enum class Owner {
    undecided,
    ours,        // the agent has nothing there
    oursInstead, // in the place of the agent's own rows
    agents,
    others, // of another program that registered it in our way
    off,
    refused
};

// Of two registrations of the same place the lower number wins. An agent's own tables have the number that is the
// default everywhere; ours is one that nobody else is likely to choose, so that a duplicate of it tells something.
inline constexpr int agentsPriority = 127;
inline constexpr int ourPriority = 93;

// The way to the owner of one table: registrations to attempt, one after the other, until it is decided. An agent
// cannot be asked what it serves, but it refuses a second registration of the same place and priority.
class Claim
{
  public:
    // A table that is off is left alone, or, to tell what the agent has in its place, looked for and no more.
    enum class WhenOff { leaveAlone, look };

    // Agents register the scalars of a group as one. A sub-agent takes that place as it is, since net-snmp loses what
    // lies below a longer one when a sub-agent ends; within the agent's own process each has its own.
    enum class Groups { asOne, oneByOne };

    Claim(const host::ServedTable &table, Serve wish, WhenOff whenOff = WhenOff::leaveAlone,
          Groups groups = Groups::asOne);

    // To be called before the first attempt: a scalar whose group is one for the agent goes with the first of them,
    // which is among the claims that are decided.
    void goWith(std::span<const Claim> decided);

    struct Attempt {
        bool registering; // or taking back what was registered for a look
        host::OidView root;
        int priority;
    };
    enum class Answer { granted, duplicate, refused };

    // Nothing when it is decided.
    std::optional<Attempt> next() const;
    // The agent's answer to that attempt.
    void take(Answer answer, const std::string &reason = "");

    const host::ServedTable &table() const { return *table_; }
    Serve wish() const { return wish_; }
    Owner owner() const { return owner_; }
    bool isOurs() const { return owner_ == Owner::ours || owner_ == Owner::oursInstead; }
    // The user's wish is not fulfilled.
    bool isFault() const { return owner_ == Owner::refused || (owner_ == Owner::others && wish_ == Serve::take); }
    // Why it was refused.
    const std::string &reason() const { return reason_; }

  private:
    enum class Stage { look, undoLook, claim, undoClaim };

    void lookOn();
    void lose(Owner owner);
    bool isGroupOfAgent() const;

    const host::ServedTable *table_;
    Serve wish_;
    Groups groups_;
    Stage stage_ = Stage::look;
    std::vector<host::Oid> places_; // of this stage, one after the other
    std::size_t place_ = 0;
    std::vector<host::Oid> agents_; // where the agent has its own
    Owner owner_ = Owner::undecided;
    Owner loser_ = Owner::undecided; // the owner when all is given back
    std::string reason_;
};

// "ours", "the master's", ...
std::string textOf(const Claim &claim);

} // namespace ipmib::agent
