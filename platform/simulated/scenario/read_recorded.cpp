// SPDX-License-Identifier: BSD-3-Clause
// Reads what a device answers as it was recorded: "objects", lines as in an snmprec file, and "lacking", identifiers.
#include "scenario/read.h"

#include "support/walk/snmprec.h"

namespace ipmib::simulated
{
namespace
{

using support::RecordedType;

static_assert(static_cast<int>(RecordedType::integer) == IPMIB_RECORDED_INTEGER);
static_assert(static_cast<int>(RecordedType::octets) == IPMIB_RECORDED_OCTETS);
static_assert(static_cast<int>(RecordedType::objectId) == IPMIB_RECORDED_OBJECT_ID);
static_assert(static_cast<int>(RecordedType::ipAddress) == IPMIB_RECORDED_IP_ADDRESS);
static_assert(static_cast<int>(RecordedType::counter32) == IPMIB_RECORDED_COUNTER32);
static_assert(static_cast<int>(RecordedType::unsigned32) == IPMIB_RECORDED_UNSIGNED32);
static_assert(static_cast<int>(RecordedType::timeTicks) == IPMIB_RECORDED_TIME_TICKS);
static_assert(static_cast<int>(RecordedType::opaque) == IPMIB_RECORDED_OPAQUE);
static_assert(static_cast<int>(RecordedType::counter64) == IPMIB_RECORDED_COUNTER64);

} // namespace

void readRecorded(Object &object, Recorded &recorded)
{
    if (const auto lacking = object.find("lacking")) {
        lacking->each([&recorded](const Value &root) {
            const auto identifier = support::parseIdentifier(root.text("an object identifier"));
            if (!identifier) {
                root.refuse("an object identifier, numbers with dots between them");
            }
            recorded.lack(*identifier);
        });
    }
    const auto objects = object.find("objects");
    if (objects) {
        objects->each([&recorded](const Value &line) {
            try {
                recorded.add(support::parseSnmprec(line.text("a recorded object, IDENTIFIER|TAG|VALUE")));
            } catch (const support::WalkError &error) {
                line.fail(error.what());
            }
        });
    }
    if (const auto twice = recorded.complete(); !twice.empty()) {
        objects->fail(support::identifierText(twice) + " has two values");
    }
}

} // namespace ipmib::simulated
