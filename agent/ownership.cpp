// SPDX-License-Identifier: BSD-3-Clause
// A look is a registration with the agent's own priority, at the places where agents register a table; it is taken back
// at once. The claim is one at the very place where the agent has its own: of a longer one the agent's would show
// beside it, a shorter one would not count. Where the agent keeps what we lack, there is one for each column that we
// serve.

#include "ownership.h"

#include <algorithm>

namespace ipmib::agent
{

namespace
{

// Of the places to look at, the one behind the table and its entry.
constexpr std::size_t columnsPlace = 2;

} // namespace

Claim::Claim(const host::ServedTable &table, Serve wish, WhenOff whenOff)
    : table_(&table), wish_(wish), places_{table.identifier, table.inner}
{
    if (wish == Serve::off && whenOff == WhenOff::leaveAlone) {
        owner_ = Owner::off;
    } else if (table.isOfGroup && wish == Serve::automatic) {
        owner_ = Owner::agents; // agents register such scalars as a range, which a look does not find
    }
    if (!table.isScalar()) {
        places_.push_back(table.objects.front());
    }
}

std::optional<Claim::Attempt> Claim::next() const
{
    if (owner_ != Owner::undecided) {
        return std::nullopt;
    }
    const bool isLook = stage_ == Stage::look || stage_ == Stage::lookAway;
    return Attempt{stage_ == Stage::look || stage_ == Stage::claim, places_[place_].view(),
                   isLook ? agentsPriority : ourPriority};
}

void Claim::take(Answer answer, const std::string &reason)
{
    switch (stage_) {
    case Stage::look:
        if (answer == Answer::granted) {
            stage_ = Stage::lookAway;
        } else if (answer == Answer::duplicate) {
            if (place_ < columnsPlace) {
                agents_.push_back(places_[place_]);
            } else { // it registers its columns one by one
                agents_.insert(agents_.end(), table_->objects.begin(), table_->objects.end());
            }
            lookOn();
        } else {
            reason_ = reason;
            owner_ = wish_ == Serve::off ? Owner::off : Owner::refused;
        }
        break;
    case Stage::lookAway:
        lookOn();
        break;
    case Stage::claim:
        if (answer != Answer::granted) {
            reason_ = reason;
            lose(answer == Answer::duplicate ? Owner::others : Owner::refused);
        } else if (++place_ == places_.size()) {
            owner_ = agents_.empty() ? Owner::ours : Owner::oursInstead;
        }
        break;
    case Stage::giveBack:
        if (++place_ == places_.size()) {
            owner_ = loser_;
        }
        break;
    }
}

void Claim::lookOn()
{
    stage_ = Stage::look;
    if (++place_ < places_.size()) {
        return;
    }
    if (wish_ == Serve::off) {
        owner_ = agents_.empty() ? Owner::off : Owner::agents;
        return;
    }
    const bool inPart = !agents_.empty() && wish_ == Serve::automatic;
    if (inPart && !table_->replacesColumns) {
        owner_ = Owner::agents;
        return;
    }
    stage_ = Stage::claim;
    place_ = 0;
    places_ = inPart ? table_->objects : agents_.empty() ? std::vector{table_->identifier} : agents_;
}

void Claim::lose(Owner owner)
{
    if (place_ == 0) {
        owner_ = owner;
        return;
    }
    places_.resize(place_);
    place_ = 0;
    stage_ = Stage::giveBack;
    loser_ = owner;
}

std::string textOf(const Claim &claim)
{
    switch (claim.owner()) {
    case Owner::ours:
        return "ours";
    case Owner::oursInstead:
        return "ours, in place of the master's";
    case Owner::agents:
        return "the master's";
    case Owner::others:
        return claim.wish() == Serve::take ? "refused, another sub-agent has it: " + claim.reason()
                                           : "another sub-agent's";
    case Owner::off:
        return "off";
    case Owner::refused:
        return "refused: " + claim.reason();
    case Owner::undecided:
        break;
    }
    return "undecided";
}

} // namespace ipmib::agent
