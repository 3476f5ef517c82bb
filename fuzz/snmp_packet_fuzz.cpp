// SPDX-License-Identifier: BSD-3-Clause
// The agent on its sockets, with the system group: whatever comes in, it goes on; and an answer to a message of good
// form is no longer than the message says. What is asked of the module has targets of its own.
#include "bytes.h"

#include "listeners.h"
#include "net_snmp.h"
#include "snmp_library.h"
#include "system_group.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace ipmib;
using fuzz::Bytes;
using fuzz::require;
using Octets = std::vector<std::uint8_t>;

namespace
{

constexpr std::size_t longest = 65507;

constexpr const char *configuration = R"(rocommunity public 127.0.0.1
createUser open
rouser open noauth
createUser closed SHA "closed's auth" AES "closed's priv"
rouser closed auth
createUser padded MD5 "padded's auth" DES "padded's priv"
rouser padded auth
)";

const sockaddr_in &place()
{
    static const sockaddr_in free = [] {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        socklen_t size = sizeof address;
        bind(probe, reinterpret_cast<const sockaddr *>(&address), size);
        getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size);
        close(probe);
        return address;
    }();
    return free;
}

std::string placeOf(const char *transport)
{
    return std::string(transport) + ":127.0.0.1:" + std::to_string(ntohs(place().sin_port));
}

class Agent
{
  public:
    Agent()
        : library_({false, directory_.configurationFile(), {}, false}), isRead_(read()),
          listeners_({placeOf("udp"), placeOf("tcp")})
    {
    }

    // Takes up what has come in, until there is no more. Returns after a bounded number of turns, also when it is
    // always something.
    static void turn()
    {
        for (int i = 0; i < 50 && agent_check_and_process(0) > 0; ++i) {
        }
    }

  private:
    // Before anybody listens.
    bool read()
    {
        agent::serveSystemGroup(agent::SystemGroupOf::agent);
        library_.readConfiguration();
        return true;
    }

    struct Directory : std::filesystem::path {
        Directory()
        {
            std::string name = std::filesystem::temp_directory_path() / "ipmib-fuzz-XXXXXX";
            require(mkdtemp(name.data()) != nullptr, "there is a folder for the configuration");
            assign(name);
            setenv("SNMP_PERSISTENT_DIR", name.c_str(), 1);
            netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
        }
        std::string configurationFile() const
        {
            std::ofstream(*this / "conf") << configuration;
            return *this / "conf";
        }
        ~Directory() { std::filesystem::remove_all(*this); }
    };

    Directory directory_;
    agent::SnmpLibrary library_;
    bool isRead_;
    agent::Listeners listeners_;
};

