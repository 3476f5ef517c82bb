// SPDX-License-Identifier: BSD-3-Clause
// Being the sub-agent of one master: connects, opens a session, claims the tables, answers, and begins again whenever
// the master is gone.
#pragma once

#include "agent/agentx/connection.h"
#include "agent/agentx/context_registrations.h"
#include "agent/agentx/responder.h"
#include "agent/context_server.h"
#include "agent/held_questions.h"
#include "agent/ownership_report.h"
#include "agent/serve_settings.h"

#include "host/sys_up_time.h"

#include <functional>
#include <string>
#include <vector>

namespace ipmib::agent::agentx
{

class Session : public ContextServer
{
  public:
    // A sub-agent that serves tells the log how things stand. Somebody who only looks asks the session, and also about
    // the tables that are off.
    enum class Purpose { serve, look };

    // `settled` is called whenever it is known how things stand: the tables are claimed, or the master is out of reach.
    // The others must outlive the session; sysUpTime becomes the master's.
    Session(host::Catalogue &catalogue, host::Instances &instances, host::SysUpTime &upTime,
            const ServeSettings &settings, const MasterAddress &master, std::function<void()> settled,
            Purpose purpose = Purpose::serve);
    // Sends agentx-Close where a session is open; does not wait.
    ~Session() override;
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Connects at once, anew if need be, and claims the tables by the settings as they are now.
    void start();

    // Of the contexts beside the one without a name, now and in every later session. What the master refuses is logged.
    void serve(const std::vector<const host::ServedTable *> &tables, const Context &context) override;
    void leave(const std::string &context) override;

    // Hands a notification of a context to the master, its identifier first, or behind sysUpTime; false when there is
    // no master to take it.
    bool notify(const netsnmp_variable_list &variables, const std::string &context);

    bool isServing() const { return state_ == State::serving; }
    // Why not: "no master at ...: ...".
    std::string trouble() const;
    const std::vector<Claim> &claims() const { return claims_; }

  private:
    enum class State { apart, connecting, opening, claiming, serving };

    // The master has granted a session, which has a number from then on.
    bool isOpen() const { return state_ == State::claiming || state_ == State::serving; }

    void connected();
    void received(netsnmp_pdu &message);
    void answer(netsnmp_pdu &message);
    void answerNow(netsnmp_pdu &message);
    bool isFor(const netsnmp_pdu &message);
    void receivedResponse(const netsnmp_pdu &response);
    void lost(const std::string &reason);
    void opened(const netsnmp_pdu &response);
    void answered(const netsnmp_pdu &response);
    void claimOn();
    static void begin(const host::ServedTable &table);
    void serveOwn();
    void answeredInContext();
    void settle();
    void leaveMaster();
    void request(Message message);

    // The one alarm: to try again while apart, to complain while the master owes an answer.
    void setAlarm(unsigned seconds);
    void clearAlarm();
    void alarmWentOff();

    host::Catalogue &catalogue_;
    host::Instances &instances_;
    host::SysUpTime &upTime_;
    const ServeSettings &settings_;
    std::function<void()> settled_;
    Purpose purpose_;
    Responder responder_;
    Connection connection_;
    State state_ = State::apart;
    long sessionId_ = 0;
    long packetId_ = 0;
    unsigned alarm_ = 0;
    std::vector<Claim> claims_;
    std::size_t claim_ = 0;
    std::string trouble_; // why nothing is served, as it was logged
    OwnershipReport report_;
    HeldQuestions held_;
    std::vector<const host::ServedTable *> own_; // tables of the context without a name
    ContextRegistrations contexts_;
};

} // namespace ipmib::agent::agentx
