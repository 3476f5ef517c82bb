// SPDX-License-Identifier: BSD-3-Clause
// What a master sends to a sub-agent that serves it: a stream of AgentX messages, or of anything else.
#include "bytes.h"

#include "agent/agentx/session_bed.h"

using namespace ipmib::fuzz;
using namespace ipmib::agent::agentx;

namespace
{

constexpr long sessionId = 7;

void checkAnswer(const netsnmp_pdu &answer)
{
    require(answer.command == responseMessage || answer.command == registerMessage ||
                answer.command == unregisterMessage || answer.command == closeMessage,
            "a sub-agent answers, claims or leaves");
    long variables = 0;
    for (const auto *variable = answer.variables; variable != nullptr; variable = variable->next_variable) {
        ++variables;
    }
    if (answer.command == responseMessage) {
        require(answer.errstat == noError || variables == 0, "an error has no variables");
        require(answer.errstat != noError || answer.sessid == sessionId, "only our session is answered");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static SessionBed &bed = []() -> SessionBed & {
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG); // without any it would write to stderr
        static SessionBed one;
        return one;
    }();
    bed.serve(sessionId); // anew: half a message may be left of the input before
    const std::vector<std::uint8_t> stream(data, data + size);
    bed.send(stream);
    bed.turn();
    while (const Message answer = bed.receive()) {
        checkAnswer(*answer);
    }
    require(bed.isClosed() != bed.session().isServing(), "a session serves as long as there is a connection");
    return 0;
}
