// SPDX-License-Identifier: BSD-3-Clause
// Both recordings ascend, so one look at each tells them apart.
#include "walks/differences.h"

#include <algorithm>
#include <optional>

namespace ipmib::cli
{
namespace
{

using Identifier = std::vector<std::uint32_t>;

const Identifier systemNode{1, 3, 6, 1, 2, 1, 1};

bool has(const Recording &recording, const Identifier &root)
{
    const auto found = placeOf(recording, root);
    return found != recording.end() && support::beginsWith(found->name, root);
}

// The largest part of the tree that the instance belongs to and the walk has nothing of: its table, its column, or it.
Identifier partWithout(const Recording &wanted, const Identifier &instance, const ObjectTree &tree)
{
    const host::ServedTable *table = tree.tableOf(instance);
    for (std::size_t length : {table == nullptr ? instance.size() : table->identifier.size(),
                               table == nullptr ? instance.size() : table->root.size() + 1}) {
        const Identifier part(instance.begin(), instance.begin() + static_cast<std::ptrdiff_t>(length));
        if (!has(wanted, part)) {
            return part;
        }
    }
    return instance;
}

} // namespace

Differences differencesOf(const Recording &wanted, const Recording &have, const ObjectTree &tree)
{
    Differences differences;
    const auto lack = [&](const Identifier &instance) {
        ++differences.lackingInstances;
        if (differences.lacking.empty() || !support::beginsWith(instance, differences.lacking.back())) {
            differences.lacking.push_back(partWithout(wanted, instance, tree));
        }
    };
    auto present = have.begin();
    for (const RecordedObject &object : wanted) {
        for (; present != have.end() && support::isInFront(present->name, object.name); ++present) {
            lack(present->name);
        }
        const bool isThere = present != have.end() && present->name == object.name;
        const bool isSame = isThere && (present->hasSameValue(object) || object.name == sysUpTime);
        present += isThere ? 1 : 0;
        if (isSame) {
            continue;
        }
        const bool isKnown = isThere || tree.tableOf(object.name) != nullptr;
        (isKnown ? differences.differing : differences.unknown).push_back(object);
    }
    for (; present != have.end(); ++present) {
        lack(present->name);
    }
    return differences;
}

} // namespace ipmib::cli
