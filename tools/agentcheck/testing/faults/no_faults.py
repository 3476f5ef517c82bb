# SPDX-License-Identifier: BSD-3-Clause
"""Agents that are not wrong, and no reason to wait for ever."""
import time

from scripted_agent import ScriptedAgent
from snmp import OID

from .planting import PREFIX, UP_TIME, first_of, is_below, oid


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


class StartsAnew(ScriptedAgent):
    """Counters and sysUpTime begin at 0 again while they are looked at."""

    def value(self, name):
        tag, value = super().value(name)
        is_first_life = self.packets < 20
        starts = name == UP_TIME or is_below(name, "icmpStatsInMsgs")
        return (tag, 10**6 * is_first_life) if starts else (tag, value)


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
