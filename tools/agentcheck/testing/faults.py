# SPDX-License-Identifier: BSD-3-Clause
"""Agents with one fault each: by name, the agent, the rule that it breaks, the object at which, and what is looked at."""
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "tests", "collectors"))
from catalogue import Catalogue  # noqa: E402
from scripted_agent import Refused, ScriptedAgent  # noqa: E402
from snmp import (COUNTER32, COUNTER64, END_OF_MIB_VIEW, GEN_ERR, GET, GETNEXT, INTEGER, IPADDRESS, NO_SUCH_INSTANCE,  # noqa: E402
                  NO_SUCH_NAME, NO_SUCH_OBJECT, NULL, OCTETS, OID, TIMETICKS, UNSIGNED32)

catalogue = Catalogue()
FAULTS = []


def oid(name, *instance):
    return catalogue.nodes[name].oid + instance


def is_below(name, *columns):
    return any(name[: len(oid(column))] == oid(column) for column in columns)


def planted(rule, where, tables):
    """Registers the agent, under the name of its class."""
    def register(agent):
        FAULTS.append((agent.__name__, agent, rule, where, tables))
        return agent
    return register


def changed(title, rule, tables, column, tag, value, where=None):
    """The first instance of a column has this value."""
    class Changed(ScriptedAgent):
        def change(self):
            self.values[first_of(self.values, column)] = (tag, value)
    FAULTS.append((title, Changed, rule, where or column, tables))


def moved(title, rule, tables, column, instance, where=None):
    """All columns of the row of the first instance of a column stand under another instance."""
    class Moved(ScriptedAgent):
        def change(self):
            before = first_of(self.values, column)[len(oid(column)) :]
            for name in [name for name in self.values if name[: len(oid(column)) - 1] == oid(column)[:-1]]:
                if name[len(oid(column)) :] == before:
                    self.values[name[: len(oid(column))] + instance] = self.values.pop(name)
    FAULTS.append((title, Moved, rule, where or column, tables))


def first_of(values, column):
    return min(name for name in values if is_below(name, column))


ADDRESSES = "ipAddressTable"
NEIGHBOURS = "ipNetToPhysicalTable"
ROUTES = "inetCidrRouteTable"
LINK_LOCAL = (254, 128) + 13 * (0,) + (1,)
PREFIX = (1, 3, 6, 1, 2, 1, 4, 32, 1)
CONNECTIONS = "tcpConnectionTable"
LISTENERS = "tcpListenerTable"
ENDPOINTS = "udpEndpointTable"
IPV6 = (32, 1, 13, 184) + 11 * (0,) + (1,)

# Values
changed("a gauge for an integer", "type", ADDRESSES, "ipAddressIfIndex", UNSIGNED32, 3)
changed("32 bits for 64", "type", "ifXTable", "ifHCInOctets", COUNTER32, 0)
changed("text for a number", "type", "ifTable", "ifMtu", OCTETS, b"1500")
changed("a null", "type", "ifTable", "ifType", NULL, b"")
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


# Walks
class Reordered(ScriptedAgent):
    column = "ipAddressStatus"

    def order(self, name, found):
        """What is found behind the name instead."""

    def get_next(self, name):
        found = super().get_next(name)
        return self.order(name, found) if is_below(found[0], self.column) else found


@planted("ascends", "ipAddressStatus", ADDRESSES)
class StandsStill(Reordered):
    def order(self, name, found):
        return (name, *self.values[name]) if name in self.values and is_below(name, self.column) else found


@planted("ascends", "ipAddressStatus", ADDRESSES)
class TurnsInACircle(Reordered):
    column = "ipAddressCreated"

    def order(self, name, found):
        first = first_of(self.values, "ipAddressStatus")
        return (first, *self.values[first])


@planted("ascends", "ipAddressStatus", ADDRESSES)
class OneStepBack(Reordered):
    def order(self, name, found):
        place = self.names.index(found[0])
        before = self.names[place - 2]
        return (before, *self.values[before]) if is_below(before, self.column) else found


@planted("columnEnds", "ipNetToPhysicalState", NEIGHBOURS)
class OneMoreRowEachTime(ScriptedAgent):
    def get_next(self, name):
        first = first_of(self.values, "ipNetToPhysicalState")
        found = super().get_next(name)
        if name < first or not is_below(name, "ipNetToPhysicalState"):
            return found
        more = name[:-1] + (name[-1] + 1,) if name[-1] < 255 else name + (0,)
        return (more, *self.values[first])

    def get(self, name):
        first = first_of(self.values, "ipNetToPhysicalState")
        is_new = is_below(name, "ipNetToPhysicalState") and name > first
        return (name, *self.values[first]) if is_new else super().get(name)