class Socket
{
  public:
    explicit Socket(int kind) : descriptor_(socket(AF_INET, kind | SOCK_CLOEXEC, 0))
    {
        // Resets a connection, which then keeps no port of this machine waiting.
        const linger atOnce{1, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        require(connect(descriptor_, reinterpret_cast<const sockaddr *>(&place()), sizeof place()) == 0,
                "the agent listens");
    }
    ~Socket() { close(descriptor_); }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;

    void send(const Octets &octets) const
    {
        ::send(descriptor_, octets.data(), octets.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    // The longest of what has come back, in octets; 0 for nothing.
    std::size_t receiveAll() const
    {
        static Octets octets(longest + 1);
        std::size_t most = 0;
        for (ssize_t got; (got = recv(descriptor_, octets.data(), octets.size(), MSG_DONTWAIT)) > 0;) {
            most = std::max(most, static_cast<std::size_t>(got));
        }
        return most;
    }

  private:
    int descriptor_;
};

constexpr long sizes[] = {484, 485, 500, 600, 1000, 1471, 1472, 1473, 1500, 2048, 4000, 8192, 65507, 0x7FFFFFFF};

std::vector<oid> identifier(Bytes &bytes)
{
    static const std::vector<oid> roots[] = {{1, 3, 6, 1, 2, 1},
                                             {1, 3, 6, 1, 2, 1, 1, 1},
                                             {1, 3, 6, 1, 2, 1, 1, 1, 0},
                                             {1, 3, 6, 1, 2, 1, 4, 31, 3},
                                             {1, 3, 6, 1, 2, 1, 4, 26, 0},
                                             {1, 3, 6, 1, 2, 1, 4, 34, 1, 3},
                                             {1, 3, 6, 1, 2, 1, 4, 35, 1},
                                             {1, 3, 6, 1, 2, 1, 5, 29},
                                             {1, 3},
                                             {0, 0}};
    std::vector<oid> name = roots[bytes.below(std::size(roots))];
    for (std::uint32_t more = bytes.below(8) == 0 ? bytes.below(MAX_OID_LEN - 10) : 0; more > 0; --more) {
        name.push_back(bytes.number());
    }
    return name;
}

// A message of good form; `ret_room` is what it leaves for its answer. Its user's keys are the agent's own.
Octets message(Bytes &bytes, std::size_t &ret_room)
{
    static constexpr int operations[] = {SNMP_MSG_GET,      SNMP_MSG_GETNEXT, SNMP_MSG_GETBULK, SNMP_MSG_SET,
                                         SNMP_MSG_RESPONSE, SNMP_MSG_INFORM,  SNMP_MSG_TRAP2,   SNMP_MSG_REPORT};
    static constexpr long versions[] = {SNMP_VERSION_3, SNMP_VERSION_3, SNMP_VERSION_2c, SNMP_VERSION_1};
    static std::string users[] = {"open", "closed", "padded", "nobody"};
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = versions[bytes.below(std::size(versions))];
    session.rcvMsgMaxSize = static_cast<std::size_t>(sizes[bytes.below(std::size(sizes))]);
    std::string &user = users[bytes.below(std::size(users))];
    std::string community = "public";
    u_char engine[64];
    const std::size_t engineLength = snmpv3_get_engineID(engine, sizeof engine);
    std::string context = std::string(bytes.below(4) == 0 ? bytes.byte() : 0, 'c');
    netsnmp_pdu *pdu = snmp_pdu_create(
        operations[bytes.below(bytes.below(4) == 0 ? static_cast<std::uint32_t>(std::size(operations)) : 3)]);
    pdu->version = session.version;
    pdu->reqid = static_cast<long>(bytes.number());
    pdu->msgid = static_cast<long>(bytes.number() & 0x7FFFFFFF);
    if (session.version == SNMP_VERSION_3) {
        session.securityLevel = pdu->securityLevel = 1 + static_cast<int>(bytes.below(3));
        pdu->securityModel = SNMP_SEC_MODEL_USM;
        session.securityModel = SNMP_SEC_MODEL_USM;
        session.securityName = user.data();
        session.securityNameLen = user.size();
        session.securityEngineID = session.contextEngineID = engine;
        session.securityEngineIDLen = session.contextEngineIDLen = engineLength;
        session.contextName = context.data();
        session.contextNameLen = context.size();
        session.isAuthoritative = SNMP_SESS_AUTHORITATIVE; // the time is the agent's own
        ret_room = std::min(longest, session.rcvMsgMaxSize);
    } else {
        session.community = reinterpret_cast<u_char *>(community.data());
        session.community_len = community.size();
        ret_room = longest;
    }
    if (pdu->command == SNMP_MSG_GETBULK) {
        pdu->non_repeaters = static_cast<long>(bytes.number());
        pdu->max_repetitions = static_cast<long>(bytes.number());
    }
    const std::uint32_t different = 1 + bytes.below(8);
    const std::uint32_t times = bytes.below(4) == 0 ? 1 + bytes.byte() : 1;
    std::vector<std::vector<oid>> names;
    for (std::uint32_t i = 0; i < different; ++i) {
        names.push_back(identifier(bytes));
    }
    for (std::uint32_t i = 0; i < different * times; ++i) {
        const auto &name = names[i % different];
        snmp_add_null_var(pdu, name.data(), name.size());
    }
    Octets built;
    std::size_t size = 1024;
    std::size_t length = 0;
    auto *buffer = static_cast<u_char *>(malloc(size));
    if (snmp_build(&buffer, &size, &length, &session, pdu) >= 0) {
        built.assign(buffer + size - length, buffer + size);
    }
    free(buffer);
    snmp_free_pdu(pdu);
    return built;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Agent agent;
    static const Socket datagrams(SOCK_DGRAM);
    Bytes bytes(std::span(data, size));
    const std::uint8_t how = bytes.byte();
    std::size_t room = longest;
    Octets packet = (how & 1) != 0 ? bytes.octets(size > 0 ? size - 1 : 0) : message(bytes, room);
    for (std::uint32_t i = (how & 2) != 0 ? 1 + bytes.below(4) : 0; i > 0 && !packet.empty(); --i) {
        packet[bytes.number() % packet.size()] = bytes.byte();
        room = longest; // what it says about that may be another now
    }
    if ((how & 4) == 0) {
        datagrams.send(packet);
        Agent::turn();
        require(datagrams.receiveAll() <= room, "an answer is no longer than its question allows");
        return 0;
    }
    const Socket stream(SOCK_STREAM);
    const std::size_t cut = packet.empty() || (how & 8) == 0 ? 0 : bytes.number() % packet.size();
    stream.send(Octets(packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(cut)));
    Agent::turn();
    stream.send(Octets(packet.begin() + static_cast<std::ptrdiff_t>(cut), packet.end()));
    Agent::turn();
    stream.receiveAll();
    return 0;
}
