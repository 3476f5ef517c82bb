// SPDX-License-Identifier: BSD-3-Clause
// Answers that do not fit: whatever the version, the level of security, the size that a client can take, the operation
// and the number of variables, one answer comes, it is no longer than that, and it holds what fits.

#include "e2e/agent_under_test.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

namespace ipmib::e2e
{

namespace
{

constexpr const char *askersConfiguration = R"(rocommunity public 127.0.0.1
createUser open
rouser open noauth
createUser closed SHA "closed's auth" AES "closed's priv"
rouser closed auth
createUser padded SHA "padded's auth" DES "padded's priv"
rouser padded auth
sysdescr a text that makes an answer longer than its question is, and that is about as long as what systems say of themselves
)";

// What a datagram carries.
constexpr std::size_t datagram = 65507;
// As a question, so many variables fit into one, but not with their values.
constexpr std::size_t tooManyForADatagram = 3000;

struct Asker {
    const char *name;
    long version;
    const char *user; // or the community
    int level = SNMP_SEC_LEVEL_NOAUTH;
    bool paddedPrivacy = false;
};

constexpr Asker askers[] = {
    {"v1", SNMP_VERSION_1, "public"},
    {"v2c", SNMP_VERSION_2c, "public"},
    {"v3 open", SNMP_VERSION_3, "open"},
    {"v3 auth", SNMP_VERSION_3, "closed", SNMP_SEC_LEVEL_AUTHNOPRIV},
    {"v3 AES", SNMP_VERSION_3, "closed", SNMP_SEC_LEVEL_AUTHPRIV},
    {"v3 DES", SNMP_VERSION_3, "padded", SNMP_SEC_LEVEL_AUTHPRIV, true},
};

struct Question {
    int operation;
    long repetitions;
    std::size_t variables;
};

struct Variable {
    std::vector<oid> name;
    std::vector<std::uint8_t> value;
    std::size_t encoded; // octets, without its sequence
    bool operator==(const Variable &other) const { return name == other.name && value == other.value; }
};

constexpr long silence = -1;

struct Answer {
    std::size_t length = 0; // of the message, in octets
    long error = silence;
    long errorIndex = -1;
    std::vector<Variable> variables;
};

// Objects whose values stay the same.
const std::vector<std::vector<oid>> constants = {
    {1, 3, 6, 1, 2, 1, 1, 1, 0}, {1, 3, 6, 1, 2, 1, 4, 26, 0}, {1, 3, 6, 1, 2, 1, 5, 29, 1, 2, 2}};
const std::vector<std::vector<oid>> roots = {{1, 3, 6, 1, 2, 1, 4, 31, 3}, {1, 3, 6, 1, 2, 1, 1, 1}};

int (*receiveOfLibrary)(netsnmp_transport *, void *, int, void **, int *);
int lastReceived;

int countReceived(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length)
{
    lastReceived = receiveOfLibrary(transport, buffer, size, opaque, length);
    return lastReceived;
}

// One who asks over one transport and can take messages of this size.
class SizedClient
{
  public:
    SizedClient(const Asker &asker, const std::string &address, std::size_t size)
    {
        netsnmp_session session;
        snmp_sess_init(&session);
        std::string peer = address;
        std::string user = asker.user;
        session.peername = peer.data();
        session.version = asker.version;
        session.retries = 0;
        session.timeout = 30'000'000; // microseconds
        session.rcvMsgMaxSize = size; // what a message says that its sender can take
        if (asker.version != SNMP_VERSION_3) {
            session.community = reinterpret_cast<u_char *>(user.data());
            session.community_len = user.size();
        } else {
            session.securityName = user.data();
            session.securityNameLen = user.size();
            session.securityLevel = asker.level;
            session.securityAuthProto = usmHMACSHA1AuthProtocol;
            session.securityAuthProtoLen = USM_AUTH_PROTO_SHA_LEN;
            session.securityPrivProto = asker.paddedPrivacy ? usmDESPrivProtocol : usmAESPrivProtocol;
            session.securityPrivProtoLen = asker.paddedPrivacy ? USM_PRIV_PROTO_DES_LEN : USM_PRIV_PROTO_AES_LEN;
            makeKey(user + "'s auth", session.securityAuthKey, session.securityAuthKeyLen);
            makeKey(user + "'s priv", session.securityPrivKey, session.securityPrivKeyLen);
        }
        session_ = snmp_sess_open(&session);
        if (session_ != nullptr) {
            netsnmp_transport *transport = snmp_sess_transport(session_);
            if (transport->f_recv != countReceived) {
                receiveOfLibrary = transport->f_recv;
                transport->f_recv = countReceived;
            }
        }
    }
    ~SizedClient()
    {
        if (session_ != nullptr) {
            snmp_sess_close(session_);
        }
    }
    SizedClient(const SizedClient &) = delete;
    SizedClient &operator=(const SizedClient &) = delete;

