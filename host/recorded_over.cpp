// SPDX-License-Identifier: BSD-3-Clause
// The source is asked as if there were nothing recorded; what the device lacks of its answers is stepped over.
#include "recorded_over.h"

namespace ipmib::host
{
namespace
{

// Fills in the value; false for a type that is none.
bool assignValue(const IpmibRecordedObject &object, Value &value)
{
    value = {};
    switch (object.type) {
    case IPMIB_RECORDED_INTEGER:
        value.type = ValueType::integer32;
        break;
    case IPMIB_RECORDED_OCTETS:
        value.type = ValueType::octets;
        break;
    case IPMIB_RECORDED_OBJECT_ID:
        value.type = ValueType::objectId;
        break;
    case IPMIB_RECORDED_IP_ADDRESS:
        value.type = ValueType::ipAddress;
        break;
    case IPMIB_RECORDED_COUNTER32:
        value.type = ValueType::counter32;
        break;
    case IPMIB_RECORDED_UNSIGNED32:
        value.type = ValueType::unsigned32;
        break;
    case IPMIB_RECORDED_TIME_TICKS:
        value.type = ValueType::timeTicks;
        break;
    case IPMIB_RECORDED_OPAQUE:
        value.type = ValueType::opaque;
        break;
    case IPMIB_RECORDED_COUNTER64:
        value.type = ValueType::counter64;
        break;
    default:
        return false;
    }
    value.number = object.number;
    value.octets = {object.octets, object.octet_count};
    value.objectId = {object.object_id, object.object_id_length};
    return true;
}

// An identifier behind all that begin with so many of the name's. It is no instance's: whoever lacks a subtree above
// instances lacks an object, or the rows that have an index in common. False when nothing can be behind.
bool stepBehind(OidView name, std::size_t length, Oid &place)
{
    for (; length > 0; --length) {
        if (name[length - 1] != UINT32_MAX) {
            place.assign(name.first(length - 1));
            place.append(name[length - 1] + 1);
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<Oid> RecordedOver::objects() const
{
    return source_ == nullptr ? std::vector<Oid>() : source_->objects();
}

void RecordedOver::start()
{
    if (source_ != nullptr) {
        source_->start();
    }
}

bool RecordedOver::lowestBehind(OidView asked, Oid &lowest)
{
    return isPlain() ? source_->lowestBehind(asked, lowest) : Source::lowestBehind(asked, lowest);
}

void RecordedOver::get(std::span<Variable> variables)
{
    for (Variable &variable : variables) {
        variable.status = Status::noSuchObject;
    }
    if (source_ != nullptr) {
        source_->get(variables);
    }
    if (recorded_.any() == 0) {
        return;
    }
    for (Variable &variable : variables) {
        IpmibRecordedObject object{};
        if (recorded_.find(variable.asked.data(), variable.asked.size(), &object) == 0) {
            variable.status = assignValue(object, variable.value) ? Status::ok : Status::genErr;
        } else if (variable.status == Status::ok &&
                   recorded_.lacks(variable.asked.data(), variable.asked.size()) != 0) {
            variable.status = Status::noSuchInstance;
        }
    }
}

void RecordedOver::getNext(std::span<Variable> variables, OidView region)
{
    if (isPlain()) {
        source_->getNext(variables, region);
        return;
    }
    if (source_ == nullptr || recorded_.lacks(region.data(), region.size()) != 0) {
        for (Variable &variable : variables) {
            variable.status = Status::endOfRegion;
        }
    } else {
        askForTheRest(variables, region);
    }
    for (Variable &variable : variables) {
        takeRecorded(variable, region);
    }
}

void RecordedOver::askForTheRest(std::span<Variable> variables, OidView region)
{
    places_.resize(variables.size());
    for (std::size_t i = 0; i < variables.size(); ++i) {
        places_[i].assign(variables[i].asked);
    }
    // A source's values are good until it is asked again, so all are asked again while one has to be.
    for (bool isDone = false; !isDone;) {
        isDone = true;
        asked_.assign(variables.begin(), variables.end());
        for (std::size_t i = 0; i < asked_.size(); ++i) {
            asked_[i].asked = places_[i].view();
        }
        source_->getNext(asked_, region);
        for (std::size_t i = 0; i < asked_.size(); ++i) {
            const OidView name = asked_[i].name.view();
            const std::size_t lacking = asked_[i].status == Status::ok ? recorded_.lacks(name.data(), name.size()) : 0;
            if (lacking != 0 && lacking == name.size()) {
                places_[i].assign(name);
            } else if (lacking != 0 && !stepBehind(name, lacking, places_[i])) {
                asked_[i].status = Status::endOfRegion;
                continue;
            }
            isDone = isDone && (asked_[i].status != Status::ok || lacking == 0);
        }
    }
    for (std::size_t i = 0; i < variables.size(); ++i) {
        const OidView asked = variables[i].asked;
        variables[i] = asked_[i];
        variables[i].asked = asked;
    }
}

// The smaller of the two; of the same instance the recorded value counts.
void RecordedOver::takeRecorded(Variable &variable, OidView region)
{
    const OidView from = std::is_lt(compare(variable.asked, region)) ? region : variable.asked;
    IpmibRecordedObject object{};
    const bool isRegionItself = from.data() == region.data() && recorded_.find(from.data(), from.size(), &object) == 0;
    if (variable.status == Status::genErr ||
        (!isRegionItself && recorded_.next(from.data(), from.size(), &object) != 0)) {
        return;
    }
    const OidView name(object.name, object.name_length);
    if (isWithin(name, region) &&
        (variable.status != Status::ok || std::is_lteq(compare(name, variable.name.view())))) {
        variable.status = assignValue(object, variable.value) ? Status::ok : Status::genErr;
        variable.name.assign(name);
    }
}

} // namespace ipmib::host
