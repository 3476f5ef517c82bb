# SPDX-License-Identifier: BSD-3-Clause
"""Values and indexes that no object of their kind has."""
from scripted_agent import ScriptedAgent
from snmp import COUNTER32, INTEGER, IPADDRESS, NULL, OCTETS, UNSIGNED32

from .planting import (ADDRESSES, CONNECTIONS, ENDPOINTS, IPV6, LINK_LOCAL, LISTENERS, NEIGHBOURS, ROUTES, changed,
                       first_of, is_below, moved, oid, planted)

# Values
changed("a gauge for an integer", "type", ADDRESSES, "ipAddressIfIndex", UNSIGNED32, 3)
changed("32 bits for 64", "type", "ifXTable", "ifHCInOctets", COUNTER32, 0)
changed("text for a number", "type", "ifTable", "ifMtu", OCTETS, b"1500")
changed("a null", "type", "ifTable", "ifType", NULL, b"")
changed("an interface of no type", "range", "ifTable", "ifType", INTEGER, 0)
changed("a number without a name", "label", ADDRESSES, "ipAddressStatus", INTEGER, 99)
changed("a truth that is neither", "label", "ipAddressPrefixTable", "ipAddressPrefixOnLinkFlag", INTEGER, 0)
changed("a lifetime beyond its range", "range", "ipDefaultRouterTable", "ipDefaultRouterLifetime", UNSIGNED32, 70000)
changed("too many octets", "range", "ipv6InterfaceTable", "ipv6InterfaceIdentifier", OCTETS, bytes(12))
changed("a negative ifIndex", "range", ADDRESSES, "ipAddressIfIndex", INTEGER, -1)
changed("another address than in the index", "indexValue", "ipAddrTable", "ipAdEntAddr", IPADDRESS, bytes([10, 0, 0, 1]))
changed("a connection's state without a name", "label", CONNECTIONS, "tcpConnectionState", INTEGER, 13)
changed("a process that is no gauge", "type", LISTENERS, "tcpListenerProcess", INTEGER, 640)
changed("another port than in the index", "indexValue", "udpTable", "udpLocalPort", INTEGER, 99)
changed("another end than in the index", "indexValue", "tcpConnTable", "tcpConnRemAddress", IPADDRESS, bytes([10, 0, 0, 1]))


@planted("accessible", "udpEndpointInstance", ENDPOINTS)
class AnInstanceThatCanBeRead(ScriptedAgent):
    def change(self):
        instance = first_of(self.values, "udpEndpointProcess")[len(oid("udpEndpointProcess")) :]
        self.values[oid("udpEndpointInstance", *instance)] = (UNSIGNED32, instance[-1])


@planted("accessible", "ipAddressAddrType", ADDRESSES)
class AnIndexThatCanBeRead(ScriptedAgent):
    def change(self):
        self.values[oid("ipAddressAddrType", 1, 4, 192, 0, 2, 1)] = (INTEGER, 1)


@planted("defined", "ipAddressEntry", ADDRESSES)
class AColumnOfItsOwn(ScriptedAgent):
    def change(self):
        self.values[oid("ipAddressEntry", 12, 1, 4, 192, 0, 2, 1)] = (INTEGER, 1)


changed("a status that is only written", "rowStatus", ADDRESSES, "ipAddressRowStatus", INTEGER, 4)

@planted("ipv6Broadcast", "ipAddressType.4.20.254.128", ADDRESSES)
class Ipv6Broadcast(ScriptedAgent):
    def change(self):
        self.values[max(name for name in self.values if is_below(name, "ipAddressType"))] = (INTEGER, 3)

# Indexes
moved("an address without its length", "index", NEIGHBOURS, "ipNetToPhysicalType", (2, 1, 203, 0, 113, 1),
      "ipNetToPhysicalPhysAddress")
moved("an octet that is none", "index", NEIGHBOURS, "ipNetToPhysicalType", (2, 1, 4, 203, 0, 113, 256),
      "ipNetToPhysicalPhysAddress")
moved("an index that goes on", "index", "ifXTable", "ifName", (2, 1))
moved("an unknown version", "index", "icmpStatsTable", "icmpStatsInMsgs", (7,))
moved("IPv6 of 4 octets", "addressLength", NEIGHBOURS, "ipNetToPhysicalType", (2, 2, 4, 203, 0, 113, 1),
      "ipNetToPhysicalPhysAddress")
moved("a name for an address", "addressLength", NEIGHBOURS, "ipNetToPhysicalType", (2, 16, 4) + tuple(b"name"),
      "ipNetToPhysicalPhysAddress")
moved("an address of no type", "addressLength", NEIGHBOURS, "ipNetToPhysicalType", (2, 0, 0), "ipNetToPhysicalPhysAddress")
moved("a zone that is cut off", "addressLength", NEIGHBOURS, "ipNetToPhysicalType", (2, 4, 16) + LINK_LOCAL,
      "ipNetToPhysicalPhysAddress")
moved("link-local without zone", "zone", NEIGHBOURS, "ipNetToPhysicalType", (2, 2, 16) + LINK_LOCAL,
      "ipNetToPhysicalPhysAddress")
moved("the default zone", "zone", NEIGHBOURS, "ipNetToPhysicalType", (2, 4, 20) + LINK_LOCAL + (0, 0, 0, 0),
      "ipNetToPhysicalPhysAddress")
moved("bits behind the prefix", "prefixBits", ROUTES, "inetCidrRouteType",
      (1, 4, 192, 0, 2, 1, 25, 3, 0, 0, 3, 0, 0), "inetCidrRouteIfIndex")
moved("more bits than there are", "prefixBits", "ipAddressPrefixTable", "ipAddressPrefixOrigin",
      (2, 1, 4, 203, 0, 113, 0, 64))
moved("a port beyond all ports", "index", CONNECTIONS, "tcpConnectionState", (1, 4, 192, 0, 2, 1, 70000, 1, 4, 192, 0, 2, 20, 51514))
moved("an older port beyond all ports", "index", "udpTable", "udpLocalAddress", (192, 0, 2, 1, 65536))
moved("a connection whose other end is cut off", "index", CONNECTIONS, "tcpConnectionState", (1, 4, 192, 0, 2, 1, 22, 1, 4, 192, 0, 2))
moved("an endpoint without instance", "index", ENDPOINTS, "udpEndpointProcess", (0, 0, 123, 0, 0, 0))
moved("the instance 0", "index", ENDPOINTS, "udpEndpointProcess", (0, 0, 123, 0, 0, 0, 0))
moved("a listener of IPv4 with 16 octets", "addressLength", LISTENERS, "tcpListenerProcess", (1, 16) + IPV6 + (22,))
moved("a listener at an unknown address", "addressLength", LISTENERS, "tcpListenerProcess", (0, 4, 192, 0, 2, 1, 22))
moved("a connection without zone", "zone", CONNECTIONS, "tcpConnectionState", (2, 16) + LINK_LOCAL + (22, 2, 16) + IPV6 + (9,))
moved("another end without zone", "zone", CONNECTIONS, "tcpConnectionState", (2, 16) + IPV6 + (22, 2, 16) + LINK_LOCAL + (9,))
moved("a second scalar", "scalarIndex", "interfaces", "ifNumber", (1,))
