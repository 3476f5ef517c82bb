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

// The values of one region that lie below the root.
void walkRegion(Session &session, const host::Resolver::Region &region, host::OidView root, InstanceWriter &writer)
{
    host::Oid asked(host::isWithin(root, region.root.view()) ? root : region.root.view());
    for (;;) {
        host::Variable variable;
        variable.asked = asked.view();
        session.resolver().getNext({&variable, 1}, region.root.view());
        if (variable.status == host::Status::genErr) {
            throw std::runtime_error("behind " + identifierText(session, asked.view()) +
                                     " the module's answer is unusable");
        }
        if (variable.status != host::Status::ok || !host::isWithin(variable.name.view(), root)) {
            return;
        }
        writer.add(variable.name.view(), variable.value);
        asked = variable.name;
    }
}

} // namespace

int walk(Session &session, const Options &options, const Words &words)
{
    if (words.size() != 1) {
        throw host::UsageError("walk: name one object");
    }
    session.freshState();
    const host::Oid root = parseIdentifier(session, words.front());
    InstanceWriter writer(session, options);
    bool served = false;
    for (const host::Resolver::Region &region : session.resolver().regions()) {
        if (host::isWithin(region.root.view(), root.view()) || host::isWithin(root.view(), region.root.view())) {
            served = true;
            walkRegion(session, region, root.view(), writer);
        }
    }
    if (!served) {
        throw std::runtime_error(words.front() + " is not served");
    }
    writer.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
