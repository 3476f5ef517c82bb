#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Prometheus' snmp_exporter with the configuration of examples/collectors/snmp_exporter reads what snmpbulkwalk reads.

    exporter_test.py [--update] IPMIBD      with --update snmp.yml is generated anew
"""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest

import mib_texts
from agent import Agent, free_port, patience, skip
from catalogue import Catalogue
from exporter import folder, scrape

update = "--update" in sys.argv
program = os.path.abspath(sys.argv[-1])
catalogue = Catalogue()


def generated():
    """snmp.yml as the exporter's own generator writes it."""
    with tempfile.TemporaryDirectory() as mibs:
        mib_texts.write(mibs)
        shutil.copy(folder + "/generator.yml", mibs)
        subprocess.run(["prometheus-snmp-generator", "generate"], cwd=mibs, check=True, capture_output=True,
                       env=dict(os.environ, MIBDIRS=mibs, MIBS="ALL"), timeout=patience)
        with open(mibs + "/snmp.yml", encoding="utf-8") as file:
            return file.read()


def address_label(kind, octets):
    """As the exporter writes an InetAddress: it knows IPv4 and IPv6 without a zone."""
    if kind == 1 and len(octets) == 4:
        return ".".join(map(str, octets))
    if kind == 2 and len(octets) == 16:
        return ":".join(f"{octets[i]:02X}{octets[i + 1]:02X}" for i in range(0, 16, 2))
    return "0x" + "".join(f"{number:02X}" for number in (kind, len(octets), *octets))


def labels_of(node, instance, names):
    """The labels that an instance's index becomes."""
    labels = {}
    rest = list(instance)
    kind = None
    for column in catalogue.indexes.get(node.parent.name, []):
        number = rest.pop(0)
        syntax = catalogue.nodes[column].syntax
        if syntax == "InetAddressType":
            kind = number
        elif syntax == "InetAddress":
            labels[column] = address_label(kind, rest[:number])
            rest = rest[number:]
        elif syntax == "InetVersion":
            labels[column] = catalogue.labels(column)[number]
        else:
            labels[column] = str(number)
            if column.endswith("IfIndex"):
                labels["ifName"] = names.get(number, "")
    return labels


def expected(rows, names):
    samples = {}
    for oid, kind, text in rows:
        node, instance = catalogue.object_of(oid)
        if node is None:
            continue
        labels = labels_of(node, instance, names)
        if text == "":  # a link-layer address that is not known, which the exporter shows as six zeros
            labels[node.name] = "00:00:00:00:00:00"
            number = 1
        elif kind == "Hex-STRING":
            octets = text.split()
            labels[node.name] = ":".join(octets) if node.syntax == "PhysAddress" else "0x" + "".join(octets)
            number = 1
        elif kind in ("OID", "IpAddress"):
            labels[node.name] = text.lstrip(".")
            number = 1
        else:
            number = float(text)
        samples[node.name, frozenset(labels.items())] = number
    return samples


