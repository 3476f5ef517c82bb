#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What collectors read (collectors.json) is answered by ipmibd, or stands among what is not; docs/collectors.md says so.

    collectors_test.py [--update] IPMIBD     with --update the tables of the document are written anew
"""
import json
import os
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


def objects_read():
    return {name for collector in data["collectors"] for read in collector["reads"] for name in read["objects"]}


def listed(names):
    return ", ".join(f"`{name}`" for name in names) or "-"


def tables():
    text = ""
    for collector in data["collectors"]:
        text += f"\n## {collector['collector']}\n"
        if collector["reads"]:
            text += "\n| For | Answered | Not answered |\n|---|---|---|\n"
        for read in collector["reads"]:
            answered = [name for name in read["objects"] if name not in data["unanswered"]]
            others = [name for name in read["objects"] if name in data["unanswered"]]
            text += f"| {read['for']} | {listed(answered)} | {listed(others)} |\n"
        if collector["notes"]:
            text += "\n" + "".join(f"- {note}\n" for note in collector["notes"])
    text += "\n## What is not answered\n\n| Object | Why |\n|---|---|\n"
    text += "".join(f"| `{name}` | {reason} |\n" for name, reason in sorted(data["unanswered"].items()))
    return text + "\n"


def with_tables(text):
    before, rest = text.split(BEGIN)
    return before + BEGIN + tables() + END + rest.split(END)[1]


class Collectors(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with Agent(program, "home-router") as agent:
            cls.rows = agent.walk("1.3.6.1")

    def rows_of(self, name):
        place = OUTSIDE.get(name) or catalogue.nodes[name].oid
        for oid, _, text in self.rows:
            if oid[: len(place)] == place:
                yield oid[len(place) :], text

    def test_what_is_read_is_answered_or_said_not_to_be(self):
        for name in objects_read():
            answered = any(True for _ in self.rows_of(name))
            self.assertEqual(answered, name not in data["unanswered"], name)
        self.assertLessEqual(set(data["unanswered"]), objects_read())

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

    def test_the_document_says_the_same(self):
        with open(document, encoding="utf-8") as text:
            told = text.read()
        self.assertEqual(told, with_tables(told), "make docs writes it anew")

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


if __name__ == "__main__":
    if update:
        with open(document, encoding="utf-8") as old:
            new = with_tables(old.read())
        with open(document, "w", encoding="utf-8") as written:
            written.write(new)
        sys.exit(0)
    unittest.main(argv=sys.argv[:1])
