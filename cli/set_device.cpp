// SPDX-License-Identifier: BSD-3-Clause
// Words become changes in the form of a scenario; what they mean is the agent's affair, and so are their mistakes.
#include "set_device.h"

#include "output.h"

#include <nlohmann/json.hpp>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace ipmib::cli
{
namespace
{

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

Json parsed(const std::string &text, const std::string &what)
{
    try {
        return Json::parse(text);
    } catch (const Json::exception &error) {
        const std::string message = error.what();
        throw host::UsageError(what + ": " + message.substr(message.find("] ") + 2));
    }
}

Json ofInterface(const std::string &name, const char *member, const Json &value)
{
    return {{"interfaces", Json::array({{{"name", name}, {member, value}}})}};
}

// "eth0" or "system", "ipv6.inOctets", and what the counter is told.
Json ofCounter(const std::string &name, const std::string &counter, const char *member, const std::string &value)
{
    const std::size_t dot = counter.find('.');
    if (dot == std::string::npos) {
        throw host::UsageError("\"" + counter + "\" is not a counter with its group, as ipv6.inOctets");
    }
    const Json said = {{counter.substr(0, dot), {{counter.substr(dot + 1), {{member, parsed(value, value)}}}}}};
    return name == "system" ? Json{{"system", said}} : ofInterface(name, "counters", said);
}

Json ofWords(const Words &words)
{
    const auto is = [&words](const char *word, std::size_t count) {
        return words.front() == word && words.size() == count;
    };
    if (is("line", 3) && (words[2] == "up" || words[2] == "down")) {
        return words[2] == "up" ? ofInterface(words[1], "up", true)
                                : ofInterface(words[1], "down", Json::array({{{"from", 0}}}));
    }
    if (is("rate", 4) || is("counter", 4)) {
        return ofCounter(words[1], words[2], words[0] == "rate" ? "rate" : "start", words[3]);
    }
    if (is("fault", 3)) {
        const bool isSwitch = words[2] == "on" || words[2] == "off";
        return {{"faults", {{words[1], isSwitch ? Json(words[2] == "on") : parsed(words[2], words[2])}}}};
    }
    if (is("reboot", 1)) {
        return {{"reboot", true}};
    }
    if (is("reboot", 2)) {
        return {{"reboot", {{"seconds", parsed(words[1], words[1])}}}};
    }
    throw host::UsageError("set-device: say line NAME up|down, rate NAME COUNTER RATE, counter NAME COUNTER VALUE, "
                           "fault NAME on|off|JSON, reboot [SECONDS], a change as JSON, or -");
}

int connectTo(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        throw host::UsageError("set-device needs --socket PATH, where ipmibd --device-socket PATH listens");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        const int error = errno;
        close(descriptor);
        throw std::runtime_error("cannot reach an ipmibd at " + path + ": " + std::strerror(error));
    }
    constexpr timeval patience{30, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    return descriptor;
}

// One line after the other, each with its answer.
class Conversation
{
  public:
    explicit Conversation(const std::string &path) : descriptor_(connectTo(path)) {}
    ~Conversation() { close(descriptor_); }
    Conversation(const Conversation &) = delete;
    Conversation &operator=(const Conversation &) = delete;

    std::string ask(const std::string &line)
    {
        const std::string whole = line + "\n";
        for (std::size_t sent = 0; sent < whole.size();) {
            const ssize_t size = send(descriptor_, whole.data() + sent, whole.size() - sent, MSG_NOSIGNAL);
            if (size <= 0) {
                break; // it may have said why
            }
            sent += static_cast<std::size_t>(size);
        }
        std::string answer;
        for (char letter = 0; letter != '\n'; answer += letter) {
            if (recv(descriptor_, &letter, 1, 0) != 1) {
                throw std::runtime_error("the agent does not answer");
            }
        }
        answer.pop_back();
        return answer;
    }

  private:
    int descriptor_;
};

} // namespace

std::vector<std::string> changesOf(const Words &words, const std::string &context)
{
    if (words.empty()) {
        throw host::UsageError("set-device: what shall be changed?");
    }
    Json changes;
    const bool isJson = words.size() == 1 && (words[0] == "-" || words[0].find_first_of("{[") == 0);
    if (!isJson) {
        changes = ofWords(words);
    } else if (words[0] == "-") {
        changes = parsed(std::string(std::istreambuf_iterator<char>(std::cin), {}), "standard input");
    } else {
        changes = parsed(words[0], "set-device");
    }
    std::vector<std::string> lines;
    for (Json &change : changes.is_array() ? changes : changes = Json::array({changes})) {
        std::string name = context;
        if (change.is_object() && change.contains("context")) {
            if (!change["context"].is_string()) {
                throw host::UsageError("context: " + change["context"].dump() + " is not the name of a context");
            }
            name = change["context"].get<std::string>();
            change.erase("context");
        }
        if (name.find_first_of("\t\n") != std::string::npos) {
            throw host::UsageError("the name of a context has no tab and no line feed");
        }
        lines.push_back(name + "\t" + change.dump(-1, ' ', true));
    }
    return lines;
}

int setDevice(const Options &options, const Words &words)
{
    const std::vector<std::string> lines = changesOf(words, options.context);
    Conversation agent(options.socket);
    for (const std::string &line : lines) {
        const std::string answer = agent.ask(line);
        if (answer != "ok") {
            const std::string mark = "error: ";
            complain(answer.starts_with(mark) ? answer.substr(mark.size()) : answer);
            return host::exitFailure;
        }
    }
    return host::exitSuccess;
}

} // namespace ipmib::cli
