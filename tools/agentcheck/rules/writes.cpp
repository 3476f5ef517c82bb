// SPDX-License-Identifier: BSD-3-Clause
// Writes, which have to be allowed: the value that an instance has is written to it again.
#include "rules.h"

#include "host/syntax.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

bool isWritable(const MibTreeNode &node)
{
    return node.ulAccess == MIB_ACCESS_READ_WRITE || node.ulAccess == MIB_ACCESS_READ_CREATE;
}

// Each write changes it: TestAndIncr.
bool isLock(const MibTreeNode &node)
{
    return std::string_view(node.pszName).ends_with("SpinLock");
}

// A value that is no state but what to do, which no agent should have: written, it deletes the row.
bool isOrder(const MibTreeNode &node, const Value &value)
{
    return std::ranges::any_of(host::labelsOf(*node.pstSyntax), [&value](const MibEnumItem &label) {
        const std::string_view name = label.pszLabel;
        return static_cast<std::uint32_t>(label.lValue) == value.number && (name == "destroy" || name == "deleteTCB");
    });
}

bool isRefusal(Version version, long error)
{
    return version == Version::v1 ? error == noSuchName || error == readOnly
                                  : error == notWritable || error == noAccess || error == authorizationError;
}

void checkWrite(Check &check, const MibTreeNode &node, const Variable &variable)
{
    const Answer answer = check.exchange.set(variable);
    if (!answer.isThere) {
        return;
    }
    if (!isWritable(node)) {
        if (!isRefusal(check.exchange.version(), answer.error)) {
            check.report.broken(Rule::notWritable, variable.name,
                                answer.error == noError ? "was written" : "is refused with " + errorText(answer.error));
        }
    } else if (answer.error == noError && !isCounter(variable.value.tag)) {
        doubt(check, variable.name, [=, &check]() -> std::optional<Fault> {
            const auto value = check.now(variable.name);
            return value == variable.value
                       ? std::nullopt
                       : std::optional(Fault{Rule::written, "is " + (value ? textOf(*value) : "gone") + ", though " +
                                                                textOf(variable.value) + " was written"});
        });
    }
}

} // namespace

void checkWrites(Check &check)
{
    if (!check.settings.mayWrite) {
        return;
    }
    for (const auto &[region, walk] : check.walks) {
        for (const host::Object *object : region->objects) {
            const auto first = walk.values.lower_bound(nameOf(*object)); // one instance of each is enough
            if (first != walk.values.end() && region->objectOf(first->first) == object && !isLock(*object->node) &&
                !isOrder(*object->node, first->second)) {
                checkWrite(check, *object->node, {first->first, first->second});
            }
        }
    }
}

} // namespace ipmib::agentcheck
