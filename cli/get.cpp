// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl get: the values of instances, all from one state of the device.
#include "commands.h"
#include "identifier.h"
#include "instance.h"
#include "output.h"

namespace ipmib::cli
{
namespace
{

// Of a scalar its only instance is meant.
host::Oid instanceNamed(LocalDevice &device, const std::string &word)
{
    host::Oid oid = parseIdentifier(device, word);
    const Object *object = device.tree().find(oid.view());
    if (object == nullptr) {
        return oid;
    }
    if (object->node->ulKind != MIB_NODE_SCALAR) {
        throw host::UsageError(word + ": name an instance, or use walk");
    }
    oid.append(0);
    return oid;
}

const char *problem(host::Status status)
{
    switch (status) {
    case host::Status::noSuchObject:
        return "is not served";
    case host::Status::noSuchInstance:
        return "does not exist";
    default:
        return "cannot be told: the answer is unusable";
    }
}

} // namespace

int get(LocalDevice &device, const Options &options, const Words &words)
{
    if (words.empty()) {
        throw host::UsageError("get: get what? Name an object");
    }
    device.freshState();
    std::vector<host::Oid> names;
    for (const std::string &word : words) {
        names.push_back(instanceNamed(device, word));
    }
    std::vector<host::Variable> variables(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        variables[i].asked = names[i].view();
    }
    device.get(variables);
    InstanceWriter writer(device, options);
    int status = host::exitSuccess;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (variables[i].status == host::Status::ok) {
            writer.add(names[i].view(), variables[i].value);
            continue;
        }
        complain(words[i] + " " + problem(variables[i].status));
        status = host::exitFailure;
    }
    writer.finish();
    return status;
}

} // namespace ipmib::cli
