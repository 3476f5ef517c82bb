#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""A full routing table on the real kernel: ipmibd as it is packaged, without any capability, in a network namespace that
this makes, while `ip -batch` fills the table, while it is read at a start, at rest, and in a storm of changes. GETs of
six other tables go on all the time; printed are the median, the 99th percentile and the worst of how long they took, and of
the processor time that the agent spent from when they were sent to when they were answered, which a busy machine does not
lengthen. Of several measurements, of four seconds each, these are the largest. What a walk shows is compared with what
`ip route` lists.

  bench/full_table.py [--ipv4 1000000] [--ipv6 200000] [--hops 50000] [--onlink] [--storm 100000x10]
  bench/full_table.py | bench/put_into.py docs/performance.md bench/full_table.py

As root, some five minutes; net.core.rmem_max is what Debian has while it runs. Prints figures; ends with 1 when the
table and the kernel differ.
"""
import argparse
import contextlib
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

from kernel_state import carry_out
from side_by_side.agents import ADDRESS, Ipmibd
from side_by_side.measure import Measurement

INTERFACES = 256  # the kernel looks through all next hops on an interface for each route that comes
NUMBER = "1.3.6.1.2.1.4.24.6.0"
COLUMN = "1.3.6.1.2.1.4.24.7.1.7"  # inetCidrRouteIfIndex
OTHERS = ("1.3.6.1.2.1.2.2.1.8", "1.3.6.1.2.1.4.31.1.1.3", "1.3.6.1.2.1.4.32.1.5", "1.3.6.1.2.1.4.34.1.3",
          "1.3.6.1.2.1.4.35.1.4", "1.3.6.1.2.1.4.37.1.4")
RATE = 100  # GETs a second


class Packaged(Ipmibd):
    """As the unit runs it: a user of its own, no capability, the system's receive buffers."""

    def commands(self):
        os.chmod(self.folder, 0o755)
        state = os.path.join(self.folder, "state")
        os.mkdir(state)
        os.chown(state, 65534, 65534)
        for command in super().commands():
            yield ["env", f"SNMP_PERSISTENT_DIR={state}", "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                   "--inh-caps=-all", "--bounding-set=-all", "--no-new-privs", *command]


@contextlib.contextmanager
def small_buffers():
    """As on most machines. The setting is the whole machine's, so it is put back."""
    path = "/proc/sys/net/core/rmem_max"
    with open(path, encoding="ascii") as file:
        before = file.read()

    def put(value):
        with open(path, "w", encoding="ascii") as file:
            file.write(value)
    put("212992")
    try:
        yield
    finally:
        put(before)


def make_links():
    for scope in ("all", "default"):
        with open(f"/proc/sys/net/ipv6/conf/{scope}/accept_dad", "w", encoding="ascii") as file:
            file.write("0")
    carry_out(["link set lo up"])
    commands = []
    for i in range(INTERFACES):
        commands += [f"link add b{i} type bridge", f"link set b{i} up", f"addr add 10.{i}.0.1/16 dev b{i}",
                     f"addr add fd00:0:0:{i:x}::1/64 dev b{i} nodad"]
    carry_out(commands)
    carry_out([f"neigh add fd00:0:0:{i:x}::9 dev b{i} lladdr 02:00:00:00:00:{i:02x} nud permanent"
               for i in range(INTERFACES)])
    carry_out(["route add default via fe80::1 dev b0 proto ra expires 36000"])


def route_commands(command, ipv4, ipv6, hops, on_link):
    """The routes that bench_route_churn changes, too."""
    for i in range(ipv4):
        hop = i % hops
        host = (hop // INTERFACES) + 2
        via = f"dev b{hop % INTERFACES}" if on_link else f"via 10.{hop % INTERFACES}.{host >> 8}.{host & 255}"
        yield f"route {command} {20 + (i >> 16)}.{i >> 8 & 255}.{i & 255}.0/24 {via} proto bgp"
    for i in range(ipv6):
        hop = i % hops
        via = f"dev b{hop % INTERFACES}" if on_link else f"via fd00:0:0:{hop % INTERFACES:x}::{hop // INTERFACES + 2:x}"
        yield f"route {command} 2001:{0x1000 + (i >> 16):x}:{i & 0xffff:x}::/48 {via} proto bgp"


class Gets:
    """Single GETs of other tables from another thread, until they are stopped."""

    def __init__(self, measurement, seconds=4):
        self.measurement = measurement
        self.seconds = seconds
        self.found = []
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.run)

    def run(self):
        while not self.ended.is_set() or not self.found:
            self.found.append(self.measurement.load("gets", RATE, self.seconds, *OTHERS))

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ended.set()
        self.thread.join()

    def text(self):
        gets = sum(each["gets"] for each in self.found)
        lost = sum(each["unanswered"] for each in self.found)
        times = [[max(each[f"{kind}{share}_ms"] for each in self.found) for share in ("p50", "p99", "worst")]
                 for kind in ("", "worked_")]
        passed, worked = (" / ".join(f"{time:.2f}" for time in kind) for kind in times)
        return f"{passed} ms, of work {worked} ms; {gets} GETs" + (f", {lost} not answered" if lost else "")


def say(name, text):
    print(f"{name + ':':44} {text}", flush=True)


def ask(name, timeout):
    """Of one scalar; None without an answer."""
    done = subprocess.run(["snmpget", "-v2c", "-cpublic", "-Oqv", "-r0", f"-t{timeout}", ADDRESS, name],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
    return done.stdout.strip() if done.returncode == 0 else None


def until(condition, seconds):
    begin = time.monotonic()
    while time.monotonic() - begin < seconds:
        if condition():
            return time.monotonic() - begin
        time.sleep(0.02)
    return None


def kernel_rows():
    links = {link["ifname"]: link["ifindex"] for link in json.loads(subprocess.check_output(["ip", "-j", "link"]))}
    rows = set()
    for version, family, bits in (("-4", socket.AF_INET, 32), ("-6", socket.AF_INET6, 128)):
        output = subprocess.check_output(["ip", version, "route", "show", "table", "main"], text=True)
        for line in output.splitlines():
            words = line.split()
            destination, _, length = words[0].partition("/")
            if destination == "default":
                destination, length = ("0.0.0.0" if bits == 32 else "::"), "0"
            via = socket.inet_pton(family, words[words.index("via") + 1]) if "via" in words else b""
            if via[:2] == b"\xfe\x80":
                via += links[words[words.index("dev") + 1]].to_bytes(4, "big")
            rows.add((socket.inet_pton(family, destination), int(length or bits), via,
                      links[words[words.index("dev") + 1]]))
    return rows


def walked_rows():
    environment = dict(os.environ, MIBS="")
    process = subprocess.Popen(["snmpbulkwalk", "-v2c", "-cpublic", "-Onq", "-Cr50", "-t10", ADDRESS, COLUMN],
                               stdout=subprocess.PIPE, env=environment, text=True)
    rows, number = set(), 0
    skip = len(COLUMN.split(".")) + 1
    for line in process.stdout:
        name, _, value = line.rstrip().partition(" ")
        index = [int(part) for part in name.split(".")[skip:]]
        size = index[1]
        destination, length, rest = bytes(index[2:2 + size]), index[2 + size], index[3 + size:]
        hop = rest[rest[0] + 1:]
        rows.add((destination, length, bytes(hop[2:]), int(value)))
        number += 1
    process.wait()
    return rows, number


def compare(name):
    kernel = kernel_rows()
    walked, number = walked_rows()
    same = walked == kernel and number == len(kernel) == int(ask(NUMBER, 5))
    say(name, f"{number} rows, " + ("the kernel's" if same else
                                   f"{len(kernel - walked)} missing, {len(walked - kernel)} that are none of the kernel's"))
    return same


def memory(agent):
    with open(f"/proc/{agent.pids[0]}/status", encoding="ascii") as file:
        fields = dict(line.split(":", 1) for line in file)
    return (f"{int(fields['VmRSS'].split()[0]) / 1024:.1f} MB resident, "
            f"{int(fields['VmHWM'].split()[0]) / 1024:.1f} MB at most")


def filled(options, agent, measurement):
    """The table is filled while the agent serves it."""
    folder = tempfile.mkdtemp(prefix="ipmib-routes-")
    try:
        file_name = os.path.join(folder, "batch")
        with open(file_name, "w", encoding="ascii") as file:
            for line in route_commands("add", options.ipv4, options.ipv6, options.hops, options.onlink):
                file.write(line + "\n")
        with Gets(measurement) as gets:
            begin = time.monotonic()
            subprocess.run(["ip", "-batch", file_name], check=True)
            took = time.monotonic() - begin
        say("while ip -batch loads the routes", f"{took:.1f} s, {gets.text()}")
    finally:
        shutil.rmtree(folder)
    expected = len(kernel_rows())
    behind = until(lambda: ask(NUMBER, 5) == str(expected), 60)
    say("the number is right behind that", "never" if behind is None else f"within {behind:.1f} s")
    say("memory", memory(agent))
    return compare("walk") and behind is not None


def at_rest(measurement):
    with Gets(measurement, 10) as gets:
        time.sleep(1)
    say("at rest", gets.text())
    walk = measurement.load("walk", 50, 1, COLUMN)
    say("walk of a column, bulk 50", f"{walk['us_a_variable']:.2f} us of processor time a variable")
    with Gets(measurement) as gets:
        measurement.load("walk", 50, 3_000_000, COLUMN)
    say("while a client walks the table", gets.text())


def started(options):
    """The agent is started while the table is full."""
    with Packaged(options.build, 0) as agent:
        measurement = Measurement(options.build, agent)
        begin = time.monotonic()
        other = until(lambda: ask("1.3.6.1.2.1.1.3.0", 0.05) is not None and ask(OTHERS[0] + ".1", 0.05) is not None, 20)
        worked = agent.processor_ms()
        with Gets(measurement, 3) as gets:
            number = ask(NUMBER, 10)
            asked = time.monotonic() - begin
        say("start, until other tables answer", f"{other:.2f} s, {worked:.0f} ms of work")
        say("start, until the number is answered", f"{asked:.2f} s, {number} rows")
        say("while the table is read", gets.text())
        say("memory", memory(agent))
        same = compare("walk")
        if options.storm and same:
            same = storm(options, agent, measurement)
        print(agent.log_text(), file=sys.stderr)
        return same


def storm(options, agent, measurement):
    rate, seconds = options.storm
    with Gets(measurement) as gets:
        print(subprocess.check_output([f"{options.build}/bench/bench_route_churn", str(rate), str(seconds),
                                       str(options.ipv4), str(options.hops)], text=True), end="", flush=True)
        begin = time.monotonic()
        expected = str(len(kernel_rows()))
        listed = time.monotonic() - begin
        behind = until(lambda: ask(NUMBER, 5) == expected, 60)
        took = time.monotonic() - begin
    say("the number is right behind that", "never" if behind is None else f"within {took:.1f} s, of which `ip route` "
        f"takes {listed:.1f} s to list the routes")
    say("meanwhile", gets.text())
    say("memory", memory(agent))
    return compare("walk") and behind is not None


def measure(options):
    make_links()
    with Packaged(options.build, 0) as agent:
        measurement = Measurement(options.build, agent)
        measurement.wait_until_ready()
        same = filled(options, agent, measurement)
        at_rest(measurement)
        print(agent.log_text(), file=sys.stderr)
    return started(options) and same


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--ipv4", type=int, default=1_000_000)
    parser.add_argument("--ipv6", type=int, default=200_000)
    parser.add_argument("--hops", type=int, default=50_000, help="different gateways of each version of IP")
    parser.add_argument("--onlink", action="store_true", help="routes on links instead, without gateways")
    parser.add_argument("--storm", default="100000x10", help="changes a second, and seconds; 0 for none")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    options.storm = [int(part) for part in options.storm.split("x")] if options.storm != "0" else None
    if options.inside:
        sys.exit(0 if measure(options) else 1)
    with small_buffers():
        sys.exit(subprocess.call(["unshare", "-n", sys.executable, os.path.abspath(__file__), *arguments, "--inside"]))


if __name__ == "__main__":
    main(sys.argv[1:])
