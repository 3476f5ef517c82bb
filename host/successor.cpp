// SPDX-License-Identifier: BSD-3-Clause
// The rule behind every step: an answer is believed only when it lies behind the identifier asked, and the first such
// answer to a key below it is the right one.
#include "successor.h"

#include "key_below.h"

namespace ipmib::host
{
namespace
{

// From a key just below the identifier it takes a step or two to get behind it; more only where a key had to be lowered
// to the floor of its last part, and then one for each row with the same octets.
constexpr int maxSteps = 4096;

constexpr const char *notAscending = "the module's rows do not ascend; the column ends here";

} // namespace

Outcome SuccessorSearch::find(Table &table, From from, std::span<const std::uint32_t> wanted)
{
    table_ = &table;
    from_ = from;
    wanted_ = wanted;
    problem_ = nullptr;
    const Outcome outcome = search();
    if (outcome == Outcome::answered) {
        table.cursors.move(from.instance, instance());
    }
    return outcome;
}

Outcome SuccessorSearch::ask(const RowKey *key)
{
    const Outcome outcome = exchange_.getNext(*table_, key, wanted_, row_);
    if (outcome == Outcome::unusable) {
        problem_ = exchange_.problem();
    }
    if (outcome != Outcome::answered) {
        return outcome;
    }
    instance_.clear();
    if (!appendKey(table_->index, row_, instance_) || instance_.size() > maxOidLength - table_->nameLength) {
        problem_ = "a row's index is too long for an identifier";
        return Outcome::unusable;
    }
    return outcome;
}

bool SuccessorSearch::isBehind() const
{
    const auto order = compare(instance(), from_.instance);
    return std::is_gt(order) || (from_.inclusive && std::is_eq(order));
}

Outcome SuccessorSearch::search()
{
    const IndexParts &parts = table_->index;
    if (from_.instance.empty()) {
        return ask(nullptr);
    }
    RowKey key;
    if (!from_.inclusive && table_->cursors.has(from_.instance) && readKey(parts, from_.instance, key)) {
        const Outcome outcome = ask(&key);
        if (outcome != Outcome::answered || isBehind()) {
            return outcome;
        }
        problem_ = notAscending;
        return Outcome::noRow;
    }

    // The client's own guess. First from far below, where no module can be mistaken about the key; most guesses that
    // are no rows are answered by that. Then from as near as can be.
    RowKey far;
    const bool hasFar = keyBelowOctets(parts, from_.instance, far);
    const bool hasNear = keyBelow(parts, from_.instance, from_.inclusive, key);
    Outcome outcome = ask(hasFar ? &far : nullptr);
    if (outcome == Outcome::unusable || (outcome == Outcome::answered && isBehind())) {
        return outcome;
    }
    if (hasNear && !(hasFar && isSame(parts, far, key))) {
        outcome = ask(&key);
    }
    return outcome == Outcome::answered ? goOn() : outcome;
}

Outcome SuccessorSearch::goOn()
{
    for (int step = 0; !isBehind(); ++step) {
        const Oid previous = instance_;
        const RowKey key = row_;
        const Outcome outcome = ask(&key);
        if (outcome != Outcome::answered) {
            return outcome;
        }
        if (step == maxSteps || std::is_lteq(compare(instance(), previous.view()))) {
            problem_ = notAscending;
            return Outcome::noRow;
        }
    }
    return Outcome::answered;
}

} // namespace ipmib::host
