#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""The alert rules of examples/collectors/snmp_exporter are Prometheus' language, fire when they should, and are about series
that the exporter tells."""
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from agent import root, skip

folder = root + "/examples/collectors/snmp_exporter/"
tests = root + "/tests/collectors/alerts.yml"
# Prometheus' own series, and what annotations and functions are named.
OF_PROMETHEUS = {"up"}


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def promtool(*words):
    result = subprocess.run(["promtool", *words], capture_output=True, text=True)
    return result.returncode, result.stdout + result.stderr


def neighbours(count, address):
    return "".join(f"""
      - series: 'ipNetToPhysicalState{{instance="a", ipNetToPhysicalNetAddress="{address(number)}"}}'
        values: '1x30'""" for number in range(count))


class Alerts(unittest.TestCase):
    def test_rules_and_the_configuration_that_names_them_are_good(self):
        for words in (("check", "rules", folder + "alerts.yml"), ("check", "config", folder + "prometheus.yml")):
            status, text = promtool(*words)
            self.assertEqual(status, 0, text)

    def test_rules_fire_when_they_should(self):
        status, text = promtool("test", "rules", tests)
        self.assertEqual(status, 0, text)

    def test_neighbours_are_counted_by_family(self):
        """Hundreds of series, so that they are written here."""
        test = f"""
rule_files: [{folder}alerts.yml]
tests:
  - interval: 1m
    input_series:{neighbours(850, lambda n: f"192.0.{n // 256}.{n % 256}")}{neighbours(1020, lambda n: f"2001:0DB8:0:0:0:0:0:{n:04X}")}
    alert_rule_test:
      - alertname: NeighbourTableNearlyFull
        eval_time: 20m
        exp_alerts:
          - exp_labels: {{ severity: warning, instance: a, family: IPv4 }}
            exp_annotations: {{ summary: "a has 850 IPv4 neighbours, near its limit" }}
          - exp_labels: {{ severity: warning, instance: a, family: IPv6 }}
            exp_annotations: {{ summary: "a has 1020 IPv6 neighbours, near its limit" }}
      - alertname: NeighbourTableFull
        eval_time: 20m
        exp_alerts:
          - exp_labels: {{ severity: critical, instance: a, family: IPv6 }}
            exp_annotations: {{ summary: "a has 1020 IPv6 neighbours: no more fit" }}
"""
        with tempfile.NamedTemporaryFile("w", suffix=".yml") as file:
            file.write(test)
            file.flush()
            status, text = promtool("test", "rules", file.name)
        self.assertEqual(status, 0, text)

    def test_every_rule_is_tested_and_asks_for_series_that_the_exporter_tells(self):
        rules = read(folder + "alerts.yml")
        alerts = set(re.findall(r"alert: (\w+)", rules))
        tried = re.findall(r"alertname: (\w+)", read(tests) + read(__file__))
        self.assertEqual(alerts, set(tried))
        told = set(re.findall(r"^  - name: (\w+)$", read(folder + "snmp.yml"), re.M)) | OF_PROMETHEUS
        asked = set(re.findall(r"\b(?:ip|inet|icmp|tcp|udp)\w*[a-z][A-Z]\w*", re.sub(r'"[^"]*"', "", rules)))
        labels = set(re.findall(r"labelname: (\w+)$", read(folder + "snmp.yml"), re.M))
        self.assertGreater(len(asked), 8)
        self.assertLessEqual(asked - labels, told)


if __name__ == "__main__":
    if not shutil.which("promtool"):
        skip("promtool is not installed")
    unittest.main(argv=sys.argv[:1])
