// SPDX-License-Identifier: BSD-3-Clause
// Variables of one packet are taken row by row, so that one look at a row answers all that ask for it.
#include "row_source.h"

#include <algorithm>

namespace ipmib::host
{

std::vector<Oid> RowSourceBase::objects() const
{
    std::vector<Oid> names;
    for (const SubId number : columns()) {
        names.push_back(root_);
        names.back().append(number);
    }
    return names;
}

// Takes out the first variable and all that concern the same row; false when none is left.
bool RowSourceBase::takeRow()
{
    row_.clear();
    rest_.clear();
    for (const Pending &each : pending_) {
        const bool isSame = row_.empty() || (each.inclusive == row_.front().inclusive &&
                                             std::ranges::equal(each.instance, row_.front().instance));
        (isSame ? row_ : rest_).push_back(each);
    }
    std::swap(pending_, rest_);
    return !row_.empty();
}

void RowSourceBase::setValue(Variable &variable, const Value &value)
{
    variable.status = Status::ok;
    variable.value = value;
    if (!value.octets.empty()) {
        variable.value.octets = store_.keep(value.octets.data(), value.octets.size());
    }
    if (!value.objectId.empty()) {
        const auto bytes = store_.keep(value.objectId.data(), value.objectId.size_bytes());
        variable.value.objectId = {reinterpret_cast<const SubId *>(bytes.data()), value.objectId.size()};
    }
}

void RowSourceBase::get(std::span<Variable> variables)
{
    store_.clear();
    pending_.clear();
    for (Variable &variable : variables) {
        const OidView asked = variable.asked;
        variable.status = Status::noSuchObject;
        if (asked.size() <= root_.size() || !isWithin(asked, root_.view())) {
            continue;
        }
        const auto column = std::ranges::find(columns(), asked[root_.size()]);
        if (column != columns().end()) {
            variable.status = Status::noSuchInstance;
            pending_.push_back({&variable, static_cast<std::size_t>(column - columns().begin()),
                                asked.subspan(root_.size() + 1), true});
        }
    }
    while (takeRow()) {
        Places index;
        if (!readIndex(shape_, row_.front().instance, index) || !find(OidView(index).first(shape_.size()))) {
            continue;
        }
        for (const Pending &each : row_) {
            if (const auto found = value(each.column)) {
                setValue(*each.variable, *found);
            }
        }
    }
}

void RowSourceBase::getNext(std::span<Variable> variables, OidView region)
{
    store_.clear();
    pending_.clear();
    for (Variable &variable : variables) {
        variable.status = Status::endOfRegion;
        startNext(variable, region);
    }
    while (takeRow()) {
        const Found found = findNext(row_.front());
        for (const Pending &each : row_) {
            answerNext(each, found, region);
        }
    }
}

void RowSourceBase::startNext(Variable &variable, OidView region)
{
    const bool isBefore = std::is_lt(compare(variable.asked, region));
    const OidView from = isBefore ? region : variable.asked;
    if (!isWithin(from, root_.view())) {
        if (std::is_lt(compare(from, root_.view())) && !columns().empty()) {
            pending_.push_back({&variable, 0, {}, false});
        }
        return;
    }
    const OidView behindRoot = from.subspan(root_.size());
    const SubId number = behindRoot.empty() ? 0 : behindRoot.front();
    const auto column = std::ranges::lower_bound(columns(), number);
    if (column == columns().end()) {
        return;
    }
    const bool isColumn = !behindRoot.empty() && *column == number;
    pending_.push_back({&variable, static_cast<std::size_t>(column - columns().begin()),
                        isColumn ? behindRoot.subspan(1) : OidView(), isColumn && isBefore});
}

bool RowSourceBase::lowestBehind(OidView asked, Oid &lowest)
{
    OidView instance;
    auto column = columns().begin();
    if (isWithin(asked, root_.view())) {
        const OidView behindRoot = asked.subspan(root_.size());
        const SubId number = behindRoot.empty() ? 0 : behindRoot.front();
        column = std::ranges::lower_bound(columns(), number);
        if (!behindRoot.empty() && column != columns().end() && *column == number) {
            instance = behindRoot.subspan(1);
        }
    } else if (std::is_gt(compare(asked, root_.view()))) {
        return false;
    }
    for (; column != columns().end(); ++column, instance = {}) {
        lowest.assign(root_.view());
        lowest.append(*column);
        if (appendLowestBehind(shape_, instance, lowest)) {
            return true;
        }
    }
    return false;
}

// Rows that do not ascend are a fault of theirs, and end the column.
RowSourceBase::Found RowSourceBase::findNext(const Pending &from)
{
    Places below;
    const OidView behind = OidView(below).first(shape_.size());
    const bool hasBelow = !from.instance.empty() && indexBelow(shape_, from.instance, from.inclusive, below);
    if (!next(hasBelow ? &behind : nullptr)) {
        return hasBelow ? Found::noneBehind : Found::noneAtAll;
    }
    readIndexOfRow(rowIndex_);
    return !hasBelow || std::is_gt(compare(rowIndex(), behind)) ? Found::row : Found::noneBehind;
}

void RowSourceBase::answerNext(Pending pending, Found found, OidView region)
{
    if (found != Found::row) {
        if (found == Found::noneBehind && ++pending.column < columns().size()) {
            pending_.push_back({pending.variable, pending.column, {}, false});
        }
        return;
    }
    Variable &variable = *pending.variable;
    variable.name.assign(root_.view());
    variable.name.append(columns()[pending.column]);
    if (!appendIndex(shape_, rowIndex(), variable.name) || !isWithin(variable.name.view(), region)) {
        return;
    }
    if (const auto answer = value(pending.column)) {
        setValue(variable, *answer);
        return;
    }
    // The row has none, or has vanished since it was found: on to the next one.
    const OidView instance = variable.name.view().subspan(root_.size() + 1);
    const auto kept = store_.keep(instance.data(), instance.size_bytes());
    pending_.push_back(
        {&variable, pending.column, {reinterpret_cast<const SubId *>(kept.data()), instance.size()}, false});
}

} // namespace ipmib::host