@planted("bulks", "tcpListenerProcess", LISTENERS)
class BulkLeavesAListenerOut(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        left_out = max(name for name in self.names if is_below(name, "tcpListenerProcess"))
        found = super().get_bulk(name, repetitions + 1)
        return [each for each in found if each[0] != left_out][:repetitions]


@planted("ends", "ifStackLastChange", "ifMIBObjects")
class NoEnd(ScriptedAgent):
    def get_next(self, name):
        found = super().get_next(name)
        return (name, NO_SUCH_OBJECT, b"") if found[1] == END_OF_MIB_VIEW else found


@planted("ends", "ifStackLastChange", "ifMIBObjects")
class EndOfSomethingElse(ScriptedAgent):
    def get_next(self, name):
        found = super().get_next(name)
        return (name[:-1], *found[1:]) if found[1] == END_OF_MIB_VIEW else found


@planted("bulks", "ipAddressStatus", ADDRESSES)
class BulkLeavesARowOut(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        left_out = oid("ipAddressStatus", 1, 4, 203, 0, 113, 53)
        variables = []
        while len(variables) < repetitions:
            found = self.get_next(name)
            name = found[0]
            variables += [found] if name != left_out else []
        return variables


@planted("bulks", "ipAddressStatus", ADDRESSES)
class LargeBulkEndsEarly(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        found = super().get_bulk(name, repetitions)
        last = oid("ipAddressStatus", 1, 4, 203, 0, 113, 53)
        return [(name, END_OF_MIB_VIEW, b"") if repetitions > 20 and name > last else (name, *rest)
                for name, *rest in found]


@planted("bulks", "ipAddressStatus", ADDRESSES)
class BulkHasAnotherValue(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        return [(name, tag, 5 if is_below(name, "ipAddressStatus") else value)
                for name, tag, value in super().get_bulk(name, repetitions)]


@planted("bulks", "ipAddressIfIndex", ADDRESSES)
class BulkColumnByColumn(ScriptedAgent):
    def all_of_bulk(self, names, non_repeaters, repetitions):
        return [each for place, name in enumerate(names)
                for each in self.get_bulk(name, 1 if place < non_repeaters else repetitions)]


@planted("bulks", "ipAddressIfIndex", ADDRESSES)
class BulkRepeatsAll(ScriptedAgent):
    def all_of_bulk(self, names, non_repeaters, repetitions):
        return super().all_of_bulk(names, 0, repetitions)


@planted("ascends", "ipAddress", ADDRESSES)
class BulkRepeatsItself(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        return super().get_bulk(name, 1) * repetitions


@planted("complete", "ipAddress", ADDRESSES)
class BulkHasMoreThanWasAsked(ScriptedAgent):
    def get_bulk(self, name, repetitions):
        return super().get_bulk(name, repetitions + 1)


@planted("gets", "ipAddressOrigin", ADDRESSES)
class GetHasAnotherValue(ScriptedAgent):
    def get(self, name):
        found = super().get(name)
        return (*found[:2], 1) if is_below(name, "ipAddressOrigin") and found[1] == INTEGER else found


@planted("gets", "ipSystemStatsHCInReceives", "ipSystemStatsTable")
class GetHasAnotherCounter(ScriptedAgent):
    def get(self, name):
        found = super().get(name)
        return (*found[:2], found[2] + 1) if found[1] == COUNTER64 else found


@planted("gets", "ipAddressOrigin", ADDRESSES)
class GetFindsNothing(ScriptedAgent):
    def get(self, name):
        return (name, NO_SUCH_INSTANCE, b"") if name == oid("ipAddressOrigin", 1, 4, 192, 0, 2, 1) else super().get(name)


@planted("successor", "ipAddressIfIndex", ADDRESSES)
class LeavesOutWhatFollowsNoInstance(ScriptedAgent):
    def get_next(self, name):
        found = super().get_next(name)
        is_inside = is_below(name, "ipAddressEntry") and len(name) > len(oid("ipAddressEntry")) + 1
        return found if not is_inside or name in self.values else super().get_next(found[0])


@planted("successor", "ipNetToPhysical", NEIGHBOURS)
class OctetsWrapAt256(ScriptedAgent):
    """As in agents that read the octets of an index into bytes."""

    def get_next(self, name):
        size = len(oid("ipNetToPhysicalEntry")) + 1
        if is_below(name, "ipNetToPhysicalEntry"):
            name = name[:size] + tuple(sub_id % 256 for sub_id in name[size:])
        return super().get_next(name)


@planted("gets", "tcpConnectionProcess", CONNECTIONS)
class GetKnowsNoConnections(ScriptedAgent):
    def get(self, name):
        return (name, NO_SUCH_INSTANCE, b"") if is_below(name, "tcpConnectionProcess") else super().get(name)


@planted("successor", "tcpConnState", "tcpConnTable")
class PortsWrapAt65536(ScriptedAgent):
    """As in agents that read a port into 16 bits."""

    def get_next(self, name):
        place = len(oid("tcpConnState")) + 4
        if is_below(name, "tcpConnState") and len(name) > place:
            name = name[:place] + (name[place] % 65536,) + name[place + 1 :]
        return super().get_next(name)


@planted("successor", "ipAddressStorageType", "ipAddressTable,ipNetToPhysicalTable")
class ATableThatNoWalkComesTo(ScriptedAgent):
    """Only who begins within it finds it."""

    def get_next(self, name):
        found = super().get_next(name)
        while is_below(found[0], "ipNetToPhysicalTable") and not is_below(name, "ipNetToPhysicalTable"):
            found = super().get_next(found[0])
        return found


@planted("complete", "ipAddress", ADDRESSES)
class BulkOfNoRepetitionsRepeats(ScriptedAgent):
    def all_of_bulk(self, names, non_repeaters, repetitions):
        return super().all_of_bulk(names, non_repeaters, max(repetitions, 1))


@planted("sideBySide", "ipAddressOrigin", ADDRESSES)
class RowsMixed(ScriptedAgent):
    """The second variable of a packet and those behind it are one row further on."""

    def answer(self, request):
        response = super().answer(request)
        if request.kind == GETNEXT and len(request.variables) > 1:
            response.variables = [
                self.get_next(variable[0]) if is_below(variable[0], "ipAddressOrigin") else variable
                for variable in response.variables]
        return response


@planted("complete", "ipAddress", ADDRESSES)
class AnswerCutShort(ScriptedAgent):
    def answer(self, request):
        response = super().answer(request)
        if len(request.variables) > 3:
            del response.variables[3:]
        return response


@planted("complete", "ipAddress", ADDRESSES)
class AnswersOutOfOrder(ScriptedAgent):
    def answer(self, request):
        response = super().answer(request)
        if request.kind == GET:
            response.variables.reverse()
        return response


@planted("answered", "ipAddressCreated", ADDRESSES)
class AnError(ScriptedAgent):
    def get(self, name):
        if name == oid("ipAddressCreated", 1, 4, 192, 0, 2, 1):
            raise Refused(GEN_ERR)
        return super().get(name)


@planted("answered", "ipAddressCreated", ADDRESSES)
class OneQuestionUnanswered(ScriptedAgent):
    def answers(self, request):
        names = [name for name, _, _ in request.variables]
        is_asked = request.kind == GETNEXT and names == [oid("ipAddressCreated", 1, 4, 192, 0, 2, 1)]
        return [] if is_asked else super().answers(request)


@planted("otherVersion", "ipAddressType", ADDRESSES)
class Version1LeavesARowOut(ScriptedAgent):
    def for_version1(self, kind, found):
        if kind == GETNEXT and found[0] == oid("ipAddressType", 1, 4, 192, 0, 2, 1):
            found = self.get_next(found[0])
        return super().for_version1(kind, found)


@planted("noCounter64", "ifHCInOctets", "ifXTable")
class Version1HasCounter64(ScriptedAgent):
    def for_version1(self, kind, found):
        return found if found[1] == COUNTER64 else super().for_version1(kind, found)


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


# What is not there
@planted("noSuchInstance", "ipAddressIfIndex", ADDRESSES)
class NoSuchObjectForAnInstance(ScriptedAgent):
    def absent(self, name):
        return name, NO_SUCH_OBJECT, b""


@planted("noSuchObject", "ipAddressEntry", ADDRESSES)
class NoSuchInstanceForAnObject(ScriptedAgent):
    def absent(self, name):
        return name, NO_SUCH_INSTANCE, b""


@planted("noSuchInstance", "ipAddressIfIndex", ADDRESSES)
class Version1ErrorsInVersion2(ScriptedAgent):
    def absent(self, name):
        raise Refused(NO_SUCH_NAME)


@planted("noSuchInstance", "ipAddressIfIndex", ADDRESSES)
class AValueForWhatIsNotThere(ScriptedAgent):
    def absent(self, name):
        return (name, INTEGER, 0) if is_below(name, "ipAddressIfIndex") else super().absent(name)


@planted("noSuchInstance", "ipAddressIfIndex", ADDRESSES)
class OneThatIsAbsentTakesAllWithIt(ScriptedAgent):
    def answer(self, request):
        response = super().answer(request)
        if request.kind == GET and any(tag == NO_SUCH_INSTANCE for _, tag, _ in response.variables):
            response.variables = [(name, NO_SUCH_INSTANCE, b"") for name, _, _ in response.variables]
        return response


@planted("noSuchName", "ipAddressIfIndex", ADDRESSES)
class Version2ExceptionsInVersion1(ScriptedAgent):
    def for_version1(self, kind, found):
        return found if found[1] in (NO_SUCH_INSTANCE, NO_SUCH_OBJECT) else super().for_version1(kind, found)


@planted("endOfMibView", "2.39.4294967295", "interfaces")
class BeginsAgainAtTheEnd(ScriptedAgent):
    def get_next(self, name):
        return super().get_next((0, 0) if name > self.names[-1] else name)


@planted("noSuchName", "ipAddressIfIndex", ADDRESSES)
class NoPlaceOfTheError(ScriptedAgent):
    def answer(self, request):
        response = super().answer(request)
        if request.kind == GET and response.first == NO_SUCH_NAME:
            response.second = 0
        return response


# Writes
@planted("notWritable", "ifDescr", "ifTable")
class EverythingCanBeWritten(ScriptedAgent):
    def set(self, name, tag, value):
        return name, tag, value


@planted("notWritable", "ifDescr", "ifTable")
class AWriteIsAGenErr(ScriptedAgent):
    def set(self, name, tag, value):
        raise Refused(GEN_ERR)


@planted("written", "ifAdminStatus", "ifTable")
class AWriteIsForgotten(ScriptedAgent):
    written = False

    def set(self, name, tag, value):
        if not is_below(name, "ifAdminStatus"):
            return super().set(name, tag, value)
        self.written = True
        return name, tag, value

    def value(self, name):
        is_forgotten = self.written and is_below(name, "ifAdminStatus")
        return (INTEGER, 2) if is_forgotten else super().value(name)


# Further rules that are broken by the same fault.
CONSEQUENCES = {
    "32 bits for 64": {"lowHalf"},
    "a negative ifIndex": {"pointerRow"},
    "an interface that is not there": {"pointerRow"},
    "AnIndexThatCanBeRead": {"noSuchInstance"},
    "AnInstanceThatCanBeRead": {"noSuchInstance"},
    "OneMoreRowEachTime": {"successor"},
    "NoEnd": {"endOfMibView"},
    "EndOfSomethingElse": {"endOfMibView"},
    "LargeBulkEndsEarly": {"ends"},
    "GetHasAnotherCounter": {"lowHalf"},
    "BulkRepeatsAll": {"complete"},
    "BulkRepeatsItself": {"bulks"},
    "Version1HasCounter64": {"otherVersion", "noSuchName"},
    "AWideCounterThatFalls": {"lowHalf"},
    "Version1ErrorsInVersion2": {"answered", "noSuchObject"},
    "AValueForWhatIsNotThere": {"noSuchName"},
    "BeginsAgainAtTheEnd": {"noSuchName"},
}


# Not wrong, and no reason to wait for ever.
class Twice(ScriptedAgent):
    """Each answer comes twice, and the one before once more."""

    before = b""

    def answers(self, request):
        again, self.before = self.before, self.answer(request).bytes()
        return [again or self.before, self.before, self.before]


class APeer(ScriptedAgent):
    """The prefix of an address with a peer, as at a point-to-point link, is that of the peer alone."""

    def change(self):
        self.values[first_of(self.values, "ipAddressPrefix")] = (OID, PREFIX + (5, 3, 1, 4, 198, 51, 100, 7, 32))
        instance = first_of(self.values, "ipAddressPrefixOrigin")[len(oid("ipAddressPrefixOrigin")) :]
        for name in [name for name in self.values if is_below(name, "ipAddressPrefixEntry")]:
            if name[len(oid("ipAddressPrefixOrigin")) :] == instance:
                self.values[name[: -len(instance)] + (3, 1, 4, 198, 51, 100, 7, 32)] = self.values[name]


class Late(ScriptedAgent):
    """Some answers come after they have been asked for again."""

    def answers(self, request):
        if self.packets % 50 == 0:
            time.sleep(0.4)
        return super().answers(request)


class RemembersOneTableLonger(ScriptedAgent):
    """ifNumber is wrong until nobody has asked for a while."""

    is_fresh = False
    asked_at = None

    def answers(self, request):
        now = time.monotonic()
        self.is_fresh = self.is_fresh or self.asked_at is not None and now - self.asked_at > 0.3
        self.asked_at = now
        return super().answers(request)

    def value(self, name):
        tag, value = super().value(name)
        return (tag, value if self.is_fresh else value - 1) if is_below(name, "ifNumber") else (tag, value)


class Chatter(ScriptedAgent):
    """From some packet on, nothing is answered but what nobody asked."""

    def answers(self, request):
        if self.packets < 100:
            return super().answers(request)
        request.request += 1
        return 50 * super().answers(request)


class Silence(ScriptedAgent):
    """From some packet on, nothing is answered."""

    def answers(self, request):
        return super().answers(request) if self.packets < 100 else []


class FromTheBeginning(ScriptedAgent):
    def answers(self, request):
        return []


class Rubbish(ScriptedAgent):
    def answers(self, request):
        return [b"\x30\x82\xff\xff" + bytes(40), b"", bytes(1400)]
