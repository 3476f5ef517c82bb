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

bool RestOfTable::isLeftOut(OidView instance) const
{
    const std::size_t first = entry_.size() + 1; // behind the column
    return instance.size() > first && isWithin(instance, entry_.view()) && instance[first] < from_;
}

Oid RestOfTable::behindLeftOut(OidView asked) const
{
    const std::size_t first = entry_.size() + 1;
    if (!isWithin(asked, entry_.view()) || (asked.size() != first && !isLeftOut(asked))) {
        return Oid(asked);
    }
    Oid place(asked.first(first));
    place.append(from_);
    return place;
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
