# SPDX-License-Identifier: BSD-3-Clause
"""ipmibd on a simulated device, for collectors that are tried on it."""
import os
import re
import socket
import subprocess
import sys
import tempfile

from catalogue import root

patience = 60
skipped = 77  # ctest's word for it, see CMakeLists.txt


def skip(why):
    print(why)
    sys.exit(skipped)


def free_port(kind):
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Agent:
    """with Agent(program, "home-router") as agent: ... A simulated device's clock stands still, so that all answers
    agree. What is served may also be a scenario's file, or "linux", this machine."""

    def __init__(self, program, served, configuration_lines=""):
        self.port = free_port(socket.SOCK_DGRAM)
        self.target = f"127.0.0.1:{self.port}"
        self._folder = tempfile.TemporaryDirectory()
        self.folder = self._folder.name
        configuration = self.folder + "/ipmibd.conf"
        with open(configuration, "w", encoding="utf-8") as file:
            file.write("rocommunity public 127.0.0.1\n" + configuration_lines)
        self._environment = dict(os.environ, SNMPCONFPATH=self.folder, SNMP_PERSISTENT_DIR=self.folder + "/persistent",
                                 MIBS="", NOTIFY_SOCKET=self.folder + "/notify")
        scenario = served if "/" in served else f"{root}/examples/{served}.json"
        platform = ["linux"] if served == "linux" else ["simulated:" + scenario, "--at=0"]
        self._words = [program, "-f", "-Lf", self.folder + "/log", "-C", "-c", configuration, "--platform", *platform,
                       "udp:" + self.target]

    def __enter__(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(self._environment["NOTIFY_SOCKET"])
            manager.settimeout(patience)
            self._process = subprocess.Popen(self._words, env=self._environment)
            assert manager.recv(100).startswith(b"READY=1")
        self.pid = self._process.pid
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(patience)
        self._folder.cleanup()

    def walk(self, oid, *how):
        """Instances and values as (identifier, type, text); octets in hexadecimal. With GETBULK, unless it is said how."""
        return self.rows(*(how or ("snmpbulkwalk", "-Cr50")), oid)

    def rows(self, program, *words):
        """What one of net-snmp's programs prints, when it is asked for this."""
        options = [word for word in words if word.startswith("-")]
        result = subprocess.run([program, "-v2c", "-cpublic", "-t10", "-One", "-Oxt", *options, self.target,
                                 *(word for word in words if word not in options)],
                                env=self._environment, capture_output=True, text=True, timeout=patience, check=True)
        rows = []
        for line in re.split(r"\n(?=\.)", result.stdout.strip()):
            match = re.match(r"\.([0-9.]+) = (?:([\w -]+): )?(.*)$", line, re.S)
            if match and not match[3].startswith("No "):
                text = match[3].replace("\n", "").strip().strip('"').strip()
                rows.append((tuple(map(int, match[1].split("."))), match[2], text))
        return rows
