#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""netdisco's library SNMP::Info finds the addresses, prefixes and neighbours that snmpbulkwalk finds. The argument is
ipmibd."""
import ipaddress
import os
import sys
import unittest

import snmp_info
from agent import Agent, skip
from catalogue import Catalogue

program = os.path.abspath(sys.argv[-1])
catalogue = Catalogue()
METHODS = ["ipv6_n2p_mac", "ipv6_n2p_addr", "ipv6_n2p_if", "ipv6_n2p_type", "ipv6_n2p_state", "ipv6_index", "ipv6_type",
           "ipv6_pfx_origin", "ipv6_addr_prefix", "ipv6_addr_prefixlength", "ipv6_addr", "interfaces", "i_name",
           "i_description", "i_up", "i_mac", "name", "description", "uptime", "device_type",
           "ip_index", "ip_netmask"]


def dotted(numbers):
    return ".".join(map(str, numbers))


def address(octets):
    return ipaddress.IPv6Address(bytes(octets)).exploded


class Column(dict):
    """An object's values by instance, of rows whose address is a plain one: the library passes over zones."""

    def __init__(self, rows, name, place):
        super().__init__()
        for oid, _, text in rows:
            node, instance = catalogue.object_of(oid)
            if node is not None and node.name == name and instance[place] == 2:
                self[dotted(instance)] = text

    def labelled(self, name):
        labels = catalogue.labels(name)
        return {row: labels[int(text)] for row, text in self.items()}


class SnmpInfo(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with Agent(program, "home-router") as agent:
            cls.rows = agent.walk("1.3.6.1.2.1")
            cls.told = snmp_info.ask(agent.target, ["public"], METHODS)["public"]

    def column(self, name, place):
        column = Column(self.rows, name, place)
        self.assertGreater(len(column), 2)
        return column

    def test_neighbours(self):
        macs = self.column("ipNetToPhysicalPhysAddress", 1)
        self.assertEqual(self.told["ipv6_n2p_mac"], {row: text.replace(" ", ":").lower() for row, text in macs.items()})
        for method, name in (("ipv6_n2p_type", "ipNetToPhysicalType"), ("ipv6_n2p_state", "ipNetToPhysicalState")):
            self.assertEqual(self.told[method], self.column(name, 1).labelled(name))
        parts = {row: list(map(int, row.split("."))) for row in macs}
        self.assertEqual(self.told["ipv6_n2p_if"], {row: str(numbers[0]) for row, numbers in parts.items()})
        self.assertEqual(self.told["ipv6_n2p_addr"], {row: address(numbers[3:]) for row, numbers in parts.items()})

    def test_addresses(self):
        self.assertEqual(self.told["ipv6_index"], self.column("ipAddressIfIndex", 0))
        self.assertEqual(self.told["ipv6_type"], self.column("ipAddressType", 0).labelled("ipAddressType"))
        self.assertEqual(self.told["ipv6_addr"],
                         {row: address(map(int, row.split(".")[2:])) for row in self.column("ipAddressIfIndex", 0)})

    def test_an_address_leads_to_its_prefix_and_its_length(self):
        origins = self.column("ipAddressPrefixOrigin", 1)
        self.assertEqual(self.told["ipv6_pfx_origin"], origins.labelled("ipAddressPrefixOrigin"))
        self.assertEqual(set(self.told["ipv6_addr_prefix"]), set(self.told["ipv6_addr"]))
        for row, prefix in self.told["ipv6_addr_prefix"].items():
            self.assertIn(prefix, origins)
            *_, length = prefix.split(".")
            self.assertEqual(self.told["ipv6_addr_prefixlength"][row], length)
            network = address(map(int, prefix.split(".")[3:19]))
            self.assertIn(ipaddress.ip_address(self.told["ipv6_addr"][row]), ipaddress.ip_network(f"{network}/{length}"))

    def test_ipv4_addresses(self):
        self.assertEqual(self.told["ip_index"], {"192.0.2.1": "3", "192.0.2.129": "5", "203.0.113.53": "2"})
        self.assertEqual(self.told["ip_netmask"]["192.0.2.129"], "255.255.255.192")

    def test_interfaces_to_join_with(self):
        names = {"2": "wan0", "3": "lan0", "4": "guest0", "5": "iptv0"}
        self.assertEqual(self.told["i_name"], names)
        self.assertEqual(set(self.told["interfaces"]), set(names))
        self.assertEqual(self.told["i_description"], names)
        self.assertEqual(self.told["i_mac"]["3"], "02:00:5e:00:53:02")
        self.assertEqual((self.told["i_up"]["3"], self.told["i_up"]["4"]), ("up", "down"))
        self.assertLessEqual(set(self.told["ipv6_n2p_if"].values()) | set(self.told["ipv6_index"].values()), set(names))
        for word in ("name", "description", "uptime"):
            self.assertTrue(self.told[word])
        self.assertEqual(self.told["device_type"], "SNMP::Info::Layer3::NetSNMP")  # a class with the IPv6 methods


if __name__ == "__main__":
    if not snmp_info.is_installed():
        skip("libsnmp-info-perl is not installed")
    unittest.main(argv=sys.argv[:1])
