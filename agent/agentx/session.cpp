// SPDX-License-Identifier: BSD-3-Clause
// Every step waits for an answer in the event loop. A master that hangs keeps its connection: its answer counts
// whenever it comes, and when the master ends instead, the connection does too. So nobody needs to ask whether it still
// lives.

#include "agent/agentx/session.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <span>

namespace ipmib::agent::agentx
{

namespace
{

constexpr unsigned retrySeconds = 1;
constexpr unsigned patienceSeconds = 3;
constexpr long reasonShutdown = 5;

constexpr const char *permissionHint = " (agentXPerms in snmpd.conf says who may use the master's socket)";
constexpr const char *sessionClosed = "the master closed the session";
constexpr const char *silent = "it does not answer";

// Reasons that say the same: there is no master at the moment.
bool isAbsence(const std::string &reason)
{
    return reason == std::strerror(ECONNREFUSED) || reason == std::strerror(ENOENT) ||
           reason == Connection::masterClosed || reason == sessionClosed;
}

} // namespace

Session::Session(host::Catalogue &catalogue, host::Instances &instances, host::SysUpTime &upTime,
                 const ServeSettings &settings, const MasterAddress &master, std::function<void()> settled,
                 Purpose purpose)
    : catalogue_(catalogue), instances_(instances), upTime_(upTime), settings_(settings), settled_(std::move(settled)),
      purpose_(purpose), responder_(catalogue),
      connection_(master, {[this] { connected(); }, [this](netsnmp_pdu &message) { received(message); },
                           [this](const std::string &reason) { lost(reason); }}),
      report_("agentx", ServeSettings::directive), held_(instances), contexts_([this](Message message) {
          message->sessid = sessionId_;
          message->transid = message->reqid = ++packetId_;
          const long number = packetId_;
          request(std::move(message));
          return number;
      })
{
}

Session::~Session()
{
    leaveMaster();
}

void Session::start()
{
    leaveMaster();
    state_ = State::connecting;
    setAlarm(patienceSeconds);
    connection_.open();
}

void Session::leaveMaster()
{
    clearAlarm();
    contexts_.end();
    held_.drop();
    if (isOpen()) {
        const Message message = makeMessage(closeMessage, sessionId_, ++packetId_);
        message->errstat = reasonShutdown;
        connection_.send(*message);
    }
    connection_.close();
    state_ = State::apart;
}

void Session::connected()
{
    state_ = State::opening;
    Message message = makeMessage(openMessage, 0, ++packetId_);
    addText(*message, "ipmibd");
    request(std::move(message));
}

bool Session::notify(const netsnmp_variable_list &variables, const std::string &context)
{
    if (!isServing()) {
        return false;
    }
    const Message message = makeMessage(notifyMessage, sessionId_, ++packetId_);
    setContext(*message, context);
    // The library copies what it only reads.
    message->variables = snmp_clone_varbind(const_cast<netsnmp_variable_list *>(&variables));
    connection_.send(*message);
    return true;
}

void Session::request(Message message)
{
    setAlarm(patienceSeconds);
    connection_.send(*message);
}

void Session::received(netsnmp_pdu &message)
{
    if (message.command == responseMessage) {
        receivedResponse(message);
    } else if (!isOpen() || message.sessid != sessionId_) {
        if (message.command != cleanupSetMessage) { // which nobody answers
            becomeResponse(message, notOpen);
            connection_.send(message);
        }
    } else if (message.command == closeMessage) {
        connection_.close();
        lost(sessionClosed);
    } else {
        answer(message);
    }
}

// Whether there is the context that it names; then that one is asked from here on.
bool Session::isFor(const netsnmp_pdu &message)
{
    const std::string context = contextOf(message);
    const ContextRegistrations::Place *place = context.empty() ? nullptr : contexts_.find(context);
    if (place == nullptr && !context.empty()) {
        return false;
    }
    instances_.select(place == nullptr ? host::Instances::first : place->instance);
    responder_.serve(place == nullptr ? own_ : place->tables);
    return true;
}

void Session::answerNow(netsnmp_pdu &message)
{
    if (!isFor(message)) {
        becomeResponse(message, unsupportedContext);
        connection_.send(message);
    } else if (responder_.answer(message)) {
        connection_.send(message);
    }
}

void Session::answer(netsnmp_pdu &message)
{
    const host::Source *const awaited = isFor(message) ? responder_.begin(message) : nullptr;
    if (awaited != nullptr && held_.mustWait(*awaited)) {
        const std::shared_ptr<netsnmp_pdu> kept(snmp_clone_pdu(&message), FreePdu());
        held_.hold(*awaited, instances_.selected(), [this, kept](bool) {
            if (isFor(*kept)) {
                responder_.begin(*kept);
            }
            answerNow(*kept);
        });
    } else {
        answerNow(message);
    }
}

void Session::receivedResponse(const netsnmp_pdu &response)
{
    if (state_ == State::serving && response.sessid == sessionId_ && contexts_.take(response)) {
        answeredInContext();
        return;
    }
    if (response.reqid != packetId_) {
        return;
    }
    instances_.select(host::Instances::first); // of which the master's sysUpTime is told
    if (state_ == State::opening) {
        opened(response);
    } else if (state_ == State::claiming && response.sessid == sessionId_) {
        upTime_.isAtLeast(response.time);
        answered(response);
    }
}

void Session::lost(const std::string &reason)
{
    const bool wasServing = state_ == State::serving;
    held_.drop();
    own_.clear();
    contexts_.end();
    state_ = State::apart;
    setAlarm(retrySeconds);
    const bool isNews = wasServing || (reason != trouble_ && !(isAbsence(reason) && isAbsence(trouble_)));
    trouble_ = reason;
    if (isNews && purpose_ == Purpose::serve) {
        snmp_log(wasServing ? LOG_WARNING : LOG_ERR, "agentx: %s; trying again every second\n", trouble().c_str());
    }
    settle();
}

std::string Session::trouble() const
{
    const bool isForbidden = trouble_ == std::strerror(EACCES) && connection_.address().isLocal();
    return "no master at " + connection_.address().text + ": " + trouble_ + (isForbidden ? permissionHint : "");
}

void Session::settle()
{
    if (settled_) {
        settled_();
    }
}

void Session::opened(const netsnmp_pdu &response)
{
    if (response.errstat != noError) {
        connection_.close();
        lost("it refuses the session: " + textOfError(response.errstat));
        return;
    }
    sessionId_ = response.sessid;
    upTime_.isNow(response.time);
    state_ = State::claiming;
    claims_.clear();
    own_.clear(); // the master may ask for what it has granted, be it for a moment
    for (const host::ServedTable &table : catalogue_.tables()) {
        claims_.emplace_back(table, settings_.of(table),
                             purpose_ == Purpose::look ? Claim::WhenOff::look : Claim::WhenOff::leaveAlone);
        own_.push_back(&table);
    }
    claim_ = 0;
    claimOn();
}

void Session::claimOn()
{
    for (; claim_ < claims_.size(); ++claim_) {
        claims_[claim_].goWith(std::span(claims_).first(claim_));
        const auto attempt = claims_[claim_].next();
        if (!attempt && purpose_ == Purpose::serve && claims_[claim_].isOurs()) {
            instances_.select(host::Instances::first);
            begin(claims_[claim_].table());
        }
        if (attempt) {
            Message message =
                makeMessage(attempt->registering ? registerMessage : unregisterMessage, sessionId_, ++packetId_);
            message->priority = attempt->priority;
            addIdentifier(*message, attempt->root);
            request(std::move(message));
            return;
        }
    }
    serveOwn();
}

void Session::answered(const netsnmp_pdu &response)
{
    using Answer = Claim::Answer;
    claims_[claim_].take(response.errstat == noError                 ? Answer::granted
                         : response.errstat == duplicateRegistration ? Answer::duplicate
                                                                     : Answer::refused,
                         textOfError(response.errstat));
    claimOn();
}

void Session::begin(const host::ServedTable &table)
{
    try {
        table.source->start();
    } catch (const std::exception &error) {
        snmp_log(LOG_ERR, "agentx: %s has no rows: %s\n", table.name, error.what());
    }
}

void Session::serveOwn()
{
    clearAlarm();
    std::vector<const host::ServedTable *> all;
    std::vector<const host::ServedTable *> tables;
    for (const Claim &claim : claims_) {
        all.push_back(&claim.table());
        if (claim.isOurs()) {
            tables.push_back(&claim.table());
        }
    }
    if (purpose_ == Purpose::serve) {
        snmp_log(LOG_INFO, "agentx: connected to the master at %s, serving %zu of %zu tables\n",
                 connection_.address().text.c_str(), host::countNames(tables), host::countNames(all));
        report_.log(claims_);
    }
    own_ = std::move(tables);
    state_ = State::serving;
    trouble_.clear();
    contexts_.begin();
    if (contexts_.areDone()) {
        settle();
    }
}

void Session::answeredInContext()
{
    trouble_.clear();
    if (contexts_.areDone()) {
        clearAlarm();
        settle();
    }
}

void Session::serve(const std::vector<const host::ServedTable *> &tables, const Context &context)
{
    instances_.select(context.instance);
    for (const host::ServedTable *table : tables) {
        begin(*table);
    }
    contexts_.serve(tables, context);
}

void Session::leave(const std::string &context)
{
    held_.release(nullptr); // while there is still somebody to answer
    contexts_.leave(context);
}

void Session::setAlarm(unsigned seconds)
{
    clearAlarm();
    alarm_ = snmp_alarm_register(
        seconds, 0, [](unsigned, void *self) { static_cast<Session *>(self)->alarmWentOff(); }, this);
}

void Session::clearAlarm()
{
    if (alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
        alarm_ = 0;
    }
}

void Session::alarmWentOff()
{
    alarm_ = 0; // the library forgets an alarm that went off
    if (state_ == State::apart) {
        start();
    } else if (trouble_ != silent) {
        trouble_ = silent;
        if (purpose_ == Purpose::serve) {
            snmp_log(LOG_WARNING, "agentx: the master at %s does not answer; waiting\n",
                     connection_.address().text.c_str());
        }
        settle();
    }
}

} // namespace ipmib::agent::agentx
