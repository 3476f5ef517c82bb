#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What collectors read (collectors.json) is answered by ipmibd, or stands among what is not; docs/collectors.md says so.

    collectors_test.py [--update] IPMIBD     with --update the tables of the document are written anew
"""
import json
import os
import subprocess
import sys
import unittest

from agent import Agent, root
from catalogue import Catalogue
from mib_texts import OUTSIDE

update = "--update" in sys.argv
program = os.path.abspath(sys.argv[-1])
document = root + "/docs/collectors.md"
catalogue = Catalogue()
BEGIN, END = "<!-- from tests/collectors/collectors.json -->\n", "<!-- end -->\n"
IPV4, IPV6, IPV6Z = 1, 2, 4  # kinds of addresses in an index

with open(root + "/tests/collectors/collectors.json", encoding="utf-8") as file:
    data = json.load(file)


MIB_2 = (1, 3, 6, 1, 2, 1)


def place_of(name):
    """Of an object of the catalogue, of the system group, or of what other agents have beside us."""
    if name in data["beside"]:
        return MIB_2 + tuple(map(int, data["beside"][name].split(".")))
    return OUTSIDE.get(name) or catalogue.nodes[name].oid


def objects_read():
    return {name for collector in data["collectors"] for read in collector["reads"] for name in read["objects"]}


def facts_of_all_ways():
    """What each way answers of what is read: pairs of an object and of a version of IP where there are several. None
    when this machine cannot tell."""
    roots = [MIB_2 + (group,) for group in (1, 2, 4, 5, 6, 7, 31)] + [place_of(name) for name in sorted(data["beside"])]
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "beside_snmpd.py")
    done = subprocess.run(["unshare", "-rn", script, program, *(".".join(map(str, place)) for place in roots)],
                          capture_output=True, text=True, timeout=300, check=False)
    if done.returncode != 0:
        print(done.stderr, file=sys.stderr)
        return None
    names = {place_of(name): name for name in objects_read()}

    def fact(instance):
        oid = tuple(map(int, instance.split(".")))
        name = next((names[oid[:length]] for length in range(len(oid), 6, -1) if oid[:length] in names), None)
        return name and (name, catalogue.version(oid))

    return {way: {fact(instance) for instance in instances} - {None}
            for way, instances in json.loads(done.stdout).items()}


def listed(names):
    return ", ".join(f"`{name}`" for name in names) or "-"


def told(facts):
    """Objects, and of which version, when only one of two is meant."""
    versions = {}
    for name, version in facts:
        versions.setdefault(name, set()).add(version)
    return ", ".join(f"`{name}`" + (f" (IPv{min(found)})" if len(found) == 1 and None not in found else "")
                     for name, found in sorted(versions.items())) or "-"


def tables(ways):
    everywhere = set().union(*ways.values())
    text = ""
    for collector in data["collectors"]:
        text += f"\n## {collector['collector']}\n"
        if collector["reads"]:
            text += "\n| For | Objects | Asked | snmpd | snmpd with ipmibd | ipmibd |\n|---|---|--:|--:|--:|--:|\n"
        for read in collector["reads"]:
            asked = {fact for fact in everywhere if fact[0] in read["objects"]}
            asked |= {(name, None) for name in read["objects"] if not any(fact[0] == name for fact in asked)}
            counts = " | ".join(str(len(asked & ways[way])) for way in ("snmpd", "beside", "ipmibd"))
            text += f"| {read['for']} | {listed(read['objects'])} | {len(asked)} | {counts} |\n"
        if collector["notes"]:
            text += "\n" + "".join(f"- {note}\n" for note in collector["notes"])
    text += "\n## What ipmibd adds to snmpd, of what they read\n\n" + told(ways["beside"] - ways["snmpd"]) + "\n"
    text += "\n## What snmpd has of it and loses beside ipmibd\n\n" + told(ways["snmpd"] - ways["beside"]) + "\n"
    text += "\n## What snmpd has of it and ipmibd alone has not\n\n" + told(ways["snmpd"] - ways["ipmibd"]) + "\n"
    text += "\n## What ipmibd alone does not answer\n\n| Object | Why |\n|---|---|\n"
    text += "".join(f"| `{name}` | {reason} |\n" for name, reason in sorted(data["unanswered"].items()))
    return text + "\n"


def with_tables(text, ways):
    before, rest = text.split(BEGIN)
    return before + BEGIN + tables(ways) + END + rest.split(END)[1]


class Collectors(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with Agent(program, "home-router") as agent:
            cls.rows = agent.walk("1.3.6.1")

    def rows_of(self, name):
        place = place_of(name)
        for oid, _, text in self.rows:
            if oid[: len(place)] == place:
                yield oid[len(place) :], text

    def test_the_catalogue_is_what_the_product_describes(self):
        tool = os.path.join(os.path.dirname(os.path.dirname(program)), "bin", "ipmibctl")
        scenario = f"simulated:{root}/examples/home-router.json"
        tree = json.loads(subprocess.run([tool, "tree", "--json", "--platform", scenario], stdout=subprocess.PIPE,
                                         check=True, timeout=60).stdout)
        self.assertEqual({(node["object"], node["oid"]) for node in tree},
                         {(node.name.replace("_", "-"), ".".join(map(str, node.oid))) for node in catalogue.nodes.values()})
        self.assertFalse(set(data["beside"]) & set(catalogue.nodes))

    def test_every_interface_that_a_row_names_is_there_to_join_with(self):
        known = {instance[0] for instance, _ in self.rows_of("ifIndex")}
        self.assertEqual(known, {2, 3, 4, 5})
        named = {int(text) for _, text in self.rows_of("ipAddressIfIndex")}
        named |= {int(text) for _, text in self.rows_of("ipAdEntIfIndex")}
        for name, place in (("ipNetToPhysicalState", 0), ("ipNetToMediaType", 0), ("ipAddressPrefixOrigin", 0),
                            ("ipIfStatsHCInOctets", 1),
                            ("ipDefaultRouterLifetime", -1), ("ipv6InterfaceEnableStatus", 0),
                            ("ipv6RouterAdvertSendAdverts", 0)):
            named |= {instance[place] for instance, _ in self.rows_of(name)}
        self.assertLessEqual(named, known)

    def test_addresses_in_an_index_have_the_length_of_their_type(self):
        found = set()
        for name, place in (("ipAddressIfIndex", 0), ("ipNetToPhysicalPhysAddress", 1), ("ipAddressPrefixOrigin", 1),
                            ("ipDefaultRouterLifetime", 0)):
            for instance, _ in self.rows_of(name):
                kind, length = instance[place : place + 2]
                self.assertEqual(length, {IPV4: 4, IPV6: 16, IPV6Z: 20}[kind])
                found.add((name, kind))
        self.assertEqual(len(found), 11)  # the IPv6 default router has a link-local address alone

    def test_an_address_points_to_an_instance_of_its_prefix_that_ends_with_the_length(self):
        prefixes = {catalogue.nodes["ipAddressPrefixOrigin"].oid + instance
                    for instance, _ in self.rows_of("ipAddressPrefixOrigin")}
        pointers = [tuple(map(int, text.lstrip(".").split("."))) for _, text in self.rows_of("ipAddressPrefix")]
        self.assertEqual(len(pointers), 10)
        self.assertLessEqual(set(pointers), prefixes)
        self.assertEqual(sorted(pointer[-1] for pointer in pointers), [10, 10, 24, 24, 25, 25, 26, 64, 64, 64])


class BesideSnmpd(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.ways = facts_of_all_ways()
        if cls.ways is None:
            raise unittest.SkipTest("needs snmpd, and a network namespace")

    def test_what_is_read_is_answered_or_said_not_to_be(self):
        answered = {name for name, _ in self.ways["ipmibd"]}
        self.assertEqual(objects_read() - answered, set(data["unanswered"]))

    def test_nothing_is_lost_beside_snmpd(self):
        self.assertEqual(self.ways["snmpd"] - self.ways["beside"], set())

    def test_the_document_says_the_same(self):
        with open(document, encoding="utf-8") as text:
            said = text.read()
        self.assertEqual(said, with_tables(said, self.ways), "make docs writes it anew")


if __name__ == "__main__":
    if update:
        ways_now = facts_of_all_ways()
        if ways_now is None:
            sys.exit("collectors_test.py: needs snmpd, and a network namespace")
        with open(document, encoding="utf-8") as old:
            new = with_tables(old.read(), ways_now)
        with open(document, "w", encoding="utf-8") as written:
            written.write(new)
        sys.exit(0)
    unittest.main(argv=sys.argv[:1])
