#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Every device of a fleet, as Prometheus' snmp_exporter and netdisco's library SNMP::Info find it, is what the scenario says.

    fleet_test.py [--devices N] IPMIBD      switches of examples/campus.json, 6 of them or so many

The exporter asks each at an address of its own, four at a time, SNMP::Info asks by communities. Says what that took.
"""
import argparse
import concurrent.futures
import ipaddress
import json
import os
import shutil
import socket
import sys
import tempfile
import time
import unittest

import snmp_info
from agent import Agent, free_port, root
from exporter import Exporter

AT_A_TIME = 4
PORTS = 23


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def fleet(devices, port):
    """The switches of the example, each with an address and names of its own."""
    with open(root + "/examples/campus.json", encoding="utf-8") as file:
        switches = next(each for each in json.load(file)["devices"] if "count" in each)
    switches["count"] = devices
    switches["listen"] = f"udp:127.1.{{n/256}}.{{n%256}}:{port}"
    scenario = switches["scenario"]
    scenario["generate"]["interfaces"]["name"] = "port{n}-"
    scenario["interfaces"][0]["addresses"] = [{"address": "2001:db8:ffff::{n}/64"}]
    scenario["interfaces"][0]["neighbours"] = [{"address": "2001:db8:ffff:1::{n}", "mac": "02:00:5e:00:53:01"}]
    return {"devices": [switches]}


class Fleet(unittest.TestCase):
    maxDiff = None
    devices = 6

    @classmethod
    def setUpClass(cls):
        cls.port = free_port(socket.SOCK_DGRAM)
        with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
            json.dump(fleet(cls.devices, cls.port), file)
            file.flush()
            cls.agent = cls.enterClassContext(Agent(cls.program, file.name, "contextcommunity public 127.0.0.1\n"))

    def told(self, who, ask):
        """Calls it and says what it took."""
        begin, before = time.monotonic(), processor_seconds(self.agent.pid)
        result = ask()
        used, seconds = processor_seconds(self.agent.pid) - before, time.monotonic() - begin
        print(f"{who}: {self.devices} devices in {seconds:.1f} s, {used / self.devices * 1000:.0f} ms of ipmibd's "
              "processor time each", flush=True)
        return result

    def names(self, n):
        return {"management", *(f"port{n}-{k}" for k in range(PORTS))}

    def test_the_exporter_finds_each(self):
        if not shutil.which("prometheus-snmp-exporter"):
            self.skipTest("prometheus-snmp-exporter is not installed")
        numbers = range(1, self.devices + 1)
        with Exporter() as exporter, concurrent.futures.ThreadPoolExecutor(AT_A_TIME) as pool:
            def scrape(n):
                return exporter.scrape(f"127.1.{n // 256}.{n % 256}:{self.port}", "ipmib")

            all_told = self.told("snmp_exporter, module ipmib", lambda: list(pool.map(scrape, numbers)))
        for n, told in zip(numbers, all_told):
            with self.subTest(device=n):
                def labels(metric, name):
                    return [dict(labels)[name] for each, labels in told if each == metric]

                self.assertEqual(set(labels("ipv6InterfaceIdentifier", "ifName")), self.names(n))
                addresses = labels("ipAddressOrigin", "ipAddressAddr")
                self.assertIn(f"10.{n // 256}.{n % 256}.1", addresses)
                own = ipaddress.ip_address(f"2001:db8:ffff::{n}").exploded.upper()
                self.assertEqual([each for each in addresses if each.startswith("2001:0DB8:FFFF:")], [own])
                neighbours = labels("ipNetToPhysicalType", "ipNetToPhysicalNetAddress")
                self.assertEqual(len(neighbours), 2 * PORTS + 1)
                own = ipaddress.ip_address(f"2001:db8:ffff:1::{n}").exploded.upper()
                self.assertEqual([each for each in neighbours if each.startswith("2001:0DB8:FFFF:")], [own])

    def test_snmp_info_finds_each(self):
        if not snmp_info.is_installed():
            self.skipTest("libsnmp-info-perl is not installed")
        communities = {n: f"public@access{n}" for n in range(1, self.devices + 1)}
        methods = ["name", "description", "i_name", "ip_index", "ipv6_addr", "ipv6_n2p_addr", "ipv6_n2p_mac"]
        told = self.told("SNMP::Info", lambda: snmp_info.ask(self.agent.target, communities.values(), methods))
        for n, community in communities.items():
            with self.subTest(device=n):
                device = told[community]
                self.assertEqual(device["name"], f"access{n}")
                self.assertEqual(device["description"], "Simulated access switch")
                self.assertEqual(set(device["i_name"].values()), self.names(n))
                self.assertIn(f"10.{n // 256}.{n % 256}.1", device["ip_index"])
                own = ipaddress.ip_address(f"2001:db8:ffff::{n}").exploded
                self.assertEqual([each for each in device["ipv6_addr"].values() if each.startswith("2001:0db8:ffff:")], [own])
                own = ipaddress.ip_address(f"2001:db8:ffff:1::{n}").exploded
                neighbours = {row: each for row, each in device["ipv6_n2p_addr"].items() if each.startswith("2001:0db8:ffff:")}
                self.assertEqual(list(neighbours.values()), [own])
                self.assertEqual([device["ipv6_n2p_mac"][row] for row in neighbours], ["02:00:5e:00:53:01"])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--devices", type=int, default=Fleet.devices)
    parser.add_argument("ipmibd")
    options = parser.parse_args()
    Fleet.devices, Fleet.program = options.devices, os.path.abspath(options.ipmibd)
    unittest.main(argv=sys.argv[:1])
