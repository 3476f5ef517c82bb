# SPDX-License-Identifier: BSD-3-Clause
"""Links that go up and down in a network namespace of our own, and the snmptrapd that is told."""
import fcntl
import os
import re
import shutil
import socket
import struct
import subprocess
import sys
import time

patience = 120
skipped = 77  # ctest's word for it, see CMakeLists.txt
SIOCGIFFLAGS, SIOCSIFFLAGS, IFF_UP, IFF_RUNNING = 0x8913, 0x8914, 0x1, 0x40


def enter_namespace():
    """Runs this program again where the network is its own."""
    if os.environ.get("IPMIB_NAMESPACE") == "1":
        return
    missing = [name for name in ("snmptrapd", "snmpget", "ip", "unshare") if shutil.which(name) is None]
    if missing or os.geteuid() != 0 or subprocess.run(["unshare", "-n", "true"], check=False).returncode != 0:
        print("skipped: needs root, network namespaces and " + (", ".join(missing) or "nothing else"))
        sys.exit(skipped)
    os.environ["IPMIB_NAMESPACE"] = "1"
    os.execvp("unshare", ["unshare", "-n", sys.executable, *sys.argv])


def make_links():
    """v0 with the peer v1, both up."""
    subprocess.run("ip link set lo up; ip link add v0 type veth peer name v1; ip link set v1 up; ip link set v0 up",
                   shell=True, check=True)
    Link("v0").wait_running()


class Link:
    def __init__(self, name):
        self.name = name
        self.index = socket.if_nametoindex(name)

    def flags(self):
        return struct.unpack("16sH14x", self._ask(SIOCGIFFLAGS, 0))[1]

    def set(self, up):
        flags = self.flags()
        flags = flags | IFF_UP if up else flags & ~IFF_UP
        self._ask(SIOCSIFFLAGS, flags)

    def _ask(self, what, flags):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
            return fcntl.ioctl(any_socket, what, struct.pack("16sH14x", self.name.encode(), flags))

    def wait_running(self):
        end = time.monotonic() + patience
        while not self.flags() & IFF_RUNNING:
            assert time.monotonic() < end, self.name + " does not come up"
            time.sleep(0.0005)

    def flap(self):
        self.set(False)
        self.set(True)
        self.wait_running()


class Receiver:
    """snmptrapd, whose lines are: kind of v1, specific kind, identifier of v2, variables, by whose right."""

    def __init__(self, folder, port=16200):
        self.target = f"127.0.0.1:{port}"
        self._log = folder + "/traps"
        configuration = folder + "/snmptrapd.conf"
        with open(configuration, "w", encoding="utf-8") as file:
            file.write("disableAuthorization yes\n"
                       "createUser -e 0x8000000001020304 bob SHA bobs-passphrase AES bobs-passphrase\n")
        self._process = subprocess.Popen(
            ["snmptrapd", "-f", "-C", "-c", configuration, "-On", "-m", "", "-F", "%w %q %v %P\\n", "-Lf", self._log,
             "udp:" + self.target], env=dict(os.environ, SNMP_PERSISTENT_DIR=folder + "/trapd", MIBS=""))
        self.wait_for(lambda: "NET-SNMP version" in self.text(), "snmptrapd is ready")

    def close(self):
        self._process.terminate()
        self._process.wait(patience)

    def text(self):
        try:
            with open(self._log, encoding="utf-8") as file:
                return file.read()
        except FileNotFoundError:
            return ""

    def transitions(self, index):
        """"down" and "up" of one interface, as v2 tells them, in the order in which they came."""
        found = re.findall(r"\.1\.3\.6\.1\.6\.3\.1\.1\.5\.([34])\s.*\.1\.3\.6\.1\.2\.1\.2\.2\.1\.1\.(\d+) =", self.text())
        return [{"3": "down", "4": "up"}[kind] for kind, which in found if int(which) == index]

    def by_right(self, index):
        """The same of all contexts: by what snmptrapd says of version, community or user and context."""
        told = {}
        for line in self.text().splitlines():
            match = re.search(r"\.1\.3\.6\.1\.6\.3\.1\.1\.5\.([34])\s.*\.1\.3\.6\.1\.2\.1\.2\.2\.1\.1\.(\d+) ="
                              r".* (?:TRAP2?|INFORM), (SNMP v.*)$", line)
            if match and int(match[2]) == index:
                told.setdefault(match[3], []).append({"3": "down", "4": "up"}[match[1]])
        return told

    def wait_for(self, holds, what):
        end = time.monotonic() + patience
        while not holds():
            assert time.monotonic() < end, f"{what}: not within {patience} s\n{self.text()[-2000:]}"
            time.sleep(0.01)


class Program:
    """A program that says when it is ready, with its configuration in the folder."""

    def __init__(self, folder, words, configuration, name="ipmibd"):
        self.folder = folder
        with open(f"{folder}/{name}.conf", "w", encoding="utf-8") as file:
            file.write(configuration)
        notify = f"{folder}/notify-{name}"
        environment = dict(os.environ, SNMP_PERSISTENT_DIR=f"{folder}/persistent-{name}", MIBS="", NOTIFY_SOCKET=notify)
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(notify)
            manager.settimeout(patience)
            self.process = subprocess.Popen([*words, "-C", "-c", f"{folder}/{name}.conf", "-f", "-Lf",
                                             f"{folder}/log-{name}"], env=environment)
            assert manager.recv(100).startswith(b"READY=1"), name
        os.unlink(notify)

    def close(self):
        self.process.terminate()
        self.process.wait(patience)
