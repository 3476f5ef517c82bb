# SPDX-License-Identifier: BSD-3-Clause
"""What tests of notifications have in common: an snmptrapd of their own, and agents that tell it."""
import os
import shutil
import subprocess
import tempfile
import unittest

from receiver import Program, Receiver

ours = "127.0.0.1:16100"


class Bed(unittest.TestCase):
    ipmibd = None  # the program
    snmpd_object = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.receiver = Receiver(self.folder)
        self.addCleanup(self.receiver.close)

    def start(self, configuration, words=(), name="ipmibd"):
        started = Program(self.folder, [self.ipmibd, *words], configuration, name)
        self.addCleanup(started.close)
        return started

    def standalone(self, configuration, words=()):
        return self.start(f"agentaddress udp:{ours}\nrocommunity public\n" + configuration, words)

    def get(self, oid, community="public", retries=0):
        return subprocess.run(["snmpget", "-v2c", f"-r{retries}", "-t20" if community == "public" else "-t1",
                               "-c" + community, "-m", "", "-Oqv", ours, oid], capture_output=True, text=True,
                              check=False).stdout.strip()

    def snmpd(self, name, more):
        """Debian's agent, which sends to the receiver."""
        program = shutil.which("snmpd") or "/usr/sbin/snmpd"
        if not os.path.exists(program):
            self.skipTest("snmpd is not installed")
        with open(f"{self.folder}/{name}.conf", "w", encoding="utf-8") as file:
            file.write(f"agentaddress udp:{ours}\nrocommunity public\ntrap2sink {self.receiver.target} public\n" + more)
        agent = subprocess.Popen([program, "-f", "-C", "-c", file.name, "-Lf", f"{self.folder}/log-{name}"],
                                 env=dict(os.environ, SNMP_PERSISTENT_DIR=f"{self.folder}/persistent-{name}", MIBS=""))
        self.addCleanup(agent.wait, 60)
        self.addCleanup(agent.terminate)

    def skip_without_object(self):
        with open(self.snmpd_object, "rb") as file:
            if b"__asan_init" in file.read():
                self.skipTest("snmpd has no sanitizer, and so cannot load what has one")
