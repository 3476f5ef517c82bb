// SPDX-License-Identifier: BSD-3-Clause
// Rows that do not count are not asked for, but where a column ends: the source steps into the next one's.
#include "rest_of_table.h"

#include <algorithm>

namespace ipmib::host
{

std::vector<Oid> RestOfTable::objects() const
{
    std::vector<Oid> names = source_.objects();
    std::erase_if(names, [this](const Oid &name) { return !isWithin(name.view(), entry_.view()); });
    return names;
}

bool RestOfTable::isLeftOut(OidView name) const
{
    const std::size_t first = entry_.size() + 1; // behind the column
    return isOfColumn(name) && name.size() > first && name[first] != number_;
}

Oid RestOfTable::inFrontOfRows(SubId column) const
{
    Oid place(entry_);
    place.append(column);
    place.append(isWholeIndex_ ? number_ - 1 : number_);
    return place;
}

Oid RestOfTable::behindLeftOut(OidView asked) const
{
    const std::size_t first = entry_.size() + 1;
    if (!isOfColumn(asked) || (asked.size() > first && asked[first] == number_)) {
        return Oid(asked);
    }
    const SubId column = asked[entry_.size()];
    const bool isBehindRows = asked.size() > first && asked[first] > number_;
    if (isBehindRows && column == UINT32_MAX) {
        return Oid(asked);
    }
    return inFrontOfRows(isBehindRows ? column + 1 : column);
}

bool RestOfTable::lowestBehind(OidView asked, Oid &lowest)
{
    const std::size_t first = entry_.size() + 1;
    Oid place = behindLeftOut(asked);
    if (isWholeIndex_ && isOfColumn(asked) && asked.size() > first && asked[first] == number_ &&
        asked[entry_.size()] != UINT32_MAX) {
        place = inFrontOfRows(asked[entry_.size()] + 1); // its only row there is not behind itself
    }
    if (!source_.lowestBehind(place.view(), lowest)) {
        return false;
    }
    if (isOfColumn(lowest.view()) && (lowest.size() == first || lowest.view()[first] < number_)) {
        place.assign(lowest.view().first(first));
        place.append(number_);
        lowest = place;
    }
    return true;
}

void RestOfTable::get(std::span<Variable> variables)
{
    source_.get(variables);
    for (Variable &variable : variables) {
        if (variable.status != Status::noSuchObject && isLeftOut(variable.asked)) {
            variable.status = Status::noSuchInstance;
        }
    }
}

void RestOfTable::getNext(std::span<Variable> variables, OidView region)
{
    asked_.assign(variables.begin(), variables.end());
    places_.resize(variables.size());
    for (std::size_t i = 0; i < variables.size(); ++i) {
        places_[i] = behindLeftOut(variables[i].asked);
    }
    for (bool isDone = false; !isDone;) {
        for (std::size_t i = 0; i < asked_.size(); ++i) {
            asked_[i].asked = places_[i].view();
        }
        source_.getNext(asked_, region);
        isDone = true;
        for (std::size_t i = 0; i < asked_.size(); ++i) {
            if (asked_[i].status == Status::ok && isLeftOut(asked_[i].name.view())) {
                places_[i] = behindLeftOut(asked_[i].name.view());
                isDone = false; // all are asked again: what the source answered is good until it is
            }
        }
    }
    for (std::size_t i = 0; i < variables.size(); ++i) {
        const OidView asked = variables[i].asked;
        variables[i] = asked_[i];
        variables[i].asked = asked;
    }
}

} // namespace ipmib::host
