# SPDX-License-Identifier: BSD-3-Clause
"""What is measured of an agent, in the namespace where it runs."""
import json
import subprocess
import time
from concurrent.futures import ThreadPoolExecutor

from side_by_side.agents import ADDRESS

TABLES = {
    "ipSystemStatsTable": "1.3.6.1.2.1.4.31.1.1",
    "ipIfStatsTable": "1.3.6.1.2.1.4.31.3.1",
    "ipAddressPrefixTable": "1.3.6.1.2.1.4.32.1",
    "ipAddressTable": "1.3.6.1.2.1.4.34.1",
    "ipNetToPhysicalTable": "1.3.6.1.2.1.4.35.1",
    "ipDefaultRouterTable": "1.3.6.1.2.1.4.37.1",
    "icmpStatsTable": "1.3.6.1.2.1.5.29.1",
    "icmpMsgStatsTable": "1.3.6.1.2.1.5.30.1",
    "inetCidrRouteTable": "1.3.6.1.2.1.4.24.7.1",
    "ipCidrRouteTable": "1.3.6.1.2.1.4.24.4.1",
    "ipRouteTable": "1.3.6.1.2.1.4.21.1",
}
ROUTES = ("inetCidrRouteTable", "ipCidrRouteTable", "ipRouteTable")
WAYS = {"GETNEXT": 0, "bulk 10": 10, "bulk 50": 50}
KINDS = ("neighbour", "address", "prefix", "route", "interface")


class Measurement:
    def __init__(self, build, agent):
        self.build = build
        self.agent = agent

    def load(self, *arguments):
        self.agent.check()
        pids = ",".join(map(str, self.agent.pids))
        return self.run([f"{self.build}/bench/bench_load", ADDRESS, pids, *map(str, arguments)])

    @staticmethod
    def run(command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
        if done.returncode != 0:
            raise RuntimeError(f"{' '.join(command)}: {done.stderr.strip()}")
        return json.loads(done.stdout) if done.stdout else None

    def wait_until_ready(self):
        self.load("ready")
        for _ in range(600):
            if self.agent.is_ready():
                return
            time.sleep(0.1)
        raise RuntimeError(f"not ready within a minute: {self.agent.log_text().strip()}")

    def columns(self, table):
        return self.load("columns", TABLES[table])

    def walks(self, table, columns, at_least):
        """Of one column, and of all of them side by side, in each way."""
        entry = TABLES[table]
        names = [f"{entry}.{column}" for column in columns]
        found = {}
        for way, repetitions in WAYS.items():
            found[f"{way}, one column"] = self.load("walk", repetitions, at_least, names[0])
            if len(names) > 1:
                found[f"{way}, {len(names)} columns"] = self.load("walk", repetitions, at_least, *names)
        return found

    def gets(self, table, columns, rate, seconds):
        return self.load("gets", rate, seconds, *(f"{TABLES[table]}.{column}" for column in columns))

    def staleness(self, interface, changes, seconds, burst=0, together=False):
        """Of each kind of change, one after the other. Together is for an agent that takes most of a minute to notice."""
        def one(kind):
            return self.run([f"{self.build}/bench/bench_staleness", ADDRESS, interface, kind, str(changes),
                             str(seconds), str(burst)])
        with ThreadPoolExecutor(len(KINDS) if together else 1) as pool:
            return dict(zip(KINDS, pool.map(one, KINDS)))
