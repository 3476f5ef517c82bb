#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""What Debian's snmpd alone, ipmibd beside it, and ipmibd alone answer of the same machine: prints the identifiers of all
instances, by way, as JSON. To be run in a network namespace of its own, which it fills.

    unshare -rn tests/collectors/beside_snmpd.py IPMIBD ROOT...
"""
import json
import os
import subprocess
import sys
import tempfile
import time

import network

TARGET = "127.0.0.1:1161"
PATIENCE = 60
SNMPD = "/usr/sbin/snmpd"


class Bed:
    def __init__(self, folder, ipmibd, *roots):
        self.ipmibd = ipmibd
        self.roots = roots
        self.folder = folder
        self.environment = dict(os.environ, MIBS="", SNMPCONFPATH=folder, SNMP_PERSISTENT_DIR=folder + "/persistent")
        self.configuration("snmpd.conf", f"rocommunity public\nmaster agentx\nagentXSocket {folder}/master\n")
        self.configuration("sub-agent.conf", "serve all take\n")
        self.configuration("alone.conf", "rocommunity public\n")

    def configuration(self, name, text):
        with open(f"{self.folder}/{name}", "w", encoding="utf-8") as file:
            file.write(text)

    def start(self, program, configuration, *words):
        return subprocess.Popen([program, "-f", "-Lf", f"{self.folder}/log", "-C", "-c", f"{self.folder}/{configuration}", *words],
                                env=self.environment)

    def walk(self, root, seconds=20):
        done = subprocess.run(["snmpbulkwalk", "-v2c", "-cpublic", f"-t{seconds}", "-r0", "-On", "-Cr50", TARGET, root],
                              env=self.environment, capture_output=True, text=True, timeout=PATIENCE, check=False)
        lines = [line.split(" = ") for line in done.stdout.splitlines() if line.startswith(".1.") and " = " in line]
        return [name.lstrip(".") for name, text, *_ in lines if not text.startswith("No ")]

    def answers(self, *processes, until="1.3.6.1.2.1.1.3"):
        """Of these processes, as soon as there is something below that identifier."""
        end = time.monotonic() + PATIENCE
        while not self.walk(until, seconds=0.5) and time.monotonic() < end:
            time.sleep(0.1)
        found = [name for root in self.roots for name in self.walk(root)]
        for process in processes:
            process.terminate()
            process.wait(PATIENCE)
        return found

    def all_ways(self):
        as_debian_starts_it = (SNMPD, "snmpd.conf", "-I", "-smux,mteTrigger,mteTriggerConf", "udp:" + TARGET)
        ways = {"snmpd": self.answers(self.start(*as_debian_starts_it))}
        master = self.start(*as_debian_starts_it)
        sub_agent = self.start(self.ipmibd, "sub-agent.conf", "-x", f"{self.folder}/master")
        ways["beside"] = self.answers(sub_agent, master, until="1.3.6.1.2.1.31.1.4")  # snmpd has not, and it comes last
        ways["ipmibd"] = self.answers(self.start(self.ipmibd, "alone.conf", "udp:" + TARGET))
        return ways


def main():
    network.make()
    for ping in (["ping", "-c1", "127.0.0.1"], ["ping", "-c1", "::1"]):
        subprocess.run(ping, stdout=subprocess.DEVNULL, check=True)
    with tempfile.TemporaryDirectory() as folder:
        json.dump(Bed(folder, *sys.argv[1:]).all_ways(), sys.stdout)


if __name__ == "__main__":
    main()