    bool isOpen() const { return session_ != nullptr; }

    Answer ask(const Question &question) const
    {
        netsnmp_pdu *reply = nullptr;
        lastReceived = 0;
        Answer answer;
        if (snmp_sess_synch_response(session_, request(question), &reply) == STAT_SUCCESS) {
            answer.length = static_cast<std::size_t>(lastReceived);
            answer.error = reply->errstat;
            answer.errorIndex = reply->errindex;
            for (const auto *variable = reply->variables; variable != nullptr; variable = variable->next_variable) {
                answer.variables.push_back(read(*variable));
            }
        }
        snmp_free_pdu(reply);
        return answer;
    }

    static std::vector<oid> nameOf(const Question &question, std::size_t number)
    {
        const auto &names =
            question.operation == SNMP_MSG_GET || question.operation == SNMP_MSG_SET ? constants : roots;
        return names[number % names.size()];
    }

  private:
    // A key is a million octets of the password, hashed.
    static void makeKey(const std::string &password, u_char *key, std::size_t &size)
    {
        static std::map<std::string, std::vector<u_char>> made;
        std::vector<u_char> &known = made[password];
        if (known.empty()) {
            known.resize(USM_AUTH_KU_LEN);
            std::size_t length = known.size();
            generate_Ku(usmHMACSHA1AuthProtocol, USM_AUTH_PROTO_SHA_LEN,
                        reinterpret_cast<u_char *>(const_cast<char *>(password.data())), password.size(), known.data(),
                        &length);
            known.resize(length);
        }
        std::ranges::copy(known, key);
        size = known.size();
    }

    static netsnmp_pdu *request(const Question &question)
    {
        netsnmp_pdu *pdu = snmp_pdu_create(question.operation);
        pdu->non_repeaters = 0;
        if (question.operation == SNMP_MSG_GETBULK) {
            pdu->max_repetitions = question.repetitions;
        }
        for (std::size_t i = 0; i < question.variables; ++i) {
            const std::vector<oid> name = nameOf(question, i);
            if (question.operation == SNMP_MSG_SET) {
                const long value = 1;
                snmp_pdu_add_variable(pdu, name.data(), name.size(), ASN_INTEGER, &value, sizeof value);
            } else {
                snmp_add_null_var(pdu, name.data(), name.size());
            }
        }
        return pdu;
    }

    static Variable read(const netsnmp_variable_list &variable)
    {
        u_char octets[8192];
        std::size_t room = sizeof octets;
        u_char *end = snmp_build_var_op(octets, variable.name, const_cast<std::size_t *>(&variable.name_length),
                                        variable.type, variable.val_len, variable.val.string, &room);
        return {{variable.name, variable.name + variable.name_length},
                {variable.val.string, variable.val.string + variable.val_len},
                static_cast<std::size_t>(end - octets)};
    }

