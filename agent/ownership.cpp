// SPDX-License-Identifier: BSD-3-Clause
// A look is a registration with the agent's own priority, at the places where agents register a table; it is taken back
// at once. The claim is one at the very place where the agent has its own: of a longer one the agent's would show
// beside it, a shorter one would not count.

#include "ownership.h"

#include <algorithm>

namespace ipmib::agent
{

namespace
{

// Of the places to look at, the one behind the table and its entry.
constexpr std::size_t columnsPlace = 2;

} // namespace

Claim::Claim(const host::ServedTable &table, Serve wish, WhenOff whenOff, Groups groups)
    : table_(&table), wish_(wish), groups_(groups), places_{table.identifier, table.inner}
{
    if (wish == Serve::off && whenOff == WhenOff::leaveAlone) {
        owner_ = Owner::off;
    }
    if (table.isOfGroup) {
        places_.insert(places_.begin(), host::Oid(table.place()));
    } else if (!table.isScalar()) {
        places_.push_back(table.objects.front());
    }
}

void Claim::goWith(std::span<const Claim> decided)
{
    if (owner_ != Owner::undecided || !table_->isOfGroup || groups_ == Groups::oneByOne) {
        return;
    }
    const auto first = std::ranges::find_if(decided, [this](const Claim &claim) {
        return claim.isGroupOfAgent() && std::ranges::equal(claim.table_->place(), table_->place());
    });
    if (first != decided.end()) {
        owner_ = first->owner_;
        reason_ = first->reason_;
    }
}

bool Claim::isGroupOfAgent() const
{
    return table_->isOfGroup && !agents_.empty() && std::ranges::equal(agents_.front().view(), table_->place());
}

std::optional<Claim::Attempt> Claim::next() const
{
    if (owner_ != Owner::undecided) {
        return std::nullopt;
    }
    const bool isLook = stage_ == Stage::look || stage_ == Stage::undoLook;
    return Attempt{stage_ == Stage::look || stage_ == Stage::claim, places_[place_].view(),
                   isLook ? agentsPriority : ourPriority};
}

void Claim::take(Answer answer, const std::string &reason)
{
    switch (stage_) {
    case Stage::look:
        if (answer == Answer::granted) {
            stage_ = Stage::undoLook;
        } else if (answer == Answer::duplicate) {
            if (table_->isScalar() || place_ < columnsPlace) {
                agents_.push_back(places_[place_]);
            } else { // it registers its columns one by one
                agents_.insert(agents_.end(), table_->objects.begin(), table_->objects.end());
            }
            if (isGroupOfAgent()) {
                place_ = places_.size(); // net-snmp would lose what lies below a longer one when it is taken back
            }
            lookOn();
        } else {
            reason_ = reason;
            owner_ = wish_ == Serve::off ? Owner::off : Owner::refused;
        }
        break;
    case Stage::undoLook:
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
    case Stage::undoClaim:
        if (++place_ == places_.size()) {
            owner_ = loser_;
        }
        break;
    }
}

void Claim::lookOn()
{
    stage_ = Stage::look;
    if (place_ < places_.size() && ++place_ < places_.size()) {
        return;
    }
    if (wish_ == Serve::off) {
        owner_ = agents_.empty() ? Owner::off : Owner::agents;
        return;
    }
    if (!agents_.empty() && wish_ == Serve::automatic && !table_->isSuperior) {
        owner_ = Owner::agents;
        return;
    }
    stage_ = Stage::claim;
    place_ = 0;
    const bool isOnItsOwn = agents_.empty() || (groups_ == Groups::oneByOne && isGroupOfAgent());
    places_ = isOnItsOwn ? std::vector{table_->identifier} : agents_;
}

void Claim::lose(Owner owner)
{
    if (place_ == 0) {
        owner_ = owner;
        return;
    }
    places_.resize(place_);
    place_ = 0;
    stage_ = Stage::undoClaim;
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
