#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What a manager is told of the links of contexts: of each its own, by a community or context name that tells which.

The arguments are ipmibd and the object for snmpd.
"""
import json
import os
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from bed import Bed
from receiver import Link, enter_namespace, patience

index = 77  # of the link in every namespace


def work_in_namespace():
    """The other side of Namespace."""
    subprocess.run(["ip", "link", "add", "v0", "index", str(index), "type", "veth", "peer", "name", "v1"], check=True)
    subprocess.run(["ip", "link", "set", "v1", "up"], check=True)
    subprocess.run(["ip", "link", "set", "v0", "up"], check=True)
    link = Link("v0")
    link.wait_running()
    print("ready", flush=True)
    for line in sys.stdin:
        for _ in range(int(line)):
            link.flap()
        print("done", flush=True)


if sys.argv[1:] == ["namespace"]:
    work_in_namespace()
    sys.exit(0)

enter_namespace()
Bed.snmpd_object = os.path.abspath(sys.argv.pop(2))
Bed.ipmibd = os.path.abspath(sys.argv.pop(1))
subprocess.run(["ip", "link", "set", "lo", "up"], check=True)


class Namespace:
    """A network namespace with one link that goes up and down."""

    def __init__(self):
        self._process = subprocess.Popen(["unshare", "-n", sys.executable, os.path.abspath(__file__), "namespace"],
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        assert self._process.stdout.readline() == "ready\n"
        self.path = f"/proc/{self._process.pid}/ns/net"

    def begin(self, count):
        self._process.stdin.write(f"{count}\n")
        self._process.stdin.flush()

    def end(self):
        assert self._process.stdout.readline() == "done\n"

    def flap(self, count):
        self.begin(count)
        self.end()

    def close(self):
        self._process.stdin.close()
        self._process.wait(patience)
        self._process.stdout.close()


class Contexts(Bed):
    def namespaces(self, *names):
        made = {name: Namespace() for name in names}
        for each in made.values():
            self.addCleanup(each.close)
        return made, "".join(f"context {name} netns {each.path}\n" for name, each in made.items())

    def told(self, wanted):
        """These of each right, and no more."""
        self.receiver.wait_for(lambda: sum(map(len, self.receiver.by_right(index).values())) >= sum(map(len, wanted.values())),
                               f"{wanted}")
        self.assertEqual(self.receiver.by_right(index), wanted)

    def test_links_of_the_same_number_in_two_namespaces(self):
        """Each transition once and in its order, also when both change at the same time; and after a SIGHUP."""
        made, lines = self.namespaces("red", "blue")
        target = self.receiver.target
        agent = self.standalone(lines + "linkNotifications all\ncontextcommunity lab 127.0.0.1\n"
                                f"trap2sink {target} lab\ninformsink {target} lab@blue\ntrap2sink {target} public\n"
                                "trapsess -e 0x8000000001020304 -v 3 -u bob -a SHA -A bobs-passphrase -x AES -X "
                                f"bobs-passphrase -l authPriv {target}\n")
        count = 0
        wanted = {}

        def has_told(more):
            nonlocal count
            count += more
            changes = ["down", "up"] * count
            wanted.update({"SNMP v2c, community lab@red": changes, "SNMP v2c, community lab@blue": changes * 2,
                           "SNMP v3, user bob, context red": changes, "SNMP v3, user bob, context blue": changes})
            self.receiver.wait_for(lambda: sum(map(len, self.receiver.by_right(index).values())) >= 2 * 5 * count, "all")
            told = self.receiver.by_right(index)
            # Informs and traps of the same, which come by different ways.
            self.assertEqual(sorted(told.pop("SNMP v2c, community lab@blue")), sorted(changes * 2))
            self.assertEqual(told, {right: each for right, each in wanted.items() if right != "SNMP v2c, community lab@blue"})

        for _ in range(10):  # how much a manager has room for is not the subject
            for each in made.values():
                each.begin(5)
            for each in made.values():
                each.end()
            has_told(5)
        ready = os.path.getsize(f"{self.folder}/log-ipmibd")
        agent.process.send_signal(signal.SIGHUP)

        def has_read():
            with open(f"{self.folder}/log-ipmibd", encoding="utf-8") as log:
                log.seek(ready)
                return "reading the configuration again" in log.read()

        self.receiver.wait_for(has_read, "the configuration is read again")
        self.get("1.3.6.1.2.1.1.3.0")
        made["red"].flap(1)
        made["blue"].flap(1)
        has_told(1)
        self.assertNotIn("SNMP v2c, community public", self.receiver.by_right(index))

    def test_an_ended_context_tells_nothing_and_one_that_flaps_holds_back_no_other(self):
        made, lines = self.namespaces("red", "blue")
        self.standalone(lines + "linkNotifications 4 3600\ncontextcommunity lab 127.0.0.1 red\n"
                        "com2sec -Cn blue askBlue default forblue\n"
                        f"trap2sink {self.receiver.target} lab\ntrapsink {self.receiver.target} lab\n"
                        f"trap2sink {self.receiver.target} forblue\n")
        made["red"].flap(20)
        made["blue"].flap(1)
        self.told({"SNMP v2c, community lab@red": ["down", "up"] * 2, "SNMP v2c, community forblue": ["down", "up"]})
        self.assertRegex(self.receiver.text(), r"\n2 0 .*\.2\.2\.1\.1\.77 = .* TRAP, SNMP v1, community lab@red\n")

    def test_devices_of_a_scenario_tell_by_their_own_clocks(self):
        """Without a question, each with a sysUpTime of its own."""
        with open(self.folder + "/fleet.json", "w", encoding="utf-8") as file:
            json.dump({"interfaces": [{"name": "own", "ifIndex": index}],
                       "devices": [{"name": "quiet", "scenario": {"interfaces": [{"name": "a", "ifIndex": index}]}},
                                   {"name": "line{n}", "count": 3, "scenario": {
                                       "uptime": 86400, "interfaces": [{"name": "a", "ifIndex": index, "down": [
                                           {"from": 1, "to": 1.2}, {"from": 1.5, "to": 1.6}]}]}}]}, file)
        self.standalone(f"contextcommunity lab 127.0.0.1\ntrap2sink {self.receiver.target} lab\n",
                        ["--platform", "simulated:" + file.name])
        self.told({f"SNMP v2c, community lab@line{n}": ["down", "up"] * 2 for n in (1, 2, 3)})
        uptimes = [line for line in self.receiver.text().splitlines() if ".5.3\t" in line and "(86401" in line]
        self.assertGreater(len(uptimes), 0, self.receiver.text())

    def test_through_a_master(self):
        made, lines = self.namespaces("red", "blue")
        place = self.folder + "/agentx"
        self.snmpd("master", f"master agentx\nagentXSocket {place}\n"
                   "trapsess -e 0x8000000001020304 -v 3 -u bob -a SHA -A bobs-passphrase -x AES -X bobs-passphrase "
                   f"-l authPriv {self.receiver.target}\n")
        self.receiver.wait_for(lambda: os.path.exists(place), "the master")
        self.start(lines, ["-x", place], "sub")
        made["red"].flap(2)
        made["blue"].flap(1)
        self.beside_snmpd()

    def test_inside_snmpd(self):
        self.skip_without_object()
        made, lines = self.namespaces("red", "blue")
        self.snmpd("object", f"dlmod ipmib {self.snmpd_object}\nipmibServe ifXTable take\nipmibContextCommunity lab\n"
                   + lines.replace("context ", "ipmibContext ") +
                   "trapsess -e 0x8000000001020304 -v 3 -u bob -a SHA -A bobs-passphrase -x AES -X bobs-passphrase "
                   f"-l authPriv {self.receiver.target}\n")
        self.receiver.wait_for(lambda: self.get(f".1.3.6.1.2.1.31.1.1.1.14.{index}", "lab@blue", retries=5) == "1",
                               "the object serves")
        made["red"].flap(2)
        made["blue"].flap(1)
        self.beside_snmpd()

    def beside_snmpd(self):
        """It knows no communities of contexts; each notification has the name of its context."""
        self.told({"SNMP v3, user bob, context red": ["down", "up"] * 2, "SNMP v3, user bob, context blue": ["down", "up"],
                   "SNMP v2c, community public": ["down", "up"] * 3})
        for name, count in (("red", 4), ("blue", 2)):
            octets = ".".join(map(str, [len(name), *name.encode()]))
            named = [line for line in self.receiver.text().splitlines()
                     if f".2.2.1.1.{index} = " in line and f".1.3.6.1.6.3.16.1.1.1.1.{octets} = " in line]
            self.assertEqual(len(named), 2 * count)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