    void *session_ = nullptr;
};

class AnswerSizeTest : public AgentTest
{
  protected:
    void SetUp() override
    {
        AgentTest::SetUp();
        setenv("MIBS", "", 1);
        setenv("SNMP_PERSISTENT_DIR", path("client").c_str(), 1);
        for (const int part : {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
                               NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE}) {
            netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, part, 1);
        }
        if (!std::exchange(isLibraryStarted, true)) { // which loses memory when it starts again
            init_snmp("answer_size_test");
        }
    }
    static void TearDownTestSuite() { snmp_shutdown("answer_size_test"); }
    static inline bool isLibraryStarted = false;

    static std::string textOf(const Asker &asker, std::size_t size, const Question &question)
    {
        return std::string(asker.name) + ", size " + std::to_string(size) + ", " + snmp_pdu_type(question.operation) +
               ", " + std::to_string(question.repetitions) + " repetitions of " + std::to_string(question.variables) +
               " variables";
    }

    // What answers in a whole datagram are.
    static long errorOf(const Question &question, const Asker &asker)
    {
        if (question.operation == SNMP_MSG_SET) {
            return asker.version == SNMP_VERSION_1 ? SNMP_ERR_NOSUCHNAME : SNMP_ERR_NOTWRITABLE;
        }
        return question.variables == tooManyForADatagram ? SNMP_ERR_TOOBIG : SNMP_ERR_NOERROR;
    }

    // What has no room: an error and no variables, in version 1 those that were asked.
    static void expectTooBig(const Answer &answer, const Asker &asker, const Question &question)
    {
        ASSERT_EQ(answer.error, SNMP_ERR_TOOBIG);
        ASSERT_EQ(answer.errorIndex, 0);
        ASSERT_EQ(answer.variables.size(), asker.version == SNMP_VERSION_1 ? question.variables : 0);
        for (std::size_t i = 0; i < answer.variables.size(); ++i) {
            ASSERT_EQ(answer.variables[i].name, SizedClient::nameOf(question, i));
        }
    }

    // Of a GETBULK, the beginning of what it asked for, as long as can be: the next variable would not have fitted. Its
    // own octets are not all: lengths may need one more octet each, and privacy fills up blocks.
    static void expectBeginning(const Answer &answer, const Answer &whole, std::size_t size)
    {
        constexpr std::size_t lengthsAndPadding = 6 + 8;
        ASSERT_EQ(answer.error, SNMP_ERR_NOERROR);
        const std::size_t count = answer.variables.size();
        ASSERT_LE(count, whole.variables.size());
        ASSERT_GT(count, 0u);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(answer.variables[i].name, whole.variables[i].name); // some values are times
        }
        if (count < whole.variables.size()) {
            ASSERT_GT(answer.length + whole.variables[count].encoded + lengthsAndPadding, size);
        }
    }

    // Asks all of these as one who can take messages of this size.
    void expectAnswers(const Asker &asker, const std::string &place, std::size_t size,
                       const std::vector<Question> &asked)
    {
        const SizedClient client(asker, place, size);
        ASSERT_TRUE(client.isOpen()) << asker.name;
        for (const Question &question : asked) {
            SCOPED_TRACE(textOf(asker, size, question));
            const Answer answer = client.ask(question);
            ASSERT_NE(answer.error, silence);
            const std::size_t room = asker.version == SNMP_VERSION_3 ? std::min(size, datagram) : datagram;
            ASSERT_LE(answer.length, room);
            const Answer &whole = answerWithRoom(asker, question);
            if (question.operation == SNMP_MSG_GETBULK) {
                ASSERT_NO_FATAL_FAILURE(expectBeginning(answer, whole, room));
            } else if (whole.error == SNMP_ERR_TOOBIG || whole.length > room) {
                ASSERT_NO_FATAL_FAILURE(expectTooBig(answer, asker, question));
            } else {
                ASSERT_EQ(answer.error, whole.error);
                ASSERT_EQ(answer.variables, whole.variables);
            }
        }
    }

  private:
    // What is answered to one who can take a whole datagram.
    const Answer &answerWithRoom(const Asker &asker, const Question &question)
    {
        const auto [known, isNew] = wholes_.try_emplace(textOf(asker, datagram, question));
        if (isNew) {
            known->second = SizedClient(asker, address(), datagram).ask(question);
            EXPECT_EQ(known->second.error, errorOf(question, asker));
        }
        return known->second;
    }

    std::map<std::string, Answer> wholes_;
};

