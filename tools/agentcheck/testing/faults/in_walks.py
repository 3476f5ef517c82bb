# SPDX-License-Identifier: BSD-3-Clause
"""Answers that are not what was asked for: left out, twice, out of order, never ending, with errors."""
from scripted_agent import Refused, ScriptedAgent
from snmp import COUNTER64, END_OF_MIB_VIEW, GEN_ERR, GET, GETNEXT, INTEGER, NO_SUCH_INSTANCE, NO_SUCH_OBJECT

from .planting import ADDRESSES, CONNECTIONS, LISTENERS, NEIGHBOURS, first_of, is_below, oid, planted


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


@planted("answered", "ipAddressIfIndex", ADDRESSES)
class AnErrorsPlaceWithoutAnError(ScriptedAgent):
    def answer(self, request):
        response = super().answer(request)
        return self.response(request, response.variables, response.first, response.second or 1)


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
