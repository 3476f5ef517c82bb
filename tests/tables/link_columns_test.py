#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Every column of the interfaces, the older tables of IPv4, the routes and the connections, of a device on which no two things
are the same: by GET, and by a walk, which has no others. The argument is ipmibd."""
import sys
import unittest

from column_check import ColumnCheck

WIDE = 1 << 33  # what only 64 bits show
UPTIME = 1000
LINK = {name: WIDE + 500 + i for i, name in enumerate([
    "inOctets", "inUcastPkts", "inMulticastPkts", "inBroadcastPkts", "inDiscards", "inErrors", "inUnknownProtos", "outOctets",
    "outUcastPkts", "outMulticastPkts", "outBroadcastPkts", "outDiscards", "outErrors"])}
SCENARIO = {
    "uptime": UPTIME,
    "interfaces": [
        {"name": "wan", "ifIndex": 2, "mac": "02:00:5e:00:53:01", "mtu": 1492, "alias": "to the provider", "speed": 155.52,
         "promiscuous": True, "ipv6": False, "receives": ["01:00:5e:00:00:fb"], "ipv4Addresses": ["203.0.113.53/24"],
         "ipv4Neighbours": [{"address": "203.0.113.1", "mac": "02:00:5e:00:53:fe", "type": "static"}],
         "counters": {"link": LINK}},
        {"name": "line", "ifIndex": 7, "type": "ppp", "mtu": 576, "speed": 10000, "connector": False, "up": False,
         "downStatus": "lowerLayerDown", "ipv6": False, "runsOver": ["wan"]}],
    "routes": [
        {"destination": "198.51.100.0/24", "interface": "wan", "via": "203.0.113.1", "protocol": "ospf", "metric": 20, "as": 64500,
         "changed": 862},
        {"destination": "2001:db8:1::/48", "interface": "wan", "via": "2001:db8::1", "protocol": "bgp", "metric": 21, "as": 64501,
         "changed": 863}],
    "connections": {
        "tcp": [
            {"local": "203.0.113.53", "localPort": 40022, "remote": "198.51.100.80", "remotePort": 443, "state": "timeWait"},
            {"local": "2001:db8::53", "localPort": 22, "remote": "2001:db8::80", "remotePort": 51514, "process": 812}],
        "listeners": [{"local": "any", "localPort": 22, "process": 640}, {"local": "203.0.113.53", "localPort": 53, "process": 655}],
        "udp": [
            {"local": "any", "localPort": 123, "process": 671},
            {"local": "203.0.113.53", "localPort": 49152, "remote": "198.51.100.53", "remotePort": 53, "instance": 9, "process": 655}],
    },
}
# Tables and groups that are expected as a whole.
WHOLE = ["interfaces", "ifMIBObjects", "ipAddrTable", "ipNetToMediaTable", "ipRouteTable", "ipForward", "tcpConnTable",
         "tcpConnectionTable", "tcpListenerTable", "udpTable", "udpEndpointTable"]


def address(*words):
    """The octets of an IPv6 address of eight words."""
    return tuple(octet for word in words for octet in (word >> 8, word & 255))


def hexadecimal(text):
    return " ".join(f"{octet:02X}" for octet in text.encode())


def expected():
    """By object and instance, as texts."""
    rows = {}

    def tell(instance, **columns):
        for name, value in columns.items():
            rows[name, instance] = str(value)

    def tell_interface(index, name, link, **columns):
        tell((index,), ifIndex=index, ifDescr=hexadecimal(name), ifName=hexadecimal(name), ifLastChange=0, ifOutQLen=0,
             ifSpecific=".0.0", ifLinkUpDownTrapEnable=1, ifCounterDiscontinuityTime=0, **columns)
        for counter, value in link.items():
            column = counter[0].upper() + counter[1:]
            rows["if" + column, (index,)] = str(value % (1 << 32))
            if "Octets" in counter or "castPkts" in counter:
                rows["ifHC" + column, (index,)] = str(value)
        tell((index,), ifInNUcastPkts=(link["inMulticastPkts"] + link["inBroadcastPkts"]) % (1 << 32),
             ifOutNUcastPkts=(link["outMulticastPkts"] + link["outBroadcastPkts"]) % (1 << 32))

    def tell_route(instance, **columns):
        tell(instance, inetCidrRouteIfIndex=2, inetCidrRouteType=4, inetCidrRouteStatus=1,
             **{f"inetCidrRouteMetric{i}": -1 for i in range(2, 6)}, **columns)

    tell((0,), ifNumber=2, ifTableLastChange=0, ifStackLastChange=0, ipCidrRouteNumber=1, inetCidrRouteNumber=2, inetCidrRouteDiscards=0)
    tell_interface(2, "wan", LINK, ifType=6, ifMtu=1492, ifSpeed=155520000, ifHighSpeed=156, ifPhysAddress="02 00 5E 00 53 01",
                   ifAdminStatus=1, ifOperStatus=1, ifPromiscuousMode=1, ifConnectorPresent=1, ifAlias=hexadecimal("to the provider"))
    tell_interface(7, "line", dict.fromkeys(LINK, 0), ifType=23, ifMtu=576, ifSpeed=(1 << 32) - 1, ifHighSpeed=10000, ifPhysAddress="",
                   ifAdminStatus=2, ifOperStatus=7, ifPromiscuousMode=2, ifConnectorPresent=2, ifAlias="")
    for higher, lower in ((0, 7), (7, 2), (2, 0)):
        tell((higher, lower), ifStackStatus=1)
    for octets in ((2, 0, 0x5E, 0, 0x53, 1), (1, 0, 0x5E, 0, 0, 0xFB)):
        tell((2, 6) + octets, ifRcvAddressStatus=1, ifRcvAddressType=3)
    tell((203, 0, 113, 53), ipAdEntAddr="203.0.113.53", ipAdEntIfIndex=2, ipAdEntNetMask="255.255.255.0", ipAdEntBcastAddr=1,
         ipAdEntReasmMaxSize=65535)
    tell((2, 203, 0, 113, 1), ipNetToMediaIfIndex=2, ipNetToMediaPhysAddress="02 00 5E 00 53 FE", ipNetToMediaNetAddress="203.0.113.1",
         ipNetToMediaType=4)

    tell((198, 51, 100, 0), ipRouteDest="198.51.100.0", ipRouteIfIndex=2, ipRouteMetric1=20, ipRouteNextHop="203.0.113.1", ipRouteType=4,
         ipRouteProto=13, ipRouteAge=138, ipRouteMask="255.255.255.0", ipRouteInfo=".0.0", **{f"ipRouteMetric{i}": -1 for i in range(2, 6)})
    tell((198, 51, 100, 0, 255, 255, 255, 0, 0, 203, 0, 113, 1), ipCidrRouteDest="198.51.100.0", ipCidrRouteMask="255.255.255.0",
         ipCidrRouteTos=0, ipCidrRouteNextHop="203.0.113.1", ipCidrRouteIfIndex=2, ipCidrRouteType=4, ipCidrRouteProto=13,
         ipCidrRouteAge=138, ipCidrRouteInfo=".0.0", ipCidrRouteNextHopAS=64500, ipCidrRouteMetric1=20, ipCidrRouteStatus=1,
         **{f"ipCidrRouteMetric{i}": -1 for i in range(2, 6)})
    tell_route((1, 4, 198, 51, 100, 0, 24, 4, 0, 0, 20, 0, 1, 4, 203, 0, 113, 1), inetCidrRouteProto=13, inetCidrRouteAge=138,
               inetCidrRouteNextHopAS=64500, inetCidrRouteMetric1=20)
    tell_route((2, 16) + address(0x2001, 0xDB8, 1, 0, 0, 0, 0, 0) + (48, 4, 0, 0, 21, 0, 2, 16) +
               address(0x2001, 0xDB8, 0, 0, 0, 0, 0, 1), inetCidrRouteProto=14, inetCidrRouteAge=137, inetCidrRouteNextHopAS=64501,
               inetCidrRouteMetric1=21)

    for local, local_port, remote, remote_port, state in (
            ("0.0.0.0", 22, "0.0.0.0", 0, 2), ("203.0.113.53", 53, "0.0.0.0", 0, 2), ("203.0.113.53", 40022, "198.51.100.80", 443, 11)):
        tell((*map(int, local.split(".")), local_port, *map(int, remote.split(".")), remote_port), tcpConnState=state,
             tcpConnLocalAddress=local, tcpConnLocalPort=local_port, tcpConnRemAddress=remote, tcpConnRemPort=remote_port)
    tell((1, 4, 203, 0, 113, 53, 40022, 1, 4, 198, 51, 100, 80, 443), tcpConnectionState=11, tcpConnectionProcess=0)
    tell((2, 16) + address(0x2001, 0xDB8, 0, 0, 0, 0, 0, 0x53) + (22, 2, 16) + address(0x2001, 0xDB8, 0, 0, 0, 0, 0, 0x80) + (51514,),
         tcpConnectionState=5, tcpConnectionProcess=812)
    tell((0, 0, 22), tcpListenerProcess=640)
    tell((1, 4, 203, 0, 113, 53, 53), tcpListenerProcess=655)
    for local, port in (("0.0.0.0", 123), ("203.0.113.53", 49152)):
        tell((*map(int, local.split(".")), port), udpLocalAddress=local, udpLocalPort=port)
    tell((0, 0, 123, 0, 0, 0, 1), udpEndpointProcess=671)
    tell((1, 4, 203, 0, 113, 53, 49152, 1, 4, 198, 51, 100, 53, 53, 9), udpEndpointProcess=655)
    return rows


class LinkColumns(ColumnCheck, unittest.TestCase):
    scenario = SCENARIO
    whole = WHOLE
    wanted = expected()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
