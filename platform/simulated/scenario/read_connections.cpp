// SPDX-License-Identifier: BSD-3-Clause
// Reads the connections that a scenario lists or has made by the number.
#include "scenario/read.h"

#include "scenario/forms.h"

#include <arpa/inet.h>

namespace ipmib::simulated
{
namespace
{

using platform::ConnectionRow;
using platform::PackedEnd;

constexpr std::uint32_t mostConnectionsAtOnce = 4'000'000;
constexpr std::uint32_t highestProcess = 4'194'304; // that Linux may give
constexpr Word states[] = {
    {"closed", IPMIB_TCP_CLOSED},           {"synSent", IPMIB_TCP_SYN_SENT},    {"synReceived", IPMIB_TCP_SYN_RECEIVED},
    {"established", IPMIB_TCP_ESTABLISHED}, {"finWait1", IPMIB_TCP_FIN_WAIT_1}, {"finWait2", IPMIB_TCP_FIN_WAIT_2},
    {"closeWait", IPMIB_TCP_CLOSE_WAIT},    {"lastAck", IPMIB_TCP_LAST_ACK},    {"closing", IPMIB_TCP_CLOSING},
    {"timeWait", IPMIB_TCP_TIME_WAIT}};

// The zone of a link-local address.
std::uint32_t readZone(Object &object, const Device &device)
{
    const auto name = object.find("interface");
    if (!name) {
        return 0;
    }
    const Interface *const interface = device.named(name->text("the name of an interface"));
    if (interface == nullptr) {
        name->refuse("the name of an interface of this device");
    }
    return interface->ifIndex;
}

PackedEnd readAddress(const Value &value, std::uint32_t zone, bool mayBeAny)
{
    const char *const expected = mayBeAny ? "\"any\", or an address" : "an address";
    const std::string &text = value.text(expected);
    if (mayBeAny && text == "any") {
        return PackedEnd::any(0);
    }
    in_addr ipv4{};
    in6_addr ipv6{};
    if (inet_pton(AF_INET, text.c_str(), &ipv4) == 1) {
        return PackedEnd::ipv4(ntohl(ipv4.s_addr), 0);
    }
    if (inet_pton(AF_INET6, text.c_str(), &ipv6) != 1) {
        value.refuse(expected);
    }
    const auto address = PackedAddress::of(&ipv6);
    if (address.isLinkLocal() && zone == 0) {
        value.fail("a link-local address needs its interface");
    }
    return PackedEnd::ipv6(address, address.isLinkLocal() ? zone : 0, 0);
}

// "local" or "remote", and its port.
PackedEnd readEnd(Object &object, const std::string &name, std::uint32_t zone, bool mayBeAny)
{
    PackedEnd end = readAddress(object.need(name), zone, mayBeAny);
    end.port = static_cast<std::uint16_t>(object.need(name + "Port").number(1, UINT16_MAX));
    return end;
}

ConnectionRow readRow(std::uint32_t table, Object &object, const Device &device)
{
    const std::uint32_t zone = readZone(object, device);
    const bool isConnection = table == IPMIB_TCP_CONNECTIONS;
    ConnectionRow row;
    row.local = readEnd(object, "local", zone, !isConnection);
    if (isConnection || (table == IPMIB_UDP_ENDPOINTS && object.find("remote"))) {
        row.remote = readEnd(object, "remote", zone, false);
    }
    if (isConnection) {
        row.state = object.word("state", IPMIB_TCP_ESTABLISHED, states) & 0xFu;
    } else if (table == IPMIB_UDP_ENDPOINTS) {
        row.instance = object.number("instance", 1, 1, UINT32_MAX);
    }
    row.process = object.number("process", 0, 0, highestProcess) & 0x0FFF'FFFFu;
    return row;
}

// One port further; behind the last one at the first port of the next address.
void advance(PackedEnd &end, std::uint16_t firstPort)
{
    constexpr std::uint64_t ipv4Step = std::uint64_t{1} << 32;
    if (end.port != UINT16_MAX) {
        ++end.port;
        return;
    }
    end.port = firstPort;
    const bool isIpv4 = PackedEnd::ipv4(0, 0).typeAndSize == end.typeAndSize;
    end.address.low += isIpv4 ? 0 : 1;
    end.address.high += isIpv4 ? ipv4Step : 0;
}

void readConnection(const Value &value, std::uint32_t table, Device &device)
{
    Object object(value);
    ConnectionRow row = readRow(table, object, device);
    const bool counts = row.state == IPMIB_TCP_ESTABLISHED || row.state == IPMIB_TCP_CLOSE_WAIT;
    const std::uint32_t count =
        table == IPMIB_TCP_CONNECTIONS ? object.number("count", 1, 1, mostConnectionsAtOnce) : 1;
    object.finish();
    const std::uint16_t firstPort = row.remote.port;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!device.connections[table].put(row, 0)) {
            value.fail("the device has such a row already");
        }
        advance(row.remote, firstPort);
    }
    device.tcpConnections += counts ? count : 0;
}

} // namespace

void readConnections(const Value &value, Device &device)
{
    constexpr const char *names[IPMIB_CONNECTION_TABLES] = {"tcp", "listeners", "udp"};
    Object object(value);
    for (std::uint32_t table = 0; table < IPMIB_CONNECTION_TABLES; ++table) {
        eachOf(object, names[table], [&](const Value &row) { readConnection(row, table, device); });
    }
    object.finish();
}

} // namespace ipmib::simulated
