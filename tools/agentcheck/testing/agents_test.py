#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""ipmib-agentcheck finds nothing wrong with ipmibd, whatever it serves and wherever it runs; beside snmpd and inside it, only
what is snmpd's own; and what it finds wrong with Debian's snmpd stands in docs/agentcheck.md.

    agents_test.py [--update] IPMIBD IPMIB-AGENTCHECK [OBJECT]     with --update the document is written anew; without the
                                                                   object for snmpd, nothing is tried inside it
"""
import errno
import json
import os
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
sys.path.insert(0, root + "/tests/collectors")
import network  # noqa: E402

document = root + "/docs/agentcheck.md"
BEGIN, END = "<!-- what ipmib-agentcheck finds wrong with snmpd -->\n```\n", "```\n<!-- end -->\n"
TARGET = "127.0.0.1:1161"
SNMPD = "/usr/sbin/snmpd"
PATIENCE = 60
# Who listens, who is connected, and endpoints: of both versions, with a zone and without.
LISTENERS = [("192.0.2.1", 8080), ("0.0.0.0", 8081), ("::", 8082), ("2001:db8::1", 8083), ("fe80::5eff:fe00:5301%left", 8084)]
CONNECTED = [("192.0.2.1", 8080), ("127.0.0.1", 8081), ("::ffff:192.0.2.1", 8082), ("::1", 8082), ("2001:db8::1", 8083),
             ("fe80::5eff:fe00:5301%left", 8084)]
ENDPOINTS = [("0.0.0.0", 5353), ("::", 5354), ("127.0.0.1", 5355), ("fe80::5eff:fe00:5301%left", 5356)]
ENDPOINTS_CONNECTED = [("192.0.2.2", 53), ("2001:db8::2", 53), ("fe80::5eff:fe00:5302%left", 53)]
V2C = ("-v2c", "-cpublic")
V3 = ("-v3", "-uu", "-lauthPriv", "-aSHA", "-Apassword1", "-xAES", "-Xpassword2")
LAST = "1.3.6.1.2.1.31.1.4"  # of what ipmibd serves, and snmpd does not

if __name__ == "__main__":
    update = "--update" in sys.argv
    paths = [os.path.abspath(word) for word in sys.argv[1:] if word and word != "--update"]
    ipmibd, agentcheck, snmpd_object = (paths + [None])[:3]


class Agents:
    """with Agents() as agents: ... Those that were started end with it."""

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory()
        self.folder = self._folder.name
        self.environment = dict(os.environ, MIBS="", SNMPCONFPATH=self.folder, SNMP_PERSISTENT_DIR=self.folder + "/state")
        self.processes = []
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(PATIENCE)
        self._folder.cleanup()

    def start(self, program, configuration, *words):
        path = f"{self.folder}/{len(self.processes)}.conf"
        with open(path, "w", encoding="utf-8") as file:
            file.write(configuration)
        self.processes.append(subprocess.Popen([program, "-f", "-Lf", path + ".log", "-C", "-c", path, *words],
                                               env=self.environment))

    def snmpd(self, configuration):
        self.start(SNMPD, "rwcommunity public\n" + configuration, "-I", "-smux,mteTrigger,mteTriggerConf", "udp:" + TARGET)

    def wait(self, until):
        """Until there is something below that identifier."""
        ask = ["snmpgetnext", "-v2c", "-cpublic", "-t0.5", "-r0", "-On", TARGET, until]
        end = time.monotonic() + PATIENCE
        while f".{until}." not in subprocess.run(ask, env=self.environment, capture_output=True, text=True, check=False).stdout:
            assert time.monotonic() < end, f"nobody has {until}"
            time.sleep(0.1)

    def findings(self, *words, until="1.3.6.1.2.1.1.3"):
        """What is wrong, writes included, once there is something below that identifier."""
        self.wait(until)
        result = subprocess.run([agentcheck, "--rate=1000000", "--write", "--json", *(words or V2C), TARGET],
                                env=self.environment, capture_output=True, text=True, timeout=600, check=False)
        assert result.returncode in (0, 1), result.stderr
        found = json.loads(result.stdout)["findings"]
        assert bool(found) == (result.returncode == 1)
        return found


def opened(kind, use, address):
    """A socket that is bound or connected; a link-local address is there some time after its link is up."""
    family, _, _, _, place = socket.getaddrinfo(*address, type=kind, flags=socket.AI_NUMERICHOST)[0]
    end = time.monotonic() + PATIENCE
    while True:
        one = socket.socket(family, kind)
        try:
            getattr(one, use)(place)
            return one
        except OSError as error:
            one.close()
            if error.errno not in (errno.EADDRNOTAVAIL, errno.ENETUNREACH) or time.monotonic() > end:
                raise
        time.sleep(0.05)


def sockets():
    """They are there as long as they are kept."""
    found = []
    for address in LISTENERS:
        found.append(opened(socket.SOCK_STREAM, "bind", address))
        found[-1].listen()
    found += [opened(socket.SOCK_STREAM, "connect", address) for address in CONNECTED]
    found += [opened(socket.SOCK_DGRAM, "bind", address) for address in ENDPOINTS]
    return found + [opened(socket.SOCK_DGRAM, "connect", address) for address in ENDPOINTS_CONNECTED]


def names(findings):
    """Sockets of the agents and of those who ask them are others each time: of endpoints the object alone."""
    return {(each["rule"], re.sub("^(udpEndpoint[^.]*).*", r"\1", each["name"])) for each in findings}


class Ipmibd(unittest.TestCase):
    maxDiff = None

    def test_on_linux_in_each_version(self):
        with Agents() as agents:
            agents.start(ipmibd, "rwcommunity public\ncreateUser u SHA password1 AES password2\nrwuser u\n", "udp:" + TARGET)
            for words in (V2C, ("-v1", "-cpublic"), V3):
                self.assertEqual(agents.findings(*words), [])

    def test_simulated(self):
        for name in ("home-router", "unsteady-access", "failing-services", "datacentre-edge"):
            with self.subTest(name), Agents() as agents:
                agents.start(ipmibd, "rwcommunity public\n", "--platform", f"simulated:{root}/examples/{name}.json",
                             "udp:" + TARGET)
                self.assertEqual(agents.findings(*V2C, "--rows=12"), [])

    def beside(self, serve, until):
        with Agents() as agents:
            agents.snmpd(f"master agentx\nagentXSocket {agents.folder}/master\n")
            agents.start(ipmibd, serve, "-x", agents.folder + "/master")
            return agents.findings(until=until)

    def inside(self, serve, until):
        if snmpd_object is None:
            self.skipTest("snmpd has no sanitizer, and so cannot load what has one")
        with Agents() as agents:
            agents.snmpd(f"dlmod ipmib {snmpd_object}\n{serve}")
            return agents.findings(until=until)

    def test_beside_snmpd_in_place_of_all_of_its_tables(self):
        self.assertEqual(self.beside("serve all take\n", LAST), [])

    def test_inside_snmpd_in_place_of_all_of_its_tables(self):
        # There snmpd answers for columns that its tables have not.
        self.assertLessEqual(names(self.inside("ipmibServe all take\n", LAST)),
                             {("noSuchObject", f"{table}Entry.4711.1") for table in ("ipAddr", "ipRoute", "ipNetToMedia")})

    def of_snmpd(self):
        with Agents() as agents:
            agents.snmpd("")
            return names(agents.findings())

    def test_beside_snmpd_only_what_is_its_own_is_wrong(self):
        self.assertLessEqual(names(self.beside("", "1.3.6.1.2.1.4.30")), self.of_snmpd())

    def test_inside_snmpd_only_what_is_its_own_is_wrong(self):
        self.assertLessEqual(names(self.inside("", "1.3.6.1.2.1.4.30")), self.of_snmpd())


class Snmpd(unittest.TestCase):
    """Instances are those of this machine, rules are the same everywhere."""

    maxDiff = None

    def test_what_is_wrong_stands_in_the_document(self):
        with open(document, encoding="utf-8") as file:
            before, rest = file.read().split(BEGIN)
        told, after = rest.split(END)
        with Agents() as agents:
            agents.snmpd("")
            agents.wait("1.3.6.1.2.1.4.34")
            text = subprocess.run([agentcheck, "--rate=1000000", *V2C, TARGET], env=agents.environment,
                                  capture_output=True, text=True, timeout=600, check=False).stdout
        found = text[text.index("BROKEN") :]
        if update:
            with open(document, "w", encoding="utf-8") as file:
                file.write(before + BEGIN + found + END + after)
        else:
            self.assertEqual(re.findall("^BROKEN.*", found, re.M), re.findall("^BROKEN.*", told, re.M),
                             "make docs writes it anew")


if __name__ == "__main__":
    if not network.enter():
        print("skipped: needs a network namespace")
        sys.exit(77)
    network.make()
    there = sockets()
    unittest.main(argv=sys.argv[:1] + (["Snmpd"] if update else []))
