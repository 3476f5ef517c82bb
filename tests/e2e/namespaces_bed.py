# SPDX-License-Identifier: BSD-3-Clause
"""An ipmibd that shows network namespaces, where there are none but those of the test: in a network and a /run of their own,
which end with the process. As root."""
import ctypes
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

from hostile_soak import GET, GETBULK, GETNEXT, v2

PORT = 1161
PATIENCE = 60
IF_DESCR = "1.3.6.1.2.1.2.2.1.2"
CLONE_NEWNET = 0x40000000
SKIPPED = 77


def go_inside():
    """Starts this program anew where it is alone."""
    if os.environ.get("IPMIB_BED_INSIDE"):
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
        return
    may = os.geteuid() == 0 and subprocess.run(["unshare", "--net", "--mount", "true"], capture_output=True).returncode == 0
    if not may:
        print("needs the right to make network namespaces")
        sys.exit(SKIPPED)
    os.environ["IPMIB_BED_INSIDE"] = "1"
    os.execvp("unshare", ["unshare", "--net", "--mount", "--propagation", "private", "sh", "-c",
                          "mount -t tmpfs tmpfs /run && exec \"$@\"", "sh", sys.executable, *sys.argv])


def ip(*arguments, commands=None):
    """With commands: as many of them as there are, in one process."""
    words = ["ip", *arguments] + (["-batch", "-"] if commands else [])
    done = subprocess.run(words, input=commands, capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(words)}: {done.stderr.strip()}")


def parts(octets):
    """Tag and content of what stands in there one after the other."""
    found = []
    while octets:
        length, head = octets[1], 2
        if length & 0x80:
            head += length & 0x7F
            length = int.from_bytes(octets[2:head], "big")
        found.append((octets[0], octets[head:head + length]))
        octets = octets[head + length:]
    return found


def name_of(octets):
    numbers, value = [octets[0] // 40, octets[0] % 40], 0
    for octet in octets[1:]:
        value = value << 7 | octet & 0x7F
        if not octet & 0x80:
            numbers.append(value)
            value = 0
    return ".".join(map(str, numbers))


class Manager:
    """Asks in one context, with a question at a time."""

    def __init__(self, context="", timeout=5.0):
        self.community = f"lab@{context}".encode() if context else b"public"
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.connect(("127.0.0.1", PORT))
        self.socket.settimeout(timeout)
        self.number = 0

    def ask(self, operation, names, repetitions=0):
        """Names with their tags and values; None without an answer."""
        self.number += 1
        try:
            self.socket.send(v2(operation, names, repetitions, self.number, self.community))
            while True:
                pdu = parts(parts(parts(self.socket.recv(65536))[0][1])[2][1])
                if int.from_bytes(pdu[0][1], "big") == self.number:
                    break
        except (TimeoutError, ConnectionRefusedError):
            return None
        return [(name_of(row[0][1]), *row[1]) for row in (parts(each) for _, each in parts(pdu[3][1]))]

    def walk(self, root, repetitions=20):
        """Values of a subtree in their order; None when an answer is missing."""
        values, name = [], root
        while True:
            rows = self.ask(GETBULK, [name], repetitions)
            if rows is None:
                return None
            for name, tag, value in rows:
                if not name.startswith(root + ".") or tag == 0x82:
                    return values
                values.append(value)


class Agent:
    """ipmibd that shows all namespaces with a name."""

    def __init__(self, program, *options, configuration="contexts netns all\n"):
        self.folder = tempfile.mkdtemp(prefix="ipmib-namespaces-")
        settings = os.path.join(self.folder, "conf")
        with open(settings, "w", encoding="ascii") as file:
            file.write("rocommunity public 127.0.0.1\ncontextcommunity lab 127.0.0.1\n" + configuration)
        environment = dict(os.environ, SNMP_PERSISTENT_DIR=self.folder, MIBS="")
        self.log_file = os.path.join(self.folder, "log")
        self.process = subprocess.Popen([program, "-f", "-Lf", self.log_file, "-C", "-c", settings, *options,
                                         f"udp:127.0.0.1:{PORT}"], env=environment)
        end = time.monotonic() + PATIENCE
        while "ipmibd" not in self.log() or " serves " not in self.log():
            if self.process.poll() is not None or time.monotonic() > end:
                raise RuntimeError(f"ipmibd does not start: {self.log()}")
            time.sleep(0.005)

    def log(self):
        try:
            with open(self.log_file, encoding="utf-8", errors="replace") as file:
                return file.read()
        except FileNotFoundError:
            return ""

    def pids(self):
        helper = re.search(r"opened by ipmib-netns, process (\d+)", self.log())
        return [self.process.pid] + ([int(helper.group(1))] if helper else [])

    def descriptors(self):
        return [len(os.listdir(f"/proc/{pid}/fd")) for pid in self.pids()]

    def memory(self):
        """KiB of each process that are its own."""
        return [self.figure(pid, "smaps_rollup", r"Private_Dirty:\s+(\d+)") for pid in self.pids()]

    def seconds(self):
        """Processor time of all."""
        total = 0
        for pid in self.pids():
            with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
                total += int(file.read().split()[0])
        return total / 1e9

    def wakeups(self):
        return [self.figure(pid, "status", r"\nvoluntary_ctxt_switches:\s+(\d+)") for pid in self.pids()]

    @staticmethod
    def figure(pid, file, pattern):
        with open(f"/proc/{pid}/{file}", encoding="ascii") as content:
            return int(re.search(pattern, content.read()).group(1))

    def end(self):
        """Whether it ended well."""
        self.process.terminate()
        well = self.process.wait(PATIENCE) == 0
        shutil.rmtree(self.folder)
        return well


def enter(name):
    """This thread is in the namespace from now on."""
    with open(f"/run/netns/{name}", "rb") as file:
        if ctypes.CDLL(None, use_errno=True).setns(file.fileno(), CLONE_NEWNET) != 0:
            raise OSError(ctypes.get_errno(), f"setns {name}")


__all__ = ["Agent", "GET", "GETBULK", "GETNEXT", "IF_DESCR", "Manager", "PATIENCE", "enter", "go_inside", "ip"]
