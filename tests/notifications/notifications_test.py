#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What a manager is told of links: every transition, once, in its order, by each way of being an agent.

The arguments are ipmibd and the object for snmpd.
"""
import os
import re
import sys
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from bed import Bed
from receiver import Link, enter_namespace, make_links

enter_namespace()
Bed.snmpd_object = os.path.abspath(sys.argv.pop(2))
Bed.ipmibd = os.path.abspath(sys.argv.pop(1))


class Notifications(Bed):
    @classmethod
    def setUpClass(cls):
        make_links()

    def setUp(self):
        super().setUp()
        self.link = Link("v0")

    def told(self, cycles):
        """As many transitions as that makes, in their order, and no more."""
        self.receiver.wait_for(lambda: len(self.receiver.transitions(self.link.index)) >= 2 * cycles,
                               f"{2 * cycles} transitions")
        self.assertEqual(self.receiver.transitions(self.link.index), ["down", "up"] * cycles)

    def test_every_transition_of_a_thousand(self):
        self.standalone(f"trap2sink {self.receiver.target} public\nlinkNotifications all\n")
        for cycle in range(1, 501):
            self.link.flap()
            if cycle % 10 == 0:  # how much a manager has room for is not the subject
                self.told(cycle)
        self.assertEqual(self.get(f".1.3.6.1.2.1.31.1.1.1.14.{self.link.index}"), "1")
        peer = self.receiver.transitions(Link("v1").index)
        for before, after in zip(peer, peer[1:]):
            self.assertNotEqual(before, after)
        time.sleep(0.2)  # one too many would come now
        self.told(500)

    def test_versions_and_kinds(self):
        """v1, v2c, informs and v3; the start, and who asks with a wrong community."""
        for lines, mark in ((f"trapsink {self.receiver.target} public\n", r"\n2 0 .*2\.2\.1\.1\.\d+ = .*"),
                            (f"informsink {self.receiver.target} public\n", r"\.5\.3\s"),
                            (f"trapsess -v 2c -c public {self.receiver.target}\n", r"\.5\.3\s"),
                            ("trapsess -e 0x8000000001020304 -v 3 -u bob -a SHA -A bobs-passphrase -x AES -X "
                             f"bobs-passphrase -l authPriv {self.receiver.target}\n", r"\.5\.3\s")):
            with self.subTest(lines):
                before = len(self.receiver.text())
                agent = self.standalone(lines + "authtrapenable 1\n")
                self.get("1.3.6.1.2.1.1.3.0", "wrong")
                self.link.flap()
                since = lambda: "\n" + self.receiver.text()[before:]
                self.receiver.wait_for(lambda: re.search(mark, since()), mark)
                cold, denied = ("\n0 0 ", "\n4 0 ") if "trapsink" in lines else (r"\.5\.1\s", r"\.5\.5\s")
                for each in (cold, denied):
                    self.receiver.wait_for(lambda: re.search(each, since()), each)
                agent.close()

    def test_a_link_that_flaps_is_held_back_and_tells_how_it_ends(self):
        self.standalone(f"trap2sink {self.receiver.target} public\nlinkNotifications 4 8\n")
        for _ in range(20):
            self.link.flap()
        self.link.set(False)
        self.receiver.wait_for(lambda: self.receiver.transitions(self.link.index)[-1:] == ["down"] and
                               len(self.receiver.transitions(self.link.index)) >= 5, "the last state")
        told = self.receiver.transitions(self.link.index)
        self.assertLess(len(told), 41)
        for before, after in zip(told, told[1:]):
            self.assertNotEqual(before, after)
        self.link.set(True)

    def test_none_where_they_are_not_wanted(self):
        self.standalone(f"trap2sink {self.receiver.target} public\nlinkNotifications no\n")
        self.assertEqual(self.get(f".1.3.6.1.2.1.31.1.1.1.14.{self.link.index}"), "2")
        self.link.flap()
        self.get("1.3.6.1.2.1.1.3.0")
        self.receiver.wait_for(lambda: re.search(r"\.5\.1\s", self.receiver.text()), "coldStart")
        self.assertEqual(self.receiver.transitions(self.link.index), [])

    def test_through_a_master(self):
        place = self.folder + "/agentx"
        self.snmpd("master", f"master agentx\nagentXSocket {place}\n")
        self.receiver.wait_for(lambda: os.path.exists(place), "the master")
        self.start("", ["-x", place], "sub")
        for _ in range(4):
            self.link.flap()
        self.told(4)

    def test_inside_snmpd(self):
        self.skip_without_object()
        self.snmpd("object", f"dlmod ipmib {self.snmpd_object}\nipmibServe ifXTable take\n")
        self.receiver.wait_for(lambda: self.get(f".1.3.6.1.2.1.31.1.1.1.14.{self.link.index}", retries=5) == "1",
                               "the object serves")
        self.link.flap()
        self.told(1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