class Exporter(unittest.TestCase):
    maxDiff = None

    def test_the_configuration_is_what_its_generator_makes(self):
        with open(folder + "/snmp.yml", encoding="utf-8") as file:
            self.assertEqual(file.read(), generated(), "make docs writes it anew")

    def test_every_table_is_scraped_and_equals_a_walk(self):
        for scenario in ("home-router", "failing-services"):
            with Agent(program, scenario) as agent:
                names = {oid[-1]: bytes.fromhex(text.replace(" ", "")).decode() for oid, _, text in agent.walk("1.3.6.1.2.1.31")
                         if oid[:-1] == catalogue.nodes["ifName"].oid}
                self.assertIn("lan0", names.values())
                wanted = expected(agent.walk("1.3.6.1.2.1"), names)
                told = {module: scrape(agent.target, module) for module in ("ipmib", "ipmib_traffic")}
            names_told = {module: {name for name, _ in samples} for module, samples in told.items()}
            # What the product adds to the module's tables is scraped where the configuration asks for the column.
            names_told["ipmib"] |= {name for name, node in catalogue.nodes.items() if node.of_the_plug_in}
            names_told["ipmib_traffic"] |= {
                name for name in names_told["ipmib"]
                if name.startswith(("ipSystemStats", "ipIfStats", "icmpStats", "icmpMsgStats", "ipv6Interface"))}
            for module, samples in told.items():
                ours = {key: number for key, number in samples.items() if key[0] in catalogue.nodes}
                self.assertEqual(ours, {key: number for key, number in wanted.items() if key[0] in names_told[module]}, module)
            if scenario == "home-router":
                self.assertLessEqual({"inetCidrRouteNumber", "tcpCurrEstab", "udpNoPorts"}, names_told["ipmib_traffic"])
                tables = {catalogue.nodes[name].parent.name for name, _ in wanted if catalogue.nodes[name].of_the_plug_in}
                served = {node.parent.name for node in catalogue.nodes.values() if node.of_the_plug_in}
                self.assertEqual(tables, served)

    def test_connections_are_scraped(self):
        with socket.create_server(("127.0.0.1", 0)) as listener, socket.create_connection(listener.getsockname()) as client:
            with Agent(program, "linux") as agent:
                told = scrape(agent.target, "ipmib_connections")
            listening, own = (end.getsockname()[1] for end in (listener, client))
        rows = {(name, *(dict(labels).get(name.removesuffix("State").removesuffix("Process") + port)
                         for port in ("LocalPort", "RemPort"))): number for (name, labels), number in told.items()}
        established = 5
        self.assertEqual(rows.get(("tcpConnectionState", str(own), str(listening))), established)
        self.assertEqual(rows.get(("tcpConnectionState", str(listening), str(own))), established)
        self.assertIn(("tcpListenerProcess", str(listening), None), rows)
        self.assertIn(("udpEndpointProcess", str(agent.port), None), rows)

    def test_a_context_is_scraped_by_a_module_of_its_own(self):
        """As docs/collectors.md says it is made."""
        scenario = {"devices": [{"name": "switch{n}", "count": 2, "scenario": {
            "interfaces": [{"name": "lan", "addresses": [{"address": "2001:db8::{n}/64"}]}]}}]}
        with tempfile.TemporaryDirectory() as work:
            with open(work + "/devices.json", "w", encoding="utf-8") as file:
                json.dump(scenario, file)
            with open(folder + "/snmp.yml", encoding="utf-8") as file:
                made = re.sub(r"^ipmib", "switch2_ipmib", file.read(), flags=re.M)
            with open(work + "/snmp.yml", "w", encoding="utf-8") as file:
                file.write(made.replace("community: public", "community: lab@switch2"))
            with Agent(program, work + "/devices.json", "contextcommunity lab 127.0.0.1\n") as agent:
                told = scrape(agent.target, "switch2_ipmib", work + "/snmp.yml")
        addresses = {dict(labels)["ipAddressAddr"] for name, labels in told if name == "ipAddressOrigin"}
        self.assertIn("2001:0DB8:0000:0000:0000:0000:0000:0002", addresses)
        self.assertNotIn("2001:0DB8:0000:0000:0000:0000:0000:0001", addresses)

    def test_each_device_of_a_fleet_is_scraped_at_its_own_port(self):
        ports = {n: free_port(socket.SOCK_DGRAM) for n in (1, 2, 3)}
        devices = [{"name": f"switch{n}", "listen": f"udp:127.0.0.1:{port}",
                    "scenario": {"interfaces": [{"name": f"port{n}", "addresses": [{"address": f"2001:db8:ffff::{n}/64"}]}],
                                 "generate": {"interfaces": {"count": n, "name": "lan"}, "neighbours": n}}} for n, port in ports.items()]
        with tempfile.TemporaryDirectory() as directory:
            with open(directory + "/fleet.json", "w", encoding="utf-8") as file:
                json.dump({"devices": devices}, file)
            with Agent(program, file.name, "contextcommunity public 127.0.0.1\n") as agent:
                for n, port in ports.items():
                    walked = agent.rows("snmpbulkwalk", "-Cr50", f"-cpublic@switch{n}", "1.3.6.1.2.1")
                    names = {oid[-1]: bytes.fromhex(text.replace(" ", "")).decode() for oid, _, text in walked
                             if oid[:-1] == catalogue.nodes["ifName"].oid}
                    self.assertIn(f"port{n}", names.values())
                    wanted = {key: number for key, number in expected(walked, names).items()
                              if catalogue.nodes[key[0]].of_the_plug_in}
                    told = scrape(f"127.0.0.1:{port}", "ipmib")
                    self.assertGreater(len(wanted), 0)
                    self.assertEqual({key: told.get(key) for key in wanted}, wanted)


if __name__ == "__main__":
    for tool in ("prometheus-snmp-exporter", "prometheus-snmp-generator"):
        if not shutil.which(tool):
            skip(tool + " is not installed")
    if update:
        with open(folder + "/snmp.yml", "w", encoding="utf-8") as made:
            made.write(generated())
        sys.exit(0)
    unittest.main(argv=sys.argv[:1])
