#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What the configurations in examples/collectors ask for is served, and by the names that they use. The argument is
ipmibd."""
import json
import os
import re
import sys
import tomllib
import unittest

from agent import Agent, root
from catalogue import Catalogue

program = os.path.abspath(sys.argv[-1])
folder = root + "/examples/collectors/"
catalogue = Catalogue()
OF_CONNECTIONS = {"tcpConnectionState"}  # those of this machine are scraped by exporter_test.py


def read(name):
    with open(folder + name, encoding="utf-8") as file:
        return file.read()


def numbers(text):
    return tuple(map(int, text.split(".")))


def every(value, key):
    """All values of this key, at any depth."""
    if isinstance(value, dict):
        for name, inner in value.items():
            if name == key:
                yield inner
            yield from every(inner, key)
    elif isinstance(value, list):
        for inner in value:
            yield from every(inner, key)


class Configurations(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with Agent(program, "home-router") as agent:
            cls.rows = [oid for oid, _, _ in agent.walk("1.3.6.1")]

    def assertServed(self, oid):
        self.assertTrue(any(row[: len(oid)] == oid for row in self.rows), oid)

    def test_telegraf(self):
        snmp = tomllib.loads(read("telegraf.conf"))["inputs"]["snmp"][0]
        fields = snmp["field"] + [field for table in snmp["table"] for field in table["field"]]
        self.assertGreater(len(fields), 20)
        for field in fields:
            oid = numbers(field["oid"])
            self.assertServed(oid)
            self.assertEqual(catalogue.object_of(oid)[0].name, field["name"])
        for table in snmp["table"]:
            entries = {catalogue.object_of(numbers(field["oid"]))[0].parent.name for field in table["field"]}
            self.assertEqual(entries, {table["name"] + "Entry"})

    def test_zabbix(self):
        exported = json.loads(read("zabbix-template.json"))["zabbix_export"]
        oids = [oid for text in every(exported, "snmp_oid") for oid in re.findall(r"1\.3\.6\.[0-9.]*[0-9]", text)]
        self.assertGreater(len(oids), 15)
        for oid in oids:
            self.assertServed(numbers(oid))
        for kind in ("uuid", "key"):
            values = list(every(exported, kind))
            self.assertEqual(len(values), len(set(values)))
        for uuid in every(exported, "uuid"):
            self.assertRegex(uuid, "^[0-9a-f]{12}4[0-9a-f]{3}[89ab][0-9a-f]{15}$")

    def test_grafana_asks_for_series_that_the_exporter_tells(self):
        names = set(re.findall(r"^  - name: (\w+)$", read("snmp_exporter/snmp.yml"), re.M))
        labels = set(re.findall(r"labelname: (\w+)$", read("snmp_exporter/snmp.yml"), re.M))
        dashboard = json.loads(read("grafana-dashboard.json"))
        expressions = list(every(dashboard, "expr"))
        self.assertGreater(len(expressions), 15)
        told = set()
        for expression in expressions:
            for series, selectors in re.findall(r"(\w+)\{([^}]*)\}", expression):
                told.add(series)
                self.assertIn(series, names)
                if series not in OF_CONNECTIONS:
                    self.assertServed(catalogue.nodes[series].oid)
                used = set(re.findall(r"(\w+)=", selectors))
                self.assertLessEqual(used, labels | {"instance", "context"})
        for legend in every(dashboard, "legendFormat"):
            self.assertLessEqual(set(re.findall(r"\{\{(\w+)\}\}", legend)), labels | {"state", "instance", "context"})
        identifiers = list(every(dashboard["panels"], "id"))
        self.assertEqual(len([each for each in identifiers if isinstance(each, int)]), len(dashboard["panels"]))
        self.assertGreater(len(told), 12)
        # Both versions of IP, contexts, routes and connections.
        self.assertLessEqual({"inetCidrRouteNumber", "inetCidrRouteDiscards", "tcpConnectionState", "udpNoPorts"}, told)
        self.assertEqual([each["name"] for each in dashboard["templating"]["list"]],
                         ["datasource", "device", "context", "version"])

    def test_prometheus_names_modules_that_there_are(self):
        modules = set(re.findall(r"^(\w+):$", read("snmp_exporter/snmp.yml"), re.M))
        self.assertEqual(set(re.findall(r"module: \[(\w+)\]", read("snmp_exporter/prometheus.yml"))), modules)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