std::vector<Question> questions(const std::vector<std::size_t> &counts, bool withBulk)
{
    std::vector<Question> all;
    for (const std::size_t count : counts) {
        for (const int operation : {SNMP_MSG_GET, SNMP_MSG_GETNEXT, SNMP_MSG_SET}) {
            all.push_back({operation, 0, count});
        }
        for (const long repetitions : {1L, 50L, 1000L}) {
            if (withBulk && count <= 100) {
                all.push_back({SNMP_MSG_GETBULK, repetitions, count});
            }
        }
    }
    return all;
}

// These and their neighbours.
const std::vector<std::size_t> sizes = {485, 600, 1024, 1472, 2048, 4000, 8192, datagram};

TEST_F(AnswerSizeTest, EveryAnswerIsAsLongAsItMayBe)
{
    startAgent(askersConfiguration);
    for (const Asker &asker : askers) {
        const bool isV3 = asker.version == SNMP_VERSION_3;
        expectAnswers(asker, address(), datagram,
                      questions({1, 30, 300, tooManyForADatagram}, asker.version != SNMP_VERSION_1));
        for (const std::size_t size : isV3 ? sizes : std::vector<std::size_t>{}) {
            for (const std::size_t neighbour : {size - 1, size, size + 1}) {
                ASSERT_NO_FATAL_FAILURE(
                    expectAnswers(asker, address(), neighbour, questions({1, 5, 30, 100, 300}, true)));
            }
        }
    }
    stopAgent();
}

TEST_F(AnswerSizeTest, OverStreamsToo)
{
    startAgent(askersConfiguration, {address("tcp")});
    for (const Asker &asker : askers) {
        const bool isV1 = asker.version == SNMP_VERSION_1;
        const std::size_t last = asker.version == SNMP_VERSION_3 ? 300 : tooManyForADatagram;
        for (const std::size_t size : {std::size_t{484}, std::size_t{INT32_MAX}}) {
            ASSERT_NO_FATAL_FAILURE(expectAnswers(asker, address("tcp"), size, questions({5, 100, last}, !isV1)));
        }
    }
    stopAgent();
}

// Its answers are sent when those of a sub-agent have come, long after the request was received.
TEST_F(AnswerSizeTest, ThoseThatASubAgentHasAPartInToo)
{
    IPMIB_NEEDS_NAMESPACES();
    startAgent(askersConfiguration + std::string("serve all off\nmaster agentx\nagentXSocket ") + path("master") +
               "\n");
    Command subAgent({agentProgram, "-f", "-Lo", "-C", "-c", writeFile("sub-agent.conf", ""), "-x", path("master"),
                      "--platform", scriptedPlatform},
                     environment());
    const auto isServed = [this] {
        const Result result = snmp("snmpget", publicV2, {"1.3.6.1.2.1.5.29.1.2.2"});
        return result.status == 0 && result.output.find("No Such") == std::string::npos;
    };
    for (int time = 0; time < 1000 && !isServed(); ++time) {
        usleep(20'000);
    }
    for (const Asker &asker : askers) {
        if (asker.version == SNMP_VERSION_1) {
            continue;
        }
        const bool isV3 = asker.version == SNMP_VERSION_3;
        for (const std::size_t size : isV3 ? sizes : std::vector<std::size_t>{datagram}) {
            ASSERT_NO_FATAL_FAILURE(expectAnswers(asker, address(), size, questions({1, 5, 30}, true)));
        }
    }
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
