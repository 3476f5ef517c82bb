// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl walk: all values below an object, in order.
#include "commands.h"
#include "identifier.h"
#include "instance.h"

#include <stdexcept>

namespace ipmib::cli
{
namespace
{

// The values of one table that lie below the root.
void walkTable(LocalDevice &device, const host::ServedTable &table, host::OidView root, InstanceWriter &writer)
{
    host::Oid asked(host::isWithin(root, table.root.view()) ? root : table.root.view());
    for (;;) {
        host::Variable variable;
        variable.asked = asked.view();
        device.getNext({&variable, 1}, table.root.view());
        if (variable.status == host::Status::genErr) {
            throw std::runtime_error("behind " + identifierText(device, asked.view()) + " the answer is unusable");
        }
        if (variable.status != host::Status::ok || !host::isWithin(variable.name.view(), root)) {
            return;
        }
        writer.add(variable.name.view(), variable.value);
        asked = variable.name;
    }
}

} // namespace

int walk(LocalDevice &device, const Options &options, const Words &words)
{
    if (words.size() != 1) {
        throw host::UsageError("walk: name one object");
    }
    device.freshState();
    const host::Oid root = parseIdentifier(device, words.front());
    InstanceWriter writer(device, options);
    bool served = false;
    for (const host::ServedTable &table : device.tree().tables()) {
        if (host::isWithin(table.root.view(), root.view()) || host::isWithin(root.view(), table.root.view())) {
            served = true;
            walkTable(device, table, root.view(), writer);
        }
    }
    if (!served) {
        throw std::runtime_error(words.front() + " is not served");
    }
    writer.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
