// SPDX-License-Identifier: BSD-3-Clause
// Walks that end, whatever the agent answers: each step is greater than the one before, and rows are counted.
#include "walks.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

// The first object behind what the name is an instance of.
const host::Object *objectBehind(const Region &region, const Name &name)
{
    const auto behind = std::ranges::find_if(region.objects, [&name](const host::Object *object) {
        return std::is_gt(host::compare(object->oid.view(), name)) && !host::isWithin(name, object->oid.view());
    });
    return behind == region.objects.end() ? nullptr : *behind;
}

} // namespace

// False also at the end of all.
bool Walker::isSuccessor(const Name &asked, const Variable &found)
{
    if (found.value.tag == Tag::endOfMibView) {
        if (found.name != asked) {
            report_.broken(Rule::ends, asked, "endOfMibView comes with " + host::textOf(found.name));
        }
        return false;
    }
    if (found.value.isException()) {
        report_.broken(Rule::ends, asked, textOf(found.value.tag) + " is no answer to what follows");
        return false;
    }
    if (!Ascending()(asked, found.name)) {
        report_.broken(Rule::ascends, asked, "is followed by " + host::textOf(found.name));
        return false;
    }
    return true;
}

Walk Walker::walk(const Region &region, const Step &step)
{
    Walk walk;
    std::map<const host::Object *, std::size_t> rows;
    Name at = region.isTable ? region.root : nameOf(*region.objects.front());
    for (;;) {
        std::vector<Variable> found = step(at);
        bool leave = found.empty(); // what the name belongs to, for what stands behind it
        walk.isBroken |= leave;
        for (Variable &variable : found) {
            if (!isSuccessor(at, variable)) {
                if (variable.value.tag == Tag::endOfMibView) {
                    return walk;
                }
                walk.isBroken = true;
                leave = true;
                break;
            }
            at = variable.name;
            if (!host::isWithin(at, region.root)) {
                return walk;
            }
            const host::Object *object = region.objectOf(at);
            if (object == nullptr && region.isTable) {
                report_.broken(Rule::defined, at, "is in no column of " + region.name);
            }
            const bool isOneMore = object != nullptr && rows[object]++ == rows_;
            if (object == nullptr || isOneMore) {
                walk.isCut |= isOneMore;
                leave = true;
                break;
            }
            walk.values.emplace(at, std::move(variable.value));
        }
        if (leave) {
            const host::Object *next = objectBehind(region, at);
            if (next == nullptr) {
                return walk;
            }
            at = nameOf(*next);
        }
    }
}

Walk Walker::byGetNext(const Region &region)
{
    return walk(region, [this](const Name &at) {
        const auto found = exchange_.getNext({at}).front();
        return found ? std::vector<Variable>{*found} : std::vector<Variable>{};
    });
}

Walk Walker::byGetBulk(const Region &region, int maxRepetitions)
{
    return walk(region, [this, maxRepetitions](const Name &at) { return exchange_.getBulk({at}, 0, maxRepetitions); });
}

Walk Walker::sideBySide(const Region &region)
{
    constexpr std::size_t atOnce = 12;
    struct Column {
        const host::Object *object;
        Name at;
    };
    Walk walk;
    for (std::size_t begin = 0; begin < region.objects.size(); begin += atOnce) {
        std::vector<Column> columns;
        for (std::size_t i = begin; i < std::min(begin + atOnce, region.objects.size()); ++i) {
            columns.push_back({region.objects[i], nameOf(*region.objects[i])});
        }
        for (std::size_t row = 0; !columns.empty(); ++row) {
            std::vector<Name> names;
            std::ranges::transform(columns, std::back_inserter(names), &Column::at);
            const auto found = exchange_.getNext(names);
            std::vector<Column> left;
            for (std::size_t i = 0; i < columns.size(); ++i) {
                if (!found[i] || !isSuccessor(columns[i].at, *found[i])) {
                    walk.isBroken |= !found[i] || found[i]->value.tag != Tag::endOfMibView;
                } else if (host::isWithin(found[i]->name, columns[i].object->oid.view())) {
                    if (row == rows_) {
                        walk.isCut = true;
                        continue;
                    }
                    walk.values.emplace(found[i]->name, found[i]->value);
                    left.push_back({columns[i].object, found[i]->name});
                }
            }
            columns = std::move(left);
        }
    }
    return walk;
}

} // namespace ipmib::agentcheck
