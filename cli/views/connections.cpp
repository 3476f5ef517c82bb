// SPDX-License-Identifier: BSD-3-Clause
// TCP connections, listeners and UDP endpoints: all of them, those of a protocol, or those with a port.
#include "local_device.h"
#include "text.h"
#include "view.h"

#include "host/command_line.h"

#include <ipmib/platform_connections.h>

#include <arpa/inet.h>

#include <charconv>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn connectionColumns[] = {
    {"PROTOCOL", "protocol", Align::left, 0, Role::key},
    {"LOCAL", "local", Align::left, 0, Role::key},
    {"PORT", "localPort", Align::right, 0, Role::key},
    {"REMOTE", "remote", Align::left, 0, Role::key},
    {"PORT", "remotePort", Align::right, 0, Role::key},
    {"STATE", "state", Align::left, 0},
    {"PROCESS", "process", Align::right, 1},
    {"INSTANCE", "instance", Align::right, 2, Role::key},
};

enum ConnectionIndexPlace {
    localTypePart,
    localPart,
    localPortPart,
    remoteTypePart,
    remotePart,
    remotePortPart,
    instancePart
};
constexpr std::uint32_t anyPort = 0;

struct Asked {
    bool tcp = true;
    bool listeners = true;
    bool udp = true;
    std::uint32_t port = anyPort;
};

Asked readArgument(const std::string &text)
{
    Asked asked;
    if (text.empty()) {
        return asked;
    }
    if (text == "tcp" || text == "udp" || text == "listeners") {
        return {text == "tcp", text != "udp", text == "udp", anyPort};
    }
    const char *const begin = text.data() + (text.front() == ':' ? 1 : 0);
    const char *const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(begin, end, asked.port);
    if (error != std::errc() || behind != end || asked.port == anyPort || asked.port > UINT16_MAX) {
        throw host::UsageError("\"" + text + "\" is neither tcp, udp or listeners nor a port");
    }
    return asked;
}

// "any" address of both versions.
Cell endCell(const TableReader &rows, std::size_t part)
{
    return rows.key().octets(part).empty() ? textCell("any") : addressCell(rows, part);
}

Cell positiveCell(std::uint32_t number)
{
    return number == 0 ? emptyCell() : Cell{std::to_string(number), number, {}};
}

// The kernel's list does not say whose a socket is.
Cell processCell(const TableReader &rows, std::size_t column)
{
    const host::Value *process = rows.value(column);
    return process == nullptr || process->number == 0 ? emptyCell() : numberCell(rows, column);
}

bool isShown(const TableReader &rows, Version version)
{
    const std::uint32_t type = rows.key().number(localTypePart);
    const bool isIpv4 = type == IPMIB_END_IPV4 || type == IPMIB_END_IPV4Z;
    return version == Version::both || type == IPMIB_END_ANY || isIpv4 == (version == Version::ipv4);
}

void listTable(LocalDevice &device, const char *protocol, TableReader rows, const Asked &asked, const Sink &sink)
{
    const bool hasState = rows.object(0).pszName == std::string_view("tcpConnectionState");
    const std::size_t process = hasState ? 1 : 0;
    const bool hasInstance = protocol == std::string_view("udp");
    const bool hasRemote = hasState || hasInstance;
    while (rows.next()) {
        const std::uint32_t localPort = rows.key().number(localPortPart);
        const std::uint32_t remotePort = hasRemote ? rows.key().number(remotePortPart) : anyPort;
        if (!isShown(rows, device.shown()) ||
            (asked.port != anyPort && asked.port != localPort && asked.port != remotePort)) {
            continue;
        }
        sink({textCell(protocol), endCell(rows, localPart), positiveCell(localPort),
              hasRemote ? endCell(rows, remotePart) : textCell("any"), positiveCell(remotePort),
              hasState      ? labelCell(rows, 0)
              : hasInstance ? emptyCell()
                            : textCell("listen"),
              processCell(rows, process), hasInstance ? positiveCell(rows.key().number(instancePart)) : emptyCell()});
    }
}

void listConnections(LocalDevice &device, const std::string &argument, const Sink &sink)
{
    const Asked asked = readArgument(argument);
    constexpr auto all = TableReader::Rows::all; // those of both versions are of either one
    if (asked.listeners) {
        listTable(device, "tcp", {device, "tcpListenerEntry", {"tcpListenerProcess"}, all}, asked, sink);
    }
    if (asked.tcp) {
        listTable(device, "tcp", {device, "tcpConnectionEntry", {"tcpConnectionState", "tcpConnectionProcess"}, all},
                  asked, sink);
    }
    if (asked.udp) {
        listTable(device, "udp", {device, "udpEndpointEntry", {"udpEndpointProcess"}, all}, asked, sink);
    }
}

} // namespace

const View connectionsView{"connections", connectionColumns, listConnections, true};

} // namespace ipmib::cli
