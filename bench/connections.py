#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""A server with many TCP connections: the Linux platform alone, ipmibd as it is packaged, and Debian's snmpd, one after
the other in a network namespace that this makes, with the connections as pairs of sockets within it, both versions of
IP. GETs of six other tables go on while a client walks tcpConnectionTable.

  bench/connections.py [--connections 200000] [--only platform|ipmibd|snmpd]

As root, some two minutes, and 5 kB of the kernel's memory for each connection. Prints figures; ends with 1 when the rows
of ipmibd are not as many as the kernel's.
"""
import argparse
import contextlib
import os
import resource
import socket
import subprocess
import sys
import time

from full_table import Gets, Packaged, memory, say, until
from kernel_state import carry_out, make
from side_by_side.agents import ADDRESS, Snmpd
from side_by_side.measure import Measurement

STATE = "1.3.6.1.2.1.6.19.1.7"  # tcpConnectionState
SCALAR = "1.3.6.1.2.1.1.3.0"
PORT = 443
PAIRS_OF_ADDRESS = 20_000  # a client's ports are some 28,000
LONGEST = 60  # seconds that a client waits for the first answer, and for a walk
IDLE = 15  # seconds until memory is looked at again


def end_of(place):
    return ((socket.AF_INET, f"127.0.1.{place + 1}"), (socket.AF_INET6, f"fd00::1:{place + 1}"))[place % 2]


def hold_connections(place, pairs):
    """In a process of its own. Each pair of sockets is two connections; they last until the process ends."""
    family, address = end_of(place)
    sockets = []
    with socket.socket(family) as listener:
        listener.bind((address, PORT))
        listener.listen(4_096)
        for _ in range(pairs):
            client = socket.socket(family)
            client.connect((address, PORT))
            sockets += [client, listener.accept()[0]]
    sys.stdout.write("made\n")
    sys.stdout.flush()
    sys.stdin.read()


@contextlib.contextmanager
def connections(number):
    most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
    share = min(PAIRS_OF_ADDRESS, (most - 100) // 2)
    holders = []
    pairs = number // 2
    places = range((pairs + share - 1) // share)
    carry_out([f"addr add {end_of(place)[1]}/128 dev lo" for place in places if place % 2 == 1])
    try:
        for place in places:
            command = [sys.executable, os.path.abspath(__file__), "--hold",
                       f"{place}x{min(share, pairs - place * share)}"]
            holders.append(subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE))
        for holder in holders:
            if not holder.stdout.readline():
                raise RuntimeError("the connections cannot be made")
        yield
    finally:
        for holder in holders:
            holder.stdin.close()
            holder.wait()


def kernel_count():
    listed = subprocess.run(["ss", "-tnHO", "state", "connected"], stdout=subprocess.PIPE, check=True).stdout
    return listed.count(b"\n")


def first_answer():
    """Seconds until the first row is there; None without an answer."""
    begin = time.monotonic()
    done = subprocess.run(["snmpgetnext", "-v2c", "-cpublic", "-Onq", "-r0", f"-t{LONGEST}", ADDRESS, STATE],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False,
                          env=dict(os.environ, MIBS=""))
    return time.monotonic() - begin if done.returncode == 0 and STATE.encode() in done.stdout else None


def walked(repetitions):
    """Rows and seconds of a walk; rows of as much of it as there was within its time."""
    command = ["snmpbulkwalk", "-v2c", "-cpublic", "-Onq", f"-Cr{repetitions}", f"-t{LONGEST}", "-r0", ADDRESS, STATE]
    begin = time.monotonic()
    rows = 0
    with subprocess.Popen(command, stdout=subprocess.PIPE, env=dict(os.environ, MIBS="")) as process:
        for _ in process.stdout:
            rows += 1
            if time.monotonic() - begin > LONGEST:
                process.terminate()
                break
    return rows, time.monotonic() - begin


def measure_agent(name, agent, measurement, expected):
    until(lambda: subprocess.run(["snmpget", "-v2c", "-cpublic", "-r0", "-t1", ADDRESS, SCALAR],
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0, 60)
    say(f"{name}: memory before anybody asks", memory(agent))
    with Gets(measurement, 3) as gets:
        time.sleep(1)
    say(f"{name}: other tables, nobody asks for these", gets.text())
    with Gets(measurement, 3) as gets:
        time.sleep(0.5)
        before = agent.processor_ms()
        first = first_answer()
        spent = agent.processor_ms() - before
    say(f"{name}: the first row", "no answer" if first is None else f"after {first:.2f} s, {spent:.0f} ms of processor "
        "time for it and the GETs beside it")
    say(f"{name}: other tables meanwhile", gets.text())
    with Gets(measurement, 3) as gets:
        before = agent.processor_ms()
        rows, took = walked(50)
        spent = agent.processor_ms() - before
    say(f"{name}: walk of a column, bulk 50",
        f"{rows} of {expected} rows in {took:.1f} s, {spent / max(rows, 1) * 1000:.1f} us of processor time a row, "
        "with the GETs beside it")
    say(f"{name}: other tables meanwhile", gets.text())
    say(f"{name}: memory", memory(agent))
    time.sleep(IDLE)
    say(f"{name}: memory {IDLE} s later", memory(agent))
    return rows


def measure(options):
    make(2, 10, 20)
    begin = time.monotonic()
    same = True
    with connections(options.connections):
        expected = kernel_count()
        say("connections", f"{expected}, made in {time.monotonic() - begin:.0f} s")
        if options.only in (None, "platform"):
            print(subprocess.check_output([f"{options.build}/bench/bench_live_connections"], text=True), end="", flush=True)
        for name, kind in (("ipmibd", Packaged), ("snmpd", Snmpd)):
            if options.only in (None, name):
                with kind(options.build, 0) as agent:
                    rows = measure_agent(name, agent, Measurement(options.build, agent), expected)
                    same = same and (name != "ipmibd" or rows == expected)
    return same


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--connections", type=int, default=200_000)
    parser.add_argument("--only", choices=("platform", "ipmibd", "snmpd"))
    parser.add_argument("--hold", help=argparse.SUPPRESS)
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    if options.hold:
        hold_connections(*map(int, options.hold.split("x")))
        return
    if options.inside:
        sys.exit(0 if measure(options) else 1)
    sys.exit(subprocess.call(["unshare", "-n", sys.executable, os.path.abspath(__file__), *arguments, "--inside"]))


if __name__ == "__main__":
    main(sys.argv[1:])
