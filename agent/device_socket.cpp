// SPDX-License-Identifier: BSD-3-Clause
// Nothing here waits for a client: one piece of one client is read a turn, and whoever does not take an answer is let
// go.
#include "device_socket.h"

#include "net_snmp.h"

#include "host/command_line.h"
#include "support/printable.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace ipmib::agent
{
namespace
{

constexpr std::size_t mostClients = 8;
constexpr std::size_t longestLine = 1'048'576;

sockaddr_un addressOf(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw host::UsageError("--device-socket: " + path + " is longer than a socket's path can be");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

[[noreturn]] void fail(const std::string &path)
{
    throw std::runtime_error("cannot listen on " + path + ": " + std::strerror(errno));
}

// What an agent that ended in a hurry has left behind is taken away; what another one listens on stays.
void removeLeftBehind(const sockaddr_un &address, int descriptor)
{
    struct stat status {
    };
    const auto *general = reinterpret_cast<const sockaddr *>(&address);
    if (lstat(address.sun_path, &status) == 0 && S_ISSOCK(status.st_mode) &&
        connect(descriptor, general, sizeof address) != 0 && errno == ECONNREFUSED) {
        unlink(address.sun_path);
    }
}

int openListening(const std::string &path)
{
    const sockaddr_un address = addressOf(path);
    const auto *general = reinterpret_cast<const sockaddr *>(&address);
    constexpr int kind = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;
    const int probe = socket(AF_UNIX, kind, 0);
    if (probe >= 0) {
        removeLeftBehind(address, probe);
        ::close(probe);
    }
    const int descriptor = socket(AF_UNIX, kind, 0);
    if (descriptor < 0) {
        fail(path);
    }
    constexpr mode_t forOthers = 0177;
    const mode_t before = umask(forOthers);
    const bool isBound = bind(descriptor, general, sizeof address) == 0;
    umask(before);
    if (!isBound || listen(descriptor, static_cast<int>(mostClients)) != 0) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
        fail(path);
    }
    return descriptor;
}

} // namespace

DeviceSocket::DeviceSocket(const std::string &path, const IpmibPlatformHooks *platform, host::Instances &instances,
                           const Contexts &contexts, std::function<void()> changed)
    : path_(path), instances_(instances), contexts_(contexts), changed_(std::move(changed))
{
    if (path_.empty()) {
        return;
    }
    hooks_ = platform == nullptr ? nullptr : platform->rehearsal;
    if (hooks_ == nullptr || hooks_->change == nullptr) {
        throw host::UsageError("--device-socket is for a device that is made up, as those of platform simulated");
    }
    listening_ = openListening(path_);
    register_readfd(
        listening_, [](int, void *self) { static_cast<DeviceSocket *>(self)->accept(); }, this);
}

DeviceSocket::~DeviceSocket()
{
    while (!clients_.empty()) {
        close(clients_.begin()->first);
    }
    if (listening_ >= 0) {
        unregister_readfd(listening_);
        ::close(listening_);
        unlink(path_.c_str());
    }
}

void DeviceSocket::accept()
{
    if (clients_.size() == mostClients) {
        close(std::ranges::min_element(clients_, {}, [](const auto &each) { return each.second.heard; })->first);
    }
    const int client = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client < 0) {
        return;
    }
    clients_[client] = {"", ++turns_};
    register_readfd(
        client, [](int descriptor, void *self) { static_cast<DeviceSocket *>(self)->read(descriptor); }, this);
}

void DeviceSocket::close(int client)
{
    unregister_readfd(client);
    ::close(client);
    clients_.erase(client);
}

void DeviceSocket::read(int client)
{
    char piece[65'536];
    const ssize_t size = recv(client, piece, sizeof piece, 0);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (size <= 0) {
        close(client);
        return;
    }
    Client &from = clients_.at(client);
    from.heard = ++turns_;
    from.line.append(piece, static_cast<std::size_t>(size));
    std::string answers;
    std::size_t begin = 0;
    for (std::size_t end; (end = from.line.find('\n', begin)) != std::string::npos; begin = end + 1) {
        answers += obey(from.line.substr(begin, end - begin)) + "\n";
    }
    from.line.erase(0, begin);
    const bool isTooLong = from.line.size() > longestLine;
    answers += isTooLong ? "error: a line is longer than 1 MiB\n" : "";
    const ssize_t sent = answers.empty() ? 0 : send(client, answers.data(), answers.size(), MSG_NOSIGNAL);
    if (isTooLong || sent != static_cast<ssize_t>(answers.size())) {
        close(client);
    }
}

std::string DeviceSocket::obey(const std::string &line)
{
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos) {
        return "error: a line is the name of a context, a tab and a change";
    }
    const std::string name = line.substr(0, tab);
    const std::string text = line.substr(tab + 1);
    const std::vector<Contexts::Numbered> named = contexts_.matching(name);
    if (named.empty()) {
        return "error: there is no context \"" + support::printable(name) + "\"";
    }
    for (const bool takesEffect : {false, true}) {
        for (const auto &[context, instance] : named) {
            const std::string mistake = change(instance, text, takesEffect);
            if (!mistake.empty()) {
                return "error: " + (named.size() == 1 ? "" : "context " + support::printable(context) + ": ") +
                       support::printable(mistake);
            }
        }
    }
    changed_();
    return "ok";
}

std::string DeviceSocket::change(std::size_t instance, const std::string &text, bool takesEffect)
{
    char error[512] = "it does not say why";
    instances_.select(instance);
    const int result = hooks_->change(text.data(), text.size(), takesEffect ? 1 : 0, error, sizeof error);
    instances_.select(host::Instances::first);
    error[sizeof error - 1] = '\0';
    return result == 0 ? "" : error;
}

} // namespace ipmib::agent
