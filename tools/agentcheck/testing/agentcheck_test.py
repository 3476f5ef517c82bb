#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""ipmib-agentcheck finds nothing wrong with an agent that is right, and names each fault that is planted. The arguments are
ipmibd and ipmib-agentcheck."""
import json
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "tests", "collectors"))
import faults  # noqa: E402
from agent import Agent, patience  # noqa: E402
from faults import no_faults  # noqa: E402
from scripted_agent import ScriptedAgent  # noqa: E402
from snmp import INTEGER, record  # noqa: E402

ipmibd, agentcheck = map(os.path.abspath, sys.argv[-2:])
values = {}
columns = set()


def check(agent, *words, seconds="0.5", retries="9"):
    """The exit status, what was found, and what is on the other output."""
    result = subprocess.run([agentcheck, "--json", "--rate=1000000", "--settle=0.02", "-v2c", "-cpublic", "-t", seconds, "-r", retries, *words,
                             f"127.0.0.1:{agent.port}"], capture_output=True, text=True, timeout=600, check=False)
    assert result.returncode in (0, 1, 3), result.stderr
    return result.returncode, json.loads(result.stdout), result.stderr


class Agentcheck(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with Agent(ipmibd, "home-router") as agent:
            values.update(record(agent.port, (1, 3, 6, 1, 2, 1)))
        columns.update(node.oid for node in faults.catalogue.nodes.values() if node.access.startswith("READ"))

    def test_nothing_is_wrong_with_a_right_one(self):
        with ScriptedAgent(values, columns) as agent:
            for version in ("-v2c", "-v1"):
                status, found, errors = check(agent, version, "--write")
                self.assertEqual((status, found["findings"], errors), (0, [], ""))
                self.assertIn("ipAddressTable: 10 rows", found["facts"])

    def test_each_fault_is_named(self):
        for title, kind, rule, where, tables in faults.FAULTS:
            with self.subTest(title), kind(values, columns) as agent:
                write = ["--write"] if rule in ("notWritable", "written") else []
                status, found, _ = check(agent, "--tables=" + tables, *write)
                told = [(finding["rule"], finding["name"]) for finding in found["findings"]]
                self.assertEqual(status, 1)
                self.assertTrue(any(each[0] == rule and each[1].startswith(where) for each in told), (rule, told))
                self.assertEqual({each for each, _ in told}, {rule} | faults.CONSEQUENCES.get(title, set()))

    def test_there_are_rules_for_all_faults_and_faults_for_all_rules(self):
        text = subprocess.run([agentcheck, "--rules"], capture_output=True, text=True, check=True).stdout
        rules = [line.split(":")[0] for line in text.splitlines() if not line.startswith(" ")]
        self.assertEqual(set(rules), {rule for _, _, rule, _, _ in faults.FAULTS})

    def test_late_and_repeated_answers_are_no_fault(self):
        for kind in (no_faults.Twice, no_faults.Late):
            with self.subTest(kind.__name__), kind(values, columns) as agent:
                self.assertEqual(check(agent, "--tables=ipAddressTable", seconds="0.2", retries="20")[1]["findings"], [])

    def test_a_peer_is_no_fault(self):
        with no_faults.APeer(values, columns) as agent:
            self.assertEqual(check(agent, "--tables=ipAddressTable,ipAddressPrefixTable")[1]["findings"], [])

    def test_a_new_start_is_no_fault(self):
        with no_faults.StartsAnew(values, columns) as agent:
            found = check(agent, "--tables=icmpStatsTable")[1]
            self.assertEqual(found["findings"], [])
            self.assertTrue(any("started anew" in fact for fact in found["facts"]), found["facts"])

    def test_what_fits_together_later_is_no_fault(self):
        with no_faults.RemembersOneTableLonger(values, columns) as agent:
            self.assertEqual(check(agent, "--tables=interfaces,ifTable", "--settle=0.5")[1]["findings"], [])

    def test_an_agent_that_falls_silent_is_told_of(self):
        for kind in (no_faults.Silence, no_faults.Chatter):
            with self.subTest(kind.__name__), kind(values, columns) as agent:
                status, found, errors = check(agent, retries="2")
                self.assertEqual(status, 3)
                self.assertIn("no longer answers", errors)
                self.assertEqual([finding["rule"] for finding in found["findings"]], ["answered"])

    def test_where_there_is_no_agent_there_are_no_findings(self):
        for kind in (no_faults.FromTheBeginning, no_faults.Rubbish):
            with self.subTest(kind.__name__), kind(values, columns) as agent:
                status, found, errors = check(agent, retries="2")
                self.assertEqual((status, found["findings"]), (3, []))
                self.assertIn("does not answer", errors)

    def test_nothing_is_written_unless_it_may_be(self):
        class Watched(ScriptedAgent):
            writes = 0

            def set(self, name, tag, value):
                self.writes += 1
                return super().set(name, tag, value)

        for words, is_written in (((), False), (("--write",), True)):
            with Watched(values, columns) as agent:
                check(agent, "--tables=ifTable,ifXTable", *words)
                self.assertEqual(agent.writes > 0, is_written)

    def test_what_would_delete_a_row_is_not_written(self):
        class Watched(ScriptedAgent):
            written = []

            def change(self):
                for column, order in (("tcpConnState", 12), ("ipAddressRowStatus", 6)):
                    self.values[faults.first_of(self.values, column)] = (INTEGER, order)

            def set(self, name, tag, value):
                self.written.append(name)
                return super().set(name, tag, value)

        with Watched(values, columns) as agent:
            check(agent, "--tables=tcpConnTable,ipAddressTable", "--write")
            self.assertNotEqual(agent.written, [])
            self.assertFalse(any(faults.is_below(name, "tcpConnState", "ipAddressRowStatus") for name in agent.written))

    def test_rows_are_bounded(self):
        with ScriptedAgent(values, columns) as agent:
            status, found, _ = check(agent, "--rows=3")
            self.assertEqual((status, found["findings"]), (0, []))
            self.assertIn("ifTable: the first 3 rows, more were not looked at (--rows)", found["facts"])

    def test_mistakes_on_the_command_line(self):
        for words in ([], ["--tables=nobody", "x"], ["--rows=0", "x"], ["--rate=fast", "x"], ["--settle=-1", "x"], ["--unknown", "x"],
                      ["-v4", "x"], ["-v2c", "-cpublic", "x", "y"], ["x", "--rows"]):
            with self.subTest(words):
                result = subprocess.run([agentcheck, *words], capture_output=True, text=True, timeout=patience, check=False)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertNotEqual(result.stderr, "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
