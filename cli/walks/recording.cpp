// SPDX-License-Identifier: BSD-3-Clause
// All instances that a device has, as recorded objects.
#include "walks/recording.h"

#include <algorithm>
#include <stdexcept>

namespace ipmib::cli
{
namespace
{

using support::RecordedType;

RecordedType typeOf(host::ValueType type)
{
    switch (type) {
    case host::ValueType::integer32:
        return RecordedType::integer;
    case host::ValueType::unsigned32:
        return RecordedType::unsigned32;
    case host::ValueType::counter32:
        return RecordedType::counter32;
    case host::ValueType::counter64:
        return RecordedType::counter64;
    case host::ValueType::timeTicks:
        return RecordedType::timeTicks;
    case host::ValueType::octets:
        return RecordedType::octets;
    case host::ValueType::ipAddress:
        return RecordedType::ipAddress;
    case host::ValueType::objectId:
        return RecordedType::objectId;
    case host::ValueType::opaque:
        return RecordedType::opaque;
    }
    throw std::logic_error("a value has no type");
}

RecordedObject recorded(const host::Variable &variable)
{
    const host::OidView name = variable.name.view();
    const host::Value &value = variable.value;
    RecordedObject object;
    object.name.assign(name.begin(), name.end());
    object.type = typeOf(value.type);
    object.number = object.type == RecordedType::counter64 ? value.number : static_cast<std::uint32_t>(value.number);
    object.octets.assign(value.octets.begin(), value.octets.end());
    object.objectId.assign(value.objectId.begin(), value.objectId.end());
    return object;
}

void record(host::Source &source, host::OidView region, Recording &recording)
{
    host::Oid asked(region);
    for (;;) {
        host::Variable variable;
        variable.asked = asked.view();
        source.getNext({&variable, 1}, region);
        if (variable.status == host::Status::genErr) {
            throw std::runtime_error("behind " + host::textOf(asked.view()) + " the answer is unusable");
        }
        if (variable.status != host::Status::ok) {
            return;
        }
        recording.push_back(recorded(variable));
        asked = variable.name;
    }
}

} // namespace

Recording::const_iterator placeOf(const Recording &recording, const std::vector<std::uint32_t> &name)
{
    return std::lower_bound(recording.begin(), recording.end(), name,
                            [](const RecordedObject &object, const std::vector<std::uint32_t> &wanted) {
                                return support::isInFront(object.name, wanted);
                            });
}

Recording recordingOf(LocalDevice &device)
{
    Recording recording;
    device.freshState();
    for (const host::ServedTable *table : device.allServed()) {
        record(*table->source, table->root.view(), recording);
    }
    std::ranges::stable_sort(recording, support::isInFront, &RecordedObject::name);
    const auto haveOneName = [](const RecordedObject &left, const RecordedObject &right) {
        return left.name == right.name;
    };
    recording.erase(std::unique(recording.begin(), recording.end(), haveOneName), recording.end());
    return recording;
}

} // namespace ipmib::cli
