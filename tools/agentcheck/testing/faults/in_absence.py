# SPDX-License-Identifier: BSD-3-Clause
"""Wrong answers where nothing is, and to writes."""
from scripted_agent import Refused, ScriptedAgent
from snmp import GEN_ERR, GET, INTEGER, NO_SUCH_INSTANCE, NO_SUCH_NAME, NO_SUCH_OBJECT

from .planting import ADDRESSES, is_below, planted

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
