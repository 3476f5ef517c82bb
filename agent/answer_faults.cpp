// SPDX-License-Identifier: BSD-3-Clause
#include "answer_faults.h"

#include "device_addresses.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ipmib::agent
{
namespace
{

constexpr std::size_t mostHeld = 10'000; // answers that wait

AnswerFaults *theOne = nullptr;

// Without the values that it would have had: with the request's variables, as version 1 has it, or with none.
void makeError(netsnmp_pdu &answer, long status, long index, const netsnmp_pdu *request)
{
    answer.errstat = status;
    answer.errindex = index;
    snmp_free_varbind(answer.variables);
    const bool hasNone = status == SNMP_ERR_TOOBIG && answer.version != SNMP_VERSION_1;
    answer.variables = request == nullptr || hasNone ? nullptr : snmp_clone_varbind(request->variables);
}

void changeType(netsnmp_variable_list &variable)
{
    static constexpr char text[] = "42";
    static constexpr long number = 42;
    switch (variable.type) {
    case SNMP_NOSUCHOBJECT:
    case SNMP_NOSUCHINSTANCE:
    case SNMP_ENDOFMIBVIEW:
    case ASN_NULL:
        return;
    case ASN_OCTET_STR:
    case ASN_OBJECT_ID:
    case ASN_IPADDRESS:
        snmp_set_var_typed_value(&variable, ASN_INTEGER, &number, sizeof number);
        return;
    default:
        snmp_set_var_typed_value(&variable, ASN_OCTET_STR, text, std::strlen(text));
    }
}

std::vector<netsnmp_variable_list *> listed(netsnmp_variable_list *first)
{
    std::vector<netsnmp_variable_list *> all;
    for (; first != nullptr; first = first->next_variable) {
        all.push_back(first);
    }
    return all;
}

// The last variable stands where the request began to look for it.
void turnBack(netsnmp_pdu &answer, const netsnmp_pdu &request)
{
    const auto answers = listed(answer.variables);
    const auto asked = listed(request.variables);
    if (answers.empty() || asked.empty()) {
        return;
    }
    std::size_t column = answers.size() - 1;
    if (request.command == SNMP_MSG_GETBULK) {
        const auto single = std::min(static_cast<std::size_t>(std::max(request.non_repeaters, 0L)), asked.size());
        column =
            column < single || single == asked.size() ? column : single + (column - single) % (asked.size() - single);
    }
    if (column < asked.size()) {
        snmp_set_var_objid(answers.back(), asked[column]->name, asked[column]->name_length);
    }
}

} // namespace

AnswerFaults::AnswerFaults(const IpmibPlatformHooks *platform, host::Instances &instances, const Contexts &contexts)
    : hooks_(platform == nullptr ? nullptr : platform->rehearsal), instances_(instances), contexts_(contexts)
{
    if (hooks_ != nullptr && hooks_->next_answer != nullptr) {
        theOne = this;
    }
}

AnswerFaults::~AnswerFaults()
{
    theOne = nullptr;
    if (alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
    }
}

AnswerFaults *AnswerFaults::inForce()
{
    return theOne;
}

void AnswerFaults::spoil(netsnmp_pdu &message, const netsnmp_pdu *request)
{
    next_ = {};
    const bool isAnswer = message.command == SNMP_MSG_RESPONSE;
    // A report, as on the way to know the engine, is of no context, but comes from a device's address.
    const std::string *const own = DeviceAddresses::contextAt(message);
    const auto instance =
        contexts_.instanceOf(own != nullptr ? *own : std::string(message.contextName, message.contextNameLen));
    if ((!isAnswer && message.command != SNMP_MSG_REPORT) || !instance) {
        return;
    }
    instances_.select(*instance);
    hooks_->next_answer(&next_);
    const auto has = [this](std::uint32_t kind) { return (next_.kinds & kind) != 0; };
    if (!isAnswer || message.errstat != SNMP_ERR_NOERROR) {
        return;
    }
    if (has(IPMIB_FAULT_GEN_ERR)) {
        makeError(message, SNMP_ERR_GENERR, 1, request);
    } else if (has(IPMIB_FAULT_TOO_BIG)) {
        makeError(message, SNMP_ERR_TOOBIG, 0, request);
    } else {
        const bool isWalk =
            request != nullptr && (request->command == SNMP_MSG_GETNEXT || request->command == SNMP_MSG_GETBULK);
        if (has(IPMIB_FAULT_WRONG_TYPE) && message.variables != nullptr) {
            changeType(*message.variables);
        }
        if (has(IPMIB_FAULT_NOT_INCREASING) && isWalk) {
            turnBack(message, *request);
        }
    }
}

void AnswerFaults::send(netsnmp_transport &transport, const Encoded &message, Send way, Patience patience)
{
    const IpmibAnswerFaults faults = std::exchange(next_, {});
    const auto has = [&faults](std::uint32_t kind) { return (faults.kinds & kind) != 0; };
    if (has(IPMIB_FAULT_SILENCE)) {
        return;
    }
    Encoded sent = message;
    if (has(IPMIB_FAULT_TRUNCATE)) {
        sent.size = static_cast<int>(std::min(static_cast<std::uint32_t>(sent.size), faults.octets));
    }
    const bool canWait = patience == Patience::asLongAsItTakes;
    const std::uint32_t delayMs = canWait && has(IPMIB_FAULT_DELAY) ? faults.delay_ms : 0;
    const auto sendAfter = [&](std::uint32_t milliseconds) {
        if (milliseconds == 0 || !canWait) {
            way(&transport, sent.octets, sent.size, sent.opaque, sent.opaqueLength);
        } else {
            hold(transport, sent, way, milliseconds);
        }
    };
    sendAfter(delayMs);
    if (has(IPMIB_FAULT_DUPLICATE)) {
        sendAfter(delayMs + faults.repeat_ms);
    }
}

void AnswerFaults::hold(netsnmp_transport &transport, const Encoded &message, Send way, std::uint32_t delayMs)
{
    if (held_.size() == mostHeld) {
        snmp_log(LOG_NOTICE, "%zu answers wait to be sent late, one more is not sent at all\n", held_.size());
        return;
    }
    const auto copyOf = [](const void *from, int size) {
        const auto *octets = static_cast<const std::uint8_t *>(from);
        return std::vector<std::uint8_t>(octets, octets + size);
    };
    held_.emplace(Clock::now() + std::chrono::milliseconds(delayMs),
                  Held{&transport, way, copyOf(message.octets, message.size),
                       copyOf(*message.opaque, *message.opaque == nullptr ? 0 : *message.opaqueLength)});
    setAlarm();
}

void AnswerFaults::sendWhatIsDue()
{
    while (!held_.empty() && held_.begin()->first <= Clock::now()) {
        Held due = std::move(held_.extract(held_.begin()).mapped());
        void *opaque = due.opaque.empty() ? nullptr : due.opaque.data();
        int length = static_cast<int>(due.opaque.size());
        due.send(due.transport, due.octets.data(), static_cast<int>(due.octets.size()), &opaque, &length);
    }
    setAlarm();
}

void AnswerFaults::setAlarm()
{
    if (alarm_ != 0) {
        snmp_alarm_unregister(std::exchange(alarm_, 0));
    }
    if (held_.empty()) {
        return;
    }
    using std::chrono::microseconds;
    constexpr long perSecond = 1'000'000;
    const auto left = std::chrono::duration_cast<microseconds>(held_.begin()->first - Clock::now()).count() + 1;
    const timeval wait{std::max(left, 1L) / perSecond, std::max(left, 1L) % perSecond};
    alarm_ = snmp_alarm_register_hr(
        wait, 0,
        [](unsigned, void *self) {
            auto &faults = *static_cast<AnswerFaults *>(self);
            faults.alarm_ = 0;
            faults.sendWhatIsDue();
        },
        this);
}

} // namespace ipmib::agent
