# SPDX-License-Identifier: BSD-3-Clause
"""Rows that do not fit to other rows, to themselves a moment before, or to their MIB."""
from scripted_agent import ScriptedAgent
from snmp import COUNTER32, INTEGER, OID, TIMETICKS, UNSIGNED32

from .planting import (ADDRESSES, CONNECTIONS, ENDPOINTS, IPV6, LINK_LOCAL, NEIGHBOURS, PREFIX, ROUTES, UP_TIME,
                       changed, first_of, is_below, moved, oid, planted)

# Rows and other rows
POINTERS = "ipAddressTable,ipAddressPrefixTable"
changed("a pointer to no row", "pointer", POINTERS, "ipAddressPrefix", OID, PREFIX + (5, 3, 1, 4, 192, 0, 2, 0, 24))
changed("a pointer to another column", "pointer", POINTERS, "ipAddressPrefix", OID,
        PREFIX + (6, 3, 1, 4, 192, 0, 2, 0, 25))
changed("a pointer to somewhere", "pointer", POINTERS, "ipAddressPrefix", OID, (1, 3, 6, 1))
changed("a pointer to another prefix", "pointerRow", POINTERS, "ipAddressPrefix", OID,
        PREFIX + (5, 2, 1, 4, 203, 0, 113, 0, 24))
changed("no pointer", "pointerMissing", POINTERS, "ipAddressPrefix", OID, (0, 0))
changed("an interface that is not there", "interfaceExists", "ifTable,ipAddressTable", "ipAddressIfIndex", INTEGER, 77)
moved("a neighbour on no interface", "interfaceExists", "ifTable," + NEIGHBOURS, "ipNetToPhysicalType",
      (77, 1, 4, 203, 0, 113, 1), "ipNetToPhysicalPhysAddress")
changed("a zone that is another's", "zoneOfInterface", "ipAddressTable,ipv6ScopeZoneIndexTable",
        "ipv6ScopeZoneIndexLinkLocal", UNSIGNED32, 99, "ipAddressIfIndex")
changed("interfaces counted wrongly", "count", "interfaces,ifTable", "ifNumber", INTEGER, 5)
changed("routes counted wrongly", "count", "ipForward," + ROUTES, "inetCidrRouteNumber", UNSIGNED32, 9)
changed("a timeout that is never reached", "timeouts", "tcp", "tcpRtoMin", INTEGER, 2147483647)
ZONES = ",ipv6ScopeZoneIndexTable"
moved("a neighbour's zone is another's", "zoneOfInterface", NEIGHBOURS + ZONES, "ipNetToPhysicalType",
      (2, 4, 20) + LINK_LOCAL + (0, 0, 0, 3), "ipNetToPhysicalPhysAddress")
moved("a router's zone is another's", "zoneOfInterface", "ipDefaultRouterTable" + ZONES, "ipDefaultRouterLifetime",
      (4, 20) + LINK_LOCAL + (0, 0, 0, 3, 2))


@planted("changes", "ipAddressCreated", ADDRESSES)
class ChangedBeforeItWasCreated(ScriptedAgent):
    def change(self):
        changed_at = first_of(self.values, "ipAddressLastChanged")
        self.values[changed_at] = (TIMETICKS, 400)
        self.values[oid("ipAddressCreated", *changed_at[len(oid("ipAddressCreated")) :])] = (TIMETICKS, 5000)


@planted("wholeRows", "ipAddressOrigin", ADDRESSES)
class AHoleInARow(ScriptedAgent):
    def change(self):
        del self.values[first_of(self.values, "ipAddressOrigin")]


@planted("scalarIndex", "ifNumber", "interfaces")
class AScalarWithoutItsZero(ScriptedAgent):
    def change(self):
        self.values[oid("ifNumber")] = self.values.pop(oid("ifNumber", 0))


@planted("noSuchInstance", "ipAddressIfIndex", ADDRESSES)
class AColumnThatHasAValue(ScriptedAgent):
    def absent(self, name):
        return (name, INTEGER, 1) if name == oid("ipAddressIfIndex") else super().absent(name)


@planted("augments", "ifName", "ifTable,ifXTable")
class HalfAnInterface(ScriptedAgent):
    def change(self):
        for name in [name for name in self.values if is_below(name, "ifXEntry") and name[-1] == 2]:
            del self.values[name]


changed("a speed of its own", "speeds", "ifTable,ifXTable", "ifHighSpeed", UNSIGNED32, 77777, "ifSpeed")
changed("preferred when no longer valid", "lifetimes", "ipAddressPrefixTable", "ipAddressPrefixAdvValidLifetime",
        UNSIGNED32, 100, "ipAddressPrefixAdvPreferredLifetime")
changed("the least is the greatest", "intervals", "ipv6RouterAdvertTable", "ipv6RouterAdvertMinInterval", UNSIGNED32, 1350)

# Connections
changed("a connection that listens", "connectionState", CONNECTIONS, "tcpConnectionState", INTEGER, 2)
changed("a state that is only written", "connectionState", CONNECTIONS, "tcpConnectionState", INTEGER, 12)
changed("an older state that is only written", "connectionState", "tcpConnTable", "tcpConnState", INTEGER, 12)
moved("a connection of two versions", "oneVersion", CONNECTIONS, "tcpConnectionState", (1, 4, 192, 0, 2, 1, 22, 2, 16) + IPV6 + (9,))
moved("an endpoint of two versions", "oneVersion", ENDPOINTS, "udpEndpointProcess", (2, 16) + IPV6 + (123, 1, 4, 192, 0, 2, 20, 9, 1))
moved("anybody as an address of zeros", "anyRemote", ENDPOINTS, "udpEndpointProcess", (1, 4, 192, 0, 2, 1, 123, 1, 4, 0, 0, 0, 0, 0, 1))
moved("anybody at a port", "anyRemote", ENDPOINTS, "udpEndpointProcess", (0, 0, 123, 0, 0, 53, 1))

# Counters and times
changed("another low half", "lowHalf", "ifTable,ifXTable", "ifInOctets", COUNTER32, 12345)
changed("a time to come", "timeAhead", NEIGHBOURS, "ipNetToPhysicalLastUpdated", TIMETICKS, 4294967295)


@planted("upTime", "mib-2.1.3.0", "icmpStatsTable")
class AClockThatRunsBackwards(ScriptedAgent):
    def value(self, name):
        tag, value = super().value(name)
        return (tag, 10**9 - self.packets) if name == UP_TIME else (tag, value)


@planted("falls", "icmpStatsInMsgs", "icmpStatsTable")
class ACounterThatFalls(ScriptedAgent):
    def value(self, name):
        tag, value = super().value(name)
        return (tag, 10**6 - self.packets) if is_below(name, "icmpStatsInMsgs") else (tag, value)


@planted("falls", "ifHCInOctets", "ifXTable")
class AWideCounterThatFalls(ScriptedAgent):
    def value(self, name):
        tag, value = super().value(name)
        return (tag, 10**15 - self.packets) if is_below(name, "ifHCInOctets") else (tag, value)
