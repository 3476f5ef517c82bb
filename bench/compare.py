#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Compares the agent that users have today, Debian's snmpd, with ours and with the floor: our agent in front of a table
that costs nothing. All stand on the same kernel state, in a network namespace of their own, and on one processor core
together with the manager that asks; on two, the ratio of an agent to itself is anything between a half and two. They
take turns, A B C A B C, and what is printed are medians.

As root, on a machine that does nothing else:

  bench/compare.py                                a set of states that takes some ten minutes
  bench/compare.py --write docs/performance.md    puts the tables there
  bench/compare.py --all                          every combination of 1,000, 20,000 and 100,000 neighbours, 100 and
                                                  2,000 addresses, 16 and 256 interfaces
"""
import argparse
import itertools
import json
import os
import subprocess
import sys
import time

import kernel_state
from put_into import put_into
from side_by_side import report
from side_by_side.agents import AGENTS, snmpd_program
from side_by_side.measure import ROUTES, Measurement, TABLES

NEIGHBOURS = ["ipNetToPhysicalTable"]
ONLY_NEIGHBOURS = ("floor", "dlmod", "agentx")  # the floor has no other table, and one shows what the others cost
ONLY_IN = {"dlmod": 20_000, "agentx": 20_000}  # neighbours; one size shows it
TIMED = ("ipmibd", "snmpd")
ADDRESSES = ["ipAddressPrefixTable", "ipAddressTable"]


MOST_ROUTES_BESIDE = 10_000  # with more the others answer after minutes, or not at all


def state(neighbours, addresses, interfaces, tables=None, router=False, routes=0):
    """In a state that stands for a router everything is measured, also what takes long."""
    return {"neighbours": neighbours, "addresses": addresses, "interfaces": interfaces, "routes": routes,
            "tables": tables or [table for table in TABLES if table not in ROUTES], "router": router}


DEFAULT_STATES = [
    state(1_000, 100, 16),
    state(20_000, 100, 16, NEIGHBOURS),
    state(100_000, 100, 16, NEIGHBOURS),
    state(1_000, 2_000, 64, ADDRESSES),
    state(20_000, 2_000, 256, router=True),
    state(100, 10, 16, list(ROUTES), routes=1_000),
    state(100, 10, 16, list(ROUTES), routes=10_000),
    state(100, 10, 16, list(ROUTES), routes=100_000),
]
ALL_STATES = [state(*sizes, router=sizes == (20_000, 2_000, 256))
              for sizes in itertools.product((1_000, 20_000, 100_000), (100, 2_000), (16, 256))]


def three_numbers(text):
    numbers = [int(number) for number in text.split(",")]
    if len(numbers) != 3 or min(numbers) < 0 or numbers[2] < 1:
        raise ValueError
    return numbers


def table_names(text):
    for name in text.split(","):
        if name not in TABLES:
            raise argparse.ArgumentTypeError(f"{name} is not one of {', '.join(TABLES)}")
    return text.split(",")


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--agents", default="ipmibd,snmpd,floor,dlmod,agentx", help="of " + ", ".join(AGENTS))
    parser.add_argument("--all", action="store_true", help="all states")
    parser.add_argument("--sizes", metavar="NEIGHBOURS,ADDRESSES,INTERFACES", action="append", type=three_numbers,
                        help="a state of your own; may be given again")
    parser.add_argument("--routes", metavar="NUMBER", action="append", type=int,
                        help="so many routes instead, and their tables; may be given again")
    parser.add_argument("--tables", type=table_names, help="only these, of " + ", ".join(TABLES))
    parser.add_argument("--walks-only", action="store_true", help="no single GETs, no staleness, no idling")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--seconds", type=int, default=10, help="of single GETs, 100 a second, for each table")
    parser.add_argument("--changes", type=int, default=1_000, help="of each kind, for staleness")
    parser.add_argument("--core", default="0", help="the processor core that all share")
    parser.add_argument("--write", metavar="FILE", help="put the tables between the marks in this file")
    parser.add_argument("--inside", help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    options.agents = options.agents.split(",")
    for agent in options.agents:
        if agent not in AGENTS:
            parser.error(f"--agents: {agent} is not one of {', '.join(AGENTS)}")
    if os.geteuid() != 0:
        parser.error("it makes network namespaces, which needs root")
    if {"snmpd", "dlmod", "agentx"} & set(options.agents) and not snmpd_program():
        parser.error("snmpd is not installed; --agents ipmibd,floor does without it")
    for program in ("sbin/ipmibd", "bench/bench_load"):
        if not os.access(f"{options.build}/{program}", os.X_OK):
            parser.error(f"{options.build}/{program} is not built")
    return options


def say(text):
    print(f"{time.strftime('%H:%M:%S')} {text}", file=sys.stderr, flush=True)


class Inside:
    """Measures one state, in its namespace."""

    def __init__(self, options, about):
        self.options = options
        self.about = about
        self.agents = [name for name in options.agents
                       if options.sizes or about["neighbours"] == ONLY_IN.get(name, about["neighbours"])]
        if about["routes"] > MOST_ROUTES_BESIDE:
            self.agents = [name for name in self.agents if name == "ipmibd"]
        self.walks = {}  # table -> way -> agent -> list
        self.memory = {agent: [] for agent in options.agents}
        self.columns = {}

    def run(self):
        about = self.about
        say(f"{about['neighbours']} neighbours, {about['addresses']} addresses, {about['interfaces']} interfaces, "
            f"{about['routes']} routes")
        kernel_state.make(about["interfaces"], about["addresses"], about["neighbours"], about["routes"])
        self.find_columns()
        for number in range(self.options.rounds):
            for name in self.agents:
                if name not in ONLY_NEIGHBOURS or any(table in NEIGHBOURS for table in about["tables"]):
                    say(f"  walks, round {number + 1}, {name}")
                    self.with_agent(name, self.measure_walks)
        result = {"state": about, "walks": self.walks, "memory": self.memory}
        if about["router"] and not self.options.walks_only:
            for name in self.options.agents:
                if name in TIMED:
                    result[name] = self.with_agent(name, self.measure_times)
        return result

    def with_agent(self, name, measure):
        with AGENTS[name](self.options.build, self.about["neighbours"]) as agent:
            measurement = Measurement(self.options.build, agent)
            measurement.wait_until_ready()
            return measure(name, measurement)

    def find_columns(self):
        """Those that all agents serve; the floor has but one table, with the columns that ipmibd has there."""
        def served(_, measurement):
            return {table: measurement.columns(table) for table in self.about["tables"]}
        found = [self.with_agent(name, served) for name in self.agents if name not in ONLY_NEIGHBOURS]
        for table in self.about["tables"]:
            self.columns[table] = [column for column in found[0][table] if all(column in each[table] for each in found)]
            if not self.columns[table]:
                say(f"  {table}: no column that all serve")

    def measure_walks(self, name, measurement):
        for table, columns in self.columns.items():
            if not columns or (name in ONLY_NEIGHBOURS and table not in NEIGHBOURS):
                continue
            for way, numbers in measurement.walks(table, columns, at_least=2_000).items():
                self.walks.setdefault(table, {}).setdefault(way, {}).setdefault(name, []).append(numbers)
        self.memory[name].append(measurement.agent.peak_memory_mb())

    def measure_times(self, name, measurement):
        say(f"  single GETs, {name}")
        is_ours = name != "snmpd"
        gets = {table: measurement.gets(table, columns, 100, self.options.seconds)
                for table, columns in self.columns.items() if columns}
        say(f"  idle, {name}")
        idle = measurement.agent.idle_ms(20)
        say(f"  staleness, {name}")
        changes, seconds = (self.options.changes, 60) if is_ours else (self.options.changes, 90)
        single = measurement.staleness("left0", changes, seconds, together=not is_ours)
        burst = measurement.staleness("left0", 6, seconds, burst=20_000) if is_ours else None
        return {"gets": gets, "idle_ms": idle, "staleness": single, "staleness_burst": burst}


def measure_outside(options, about):
    command = ["unshare", "-n", "taskset", "-c", options.core, sys.executable, os.path.abspath(__file__),
               *sys.argv[1:], "--inside", json.dumps(about)]
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"compare.py: the measurement has failed at {about}")
    return json.loads(done.stdout)


def states_of(options):
    states = ALL_STATES if options.all else DEFAULT_STATES
    if options.sizes:
        states = [state(*sizes, router=True) for sizes in options.sizes]
    if options.routes:
        states = [state(100, 10, 16, list(ROUTES), routes=number) for number in options.routes]
    for about in states:
        if options.tables:
            about["tables"] = [table for table in about["tables"] if table in options.tables]
    return [about for about in states if about["tables"]]


def main(arguments):
    options = parse(arguments)
    if options.inside:
        json.dump(Inside(options, json.loads(options.inside)).run(), sys.stdout)
        return
    begin = time.time()
    results = [measure_outside(options, about) for about in states_of(options)]
    text = report.tables(results, options)
    print(text)
    if options.write:
        put_into(options.write, "bench/compare.py", text)
    say(f"took {(time.time() - begin) / 60:.1f} minutes")


if __name__ == "__main__":
    main(sys.argv[1:])
