// SPDX-License-Identifier: BSD-3-Clause
// The library would end the process when it cannot listen, take a socket away from another master, and wait for a
// sub-agent that does not read what it is asked. So the sockets are opened here, and only their messages are its
// affair.

#include "agentx_master.h"

#include "options.h"

#include <net-snmp/library/snmpUnixDomain.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <stdexcept>
#include <system_error>

// The library exports them and declares them in none of its installed headers.
extern "C" {
int agentx_parse(netsnmp_session *session, netsnmp_pdu *pdu, u_char *data, size_t length);
int agentx_realloc_build(netsnmp_session *session, netsnmp_pdu *pdu, u_char **buffer, size_t *capacity, size_t *length);
int agentx_check_packet(u_char *packet, size_t length);
int handle_master_agentx_packet(int operation, netsnmp_session *session, int requestId, netsnmp_pdu *pdu, void *magic);
}

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>

// The library loses the timeout of a region that it registers for a sub-agent.
__attribute__((visibility("default"))) const char *__lsan_default_suppressions()
{
    return "leak:register_agentx_list\n";
}
__attribute__((visibility("default"))) const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
#endif

namespace ipmib::agent
{

namespace
{

constexpr long agentxVersion = 0xC1; // as the library tells it from SNMP's

int setting(int which)
{
    return netsnmp_ds_get_int(NETSNMP_DS_APPLICATION_ID, which);
}

// By the domain of their transports.
std::map<const oid *, int (*)(netsnmp_transport *)> acceptOfLibrary;

int accept(netsnmp_transport *listening)
{
    const int descriptor = acceptOfLibrary.at(listening->domain)(listening);
    if (descriptor >= 0) {
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
    return descriptor;
}

// The library closes the connection, with all that was registered over it, when it reads its end.
int send(netsnmp_transport *transport, const void *buffer, int size, void **, int *)
{
    const ssize_t sent = ::send(transport->sock, buffer, static_cast<std::size_t>(size), MSG_DONTWAIT | MSG_NOSIGNAL);
    const bool isShut = sent < 0 && errno == EPIPE; // since an earlier request, or by the sub-agent
    if (sent != size && !isShut) {
        snmp_log(LOG_NOTICE, "agentx: a sub-agent does not take its requests, closing the connection\n");
        shutdown(transport->sock, SHUT_RDWR);
    }
    return size;
}

// The path of a Unix socket, or nothing.
std::string pathOf(const netsnmp_transport &transport)
{
    sockaddr_un name{};
    socklen_t length = sizeof name;
    if (getsockname(transport.sock, reinterpret_cast<sockaddr *>(&name), &length) != 0 || name.sun_family != AF_UNIX) {
        return "";
    }
    return {name.sun_path, strnlen(name.sun_path, sizeof name.sun_path)};
}

// Opening the socket would take the path away from whoever listens there.
bool isTaken(const std::string &path)
{
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    if (path.size() >= sizeof name.sun_path) {
        return false;
    }
    path.copy(name.sun_path, path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool isConnected = connect(descriptor, reinterpret_cast<const sockaddr *>(&name), sizeof name) == 0;
    const bool isBusy = !isConnected && errno == EAGAIN; // so many wait there
    ::close(descriptor);
    return isConnected || isBusy;
}

// Throws std::system_error.
void setPermissions(const std::string &path)
{
    const int permissions = setting(NETSNMP_DS_AGENT_X_SOCK_PERM);
    const int user = setting(NETSNMP_DS_AGENT_X_SOCK_USER);
    const int group = setting(NETSNMP_DS_AGENT_X_SOCK_GROUP);
    const auto check = [](int result) {
        if (result != 0) {
            throw std::system_error(errno, std::generic_category(), "its permissions (agentXPerms) cannot be set");
        }
    };
    if (permissions != 0) {
        check(chmod(path.c_str(), static_cast<mode_t>(permissions)));
    }
    if (user > 0 || group > 0) {
        check(chown(path.c_str(), user > 0 ? static_cast<uid_t>(user) : static_cast<uid_t>(-1),
                    group > 0 ? static_cast<gid_t>(group) : static_cast<gid_t>(-1)));
    }
}

} // namespace

std::vector<std::string> AgentxMaster::addressesOfConfiguration()
{
    if (netsnmp_ds_get_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_MASTER) == 0) {
        return {};
    }
    const char *sockets = netsnmp_ds_get_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET);
    return splitList(sockets == nullptr || *sockets == '\0' ? NETSNMP_AGENTX_SOCKET : sockets);
}

void AgentxMaster::forgetConfiguration()
{
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_MASTER, 0);
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, nullptr);
}

AgentxMaster::AgentxMaster(const std::vector<std::string> &addresses)
{
    for (const std::string &address : addresses) {
        open(address);
    }
}

void AgentxMaster::open(const std::string &address)
{
    const auto fail = [&](const std::string &reason) {
        throw std::runtime_error("agentx: cannot be a master at " + address + ": " + reason);
    };
    const std::string unixPrefix = "unix:";
    if (isTaken(address.starts_with(unixPrefix) ? address.substr(unixPrefix.size()) : address)) {
        fail("there is one already");
    }
    const int folderPermissions = setting(NETSNMP_DS_AGENT_X_DIR_PERM);
    netsnmp_unix_create_path_with_mode(folderPermissions != 0 ? folderPermissions : NETSNMP_AGENT_DIRECTORY_MODE);
    errno = 0;
    netsnmp_transport *transport = netsnmp_transport_open_server("agentx", address.c_str());
    netsnmp_unix_dont_create_path();
    if (transport == nullptr) {
        fail(errno != 0 ? std::generic_category().message(errno) : "not an address that can be listened on");
    }
    try {
        if (const std::string path = pathOf(*transport); !path.empty()) {
            setPermissions(path);
        }
    } catch (const std::system_error &error) {
        netsnmp_transport_free(transport);
        fail(error.what());
    }
    acceptOfLibrary[transport->domain] = transport->f_accept;
    transport->f_accept = accept;
    transport->f_send = send;
    fcntl(transport->sock, F_SETFL, fcntl(transport->sock, F_GETFL) | O_NONBLOCK);
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = agentxVersion;
    session.flags |= SNMP_FLAGS_STREAM_SOCKET;
    session.timeout = setting(NETSNMP_DS_AGENT_AGENTX_TIMEOUT);
    session.retries = setting(NETSNMP_DS_AGENT_AGENTX_RETRIES);
    session.callback = handle_master_agentx_packet;
    netsnmp_session *added = snmp_add_full(&session, transport, nullptr, agentx_parse, nullptr, nullptr,
                                           agentx_realloc_build, agentx_check_packet, nullptr);
    if (added == nullptr) {
        fail(snmp_api_errstring(snmp_errno));
    }
    sessions_.add(added);
}

} // namespace ipmib::agent
