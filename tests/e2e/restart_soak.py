#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Ends and restarts an snmpd with ipmibd as its sub-agent, again and again, every other time in the middle of a walk, and
tells how long it takes until our rows are back. In a network namespace that ends with it; as root.

  tests/e2e/restart_soak.py IPMIBD [COUNT]
"""
import os
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

LIMIT = 2.0
ADDRESS = "127.0.0.1:1161"
UP_TIME = "1.3.6.1.2.1.1.3.0"
OURS = "1.3.6.1.2.1.4.30.1.5.1"  # of the loopback interface; snmpd has no such table
OURS_AND_OTHERS = "1.3.6.1.2.1.4"


def client(program, *arguments):
    return [program, "-v2c", "-cpublic", "-On", "-t0.2", "-r0", *arguments]


def is_there(instance):
    result = subprocess.run(client("snmpget", ADDRESS, instance), capture_output=True, text=True)
    return result.returncode == 0 and "No Such" not in result.stdout


def wait_for(instance, patience=30):
    """When it was there."""
    end = time.monotonic() + patience
    while not is_there(instance):
        if time.monotonic() > end:
            sys.exit(f"{instance} does not come back")
        time.sleep(0.01)
    return time.monotonic()


def walk():
    """The identifiers, in the order in which they came."""
    result = subprocess.run(["snmpbulkwalk", "-v2c", "-cpublic", "-On", ADDRESS, OURS_AND_OTHERS],
                            capture_output=True, text=True, check=True)
    rows = [line.split(" ")[0] for line in result.stdout.splitlines() if line.startswith(".1.")]
    return [tuple(int(part) for part in row[1:].split(".")) for row in rows]


class Bed:
    def __init__(self, folder, ipmibd):
        self.folder = folder
        socket = os.path.join(folder, "master")
        self.write("snmpd.conf", f"rocommunity public 127.0.0.1\nmaster agentx\nagentXSocket {socket}\n")
        self.write("ipmibd.conf", "")
        os.environ["SNMP_PERSISTENT_DIR"] = os.path.join(folder, "persistent")
        os.environ["MIBS"] = ""
        self.start_master()
        self.log = os.path.join(folder, "ipmibd.log")
        self.agent = subprocess.Popen([ipmibd, "-f", "-Lf", self.log, "-C", "-c", os.path.join(folder, "ipmibd.conf"),
                                       "-x", socket])

    def write(self, name, content):
        with open(os.path.join(self.folder, name), "w", encoding="ascii") as file:
            file.write(content)

    def start_master(self):
        self.master = subprocess.Popen(
            ["/usr/sbin/snmpd", "-f", "-Lf", os.path.join(self.folder, "snmpd.log"), "-C",
             "-c", os.path.join(self.folder, "snmpd.conf"), "-I", "-smux,mteTrigger,mteTriggerConf", ADDRESS])

    def end_master(self, number):
        self.master.send_signal(number)
        self.master.wait()

    def end(self):
        self.agent.terminate()
        status = self.agent.wait(10)
        self.end_master(signal.SIGKILL)
        return status


def soak(bed, count):
    wait_for(OURS)
    expected = walk()
    since_start, since_answer = [], []
    for i in range(count):
        walker = None
        if i % 2:
            walker = subprocess.Popen(client("snmpwalk", ADDRESS, OURS_AND_OTHERS), stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
            time.sleep(random.uniform(0.02, 0.1))
        bed.end_master(signal.SIGTERM if i % 4 > 1 else signal.SIGKILL)
        time.sleep(random.uniform(0, 0.5))
        start = time.monotonic()
        bed.start_master()
        answers = wait_for(UP_TIME)
        back = wait_for(OURS)
        since_start.append(back - start)
        since_answer.append(back - answers)
        if walker:
            walker.wait()
        rows = walk()
        if rows != expected or any(a >= b for a, b in zip(rows, rows[1:])):
            sys.exit(f"restart {i + 1}: the walk differs from the one before the first restart")
    late = sum(1 for seconds in since_start if seconds > LIMIT)
    print(f"{count} restarts of the master, {count // 2} of them in the middle of a walk")
    for what, seconds in (("it starts", since_start), ("it answers", since_answer)):
        print(f"our rows are back after {what}: median {statistics.median(seconds):.2f} s, "
              f"maximum {max(seconds):.2f} s")
    print(f"later than {LIMIT:.0f} s after it starts: {late}")
    return late == 0


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    if os.environ.get("IPMIB_SOAK_INSIDE") is None:
        os.environ["IPMIB_SOAK_INSIDE"] = "1"
        os.execvp("unshare", ["unshare", "-n", sys.executable, *sys.argv])
    subprocess.run("ip link set lo up", shell=True, check=True)
    folder = tempfile.mkdtemp(prefix="ipmib-soak-")
    bed = Bed(folder, sys.argv[1])
    good = False
    try:
        good = soak(bed, int(sys.argv[2]) if len(sys.argv) > 2 else 100)
    finally:
        good = bed.end() == 0 and good
        if not good:
            with open(bed.log, encoding="utf-8") as log:
                print(log.read()[-4000:], file=sys.stderr)
        shutil.rmtree(folder)
    sys.exit(0 if good else 1)


main()
