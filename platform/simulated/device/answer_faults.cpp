// SPDX-License-Identifier: BSD-3-Clause
#include "device/answer_faults.h"

#include "device/random.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

struct Kind {
    const char *name;
    std::uint32_t kind;
    const char *detail; // the member that says more; null for none
    std::uint32_t usual;
};

constexpr Kind kinds[] = {
    {"silence", IPMIB_FAULT_SILENCE, nullptr, 0},       {"delay", IPMIB_FAULT_DELAY, "seconds", msPerSecond},
    {"duplicate", IPMIB_FAULT_DUPLICATE, "seconds", 0}, {"truncate", IPMIB_FAULT_TRUNCATE, "octets", 20},
    {"genErr", IPMIB_FAULT_GEN_ERR, nullptr, 0},        {"tooBig", IPMIB_FAULT_TOO_BIG, nullptr, 0},
    {"wrongType", IPMIB_FAULT_WRONG_TYPE, nullptr, 0},  {"notIncreasing", IPMIB_FAULT_NOT_INCREASING, nullptr, 0},
};

std::uint32_t readDetail(const Kind &kind, const Value &value)
{
    constexpr double longest = 3'600;
    constexpr std::uint32_t largest = 65'507;
    if (kind.kind == IPMIB_FAULT_TRUNCATE) {
        return static_cast<std::uint32_t>(value.number(0, largest));
    }
    value.real(0, longest);
    return static_cast<std::uint32_t>(readSeconds(value));
}

} // namespace

AnswerFaults AnswerFaults::read(const Value &value)
{
    return AnswerFaults().changed(value, 0);
}

AnswerFaults AnswerFaults::changed(const Value &value, Time now) const
{
    AnswerFaults result = *this;
    Object object(value);
    for (const Kind &kind : kinds) {
        const auto member = object.find(kind.name);
        if (!member) {
            continue;
        }
        const auto place = std::ranges::find(result.faults_, kind.kind, &Fault::kind);
        Fault fault;
        fault.kind = kind.kind;
        fault.detail = kind.usual;
        if (!member->isObject()) {
            fault = place != result.faults_.end() ? *place : fault;
            fault.isOn = member->boolean();
        } else {
            Object said(*member);
            fault.isOn = said.boolean("on", true);
            if (const auto probability = said.find("probability")) {
                fault.probability = probability->real(0, 1);
            }
            fault.seed = said.number("seed", 0, 0, UINT32_MAX);
            if (const auto times = said.find("times")) {
                fault.times = Schedule::read(*times).startingAt(now);
            }
            if (const auto detail = kind.detail == nullptr ? std::nullopt : said.find(kind.detail)) {
                fault.detail = readDetail(kind, *detail);
            }
            said.finish();
        }
        if (place == result.faults_.end()) {
            result.faults_.push_back(fault);
        } else {
            *place = fault;
        }
    }
    object.finish();
    return result;
}

IpmibAnswerFaults AnswerFaults::next(Time now)
{
    IpmibAnswerFaults answer{};
    for (Fault &fault : faults_) {
        if (!fault.isOn || !fault.times.covers(now)) {
            continue;
        }
        const double drawn = fractionOf(mixed(fault.seed ^ mixed(fault.kind)) + fault.answers++);
        if (drawn >= fault.probability) {
            continue;
        }
        answer.kinds |= fault.kind;
        (fault.kind == IPMIB_FAULT_DELAY       ? answer.delay_ms
         : fault.kind == IPMIB_FAULT_DUPLICATE ? answer.repeat_ms
                                               : answer.octets) |= fault.detail;
    }
    return answer;
}

} // namespace ipmib::simulated
