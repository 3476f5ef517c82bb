#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Whatever identifier is asked from, what follows is the next instance of all: GETNEXT and GETBULK find the same ones,
strictly ascending, and GET finds each; on a simulated device, and on Linux in a network namespace. The argument is ipmibd."""
import bisect
import os
import random
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "collectors"))
import network  # noqa: E402
from agent import Agent  # noqa: E402

program = os.path.abspath(sys.argv[-1])
ROOT = (1, 3, 6, 1, 2, 1)
LARGEST = (1 << 32) - 1
QUESTIONS = 500
AT_ONCE = 25  # variables in a packet


def dotted(oid):
    return ".".join(map(str, oid))


def random_identifiers(instances, chance):
    """Before instances, at them, inside, behind, and anywhere."""
    for _ in range(QUESTIONS):
        oid = list(chance.choice(instances))
        place = chance.randrange(len(ROOT), len(oid))
        change = chance.randrange(6)
        if change == 1:
            oid[place] = min(oid[place] + 1, LARGEST)
        elif change == 2:
            oid[place] = max(oid[place] - 1, 0)
        elif change == 3:
            oid[place:] = []
        elif change == 4:
            oid[place] = chance.choice((0, 127, 255, 256, 65536, LARGEST))
        elif change == 5:
            oid += [chance.choice((0, 1, LARGEST)) for _ in range(chance.randrange(1, 20))]
        yield tuple(oid)


class Order:
    """Of one agent; what changes while it is looked at is looked at again."""

    served = None
    configuration = ""

    def look(self):
        """What is wrong, and whether nothing has changed meanwhile."""
        wrong = []
        with Agent(program, self.served, self.configuration) as agent:
            instances = [oid for oid, _, _ in agent.walk(dotted(ROOT))]
            if instances != sorted(set(instances)):
                wrong.append("a walk does not ascend")
            for how in (("snmpwalk", "-Cc"), ("snmpbulkwalk", "-Cc", "-Cr1"), ("snmpbulkwalk", "-Cc", "-Cr7")):
                found = [oid for oid, _, _ in agent.walk(dotted(ROOT), *how)]
                if found != instances:
                    wrong.append(f"{how} finds others: {set(found) ^ set(instances)}, or in another order")
            for begin in range(0, len(instances), AT_ONCE):
                asked = instances[begin : begin + AT_ONCE]
                if [oid for oid, _, _ in agent.rows("snmpget", *map(dotted, asked))] != asked:
                    wrong.append(f"one of these is not got: {asked}")
            identifiers = list(random_identifiers(instances, random.Random(self.served)))
            wanted = {oid: instances[bisect.bisect_right(instances, oid)]
                      for oid in identifiers if oid < instances[-1]}
            asked = list(wanted)
            for begin in range(0, len(asked), AT_ONCE):
                some = asked[begin : begin + AT_ONCE]
                found = [oid for oid, _, _ in agent.rows("snmpgetnext", *map(dotted, some))]
                wrong += [f"behind {dotted(oid)} comes {dotted(next_one)}, not {dotted(wanted[oid])}"
                          for oid, next_one in zip(some, found, strict=True) if next_one != wanted[oid]]
            return wrong, len(instances), instances == [oid for oid, _, _ in agent.walk(dotted(ROOT))]

    def test_what_follows_is_the_next_of_all(self):
        for _ in range(5):
            wrong, number, is_settled = self.look()
            if is_settled:
                break
        self.assertEqual(wrong, [])
        self.assertGreater(number, 300)


class OfASimulatedDevice(Order, unittest.TestCase):
    served = "home-router"


class OfADeviceWhoseServicesFail(Order, unittest.TestCase):
    served = "failing-services"


class OfLinux(Order, unittest.TestCase):
    served = "linux"
    configuration = "serve udpTable off\nserve udpEndpointTable off\n"  # whoever asks has a socket, and it goes

    @classmethod
    def setUpClass(cls):
        if not is_inside:
            raise unittest.SkipTest("needs a network namespace")
        network.make()


if __name__ == "__main__":
    is_inside = network.enter()
    if is_inside:
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    unittest.main(argv=sys.argv[:1])
