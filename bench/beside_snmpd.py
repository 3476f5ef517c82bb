#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What managers and the machine get from Debian's snmpd alone, and from snmpd with our tables in it, with and without
its own modules for the same tables: the latency of single GETs, 100 a second, and processor time while nobody asks, of all
processes together. All share one processor core with the manager, in a network namespace of their own.

As root, on a machine that does nothing else; some eleven minutes:

  bench/beside_snmpd.py                                 at 20,000 neighbours, 2,000 addresses, 256 interfaces
  bench/beside_snmpd.py --write docs/agentx.md          puts the table there
"""
import argparse
import os
import re
import statistics
import sys

import kernel_state
from put_into import put_into
from side_by_side import report
from side_by_side.agents import InSnmpd, Snmpd, SubAgent
from side_by_side.measure import Measurement

# Of each table the instances of one column are asked for.
COLUMNS = {
    "ip": "1.3.6.1.2.1.4.3",
    "ifTable": "1.3.6.1.2.1.2.2.1.10",
    "ifXTable": "1.3.6.1.2.1.31.1.1.1.6",
    "ipSystemStatsTable": "1.3.6.1.2.1.4.31.1.1.4",
    "ipIfStatsTable": "1.3.6.1.2.1.4.31.3.1.6",
    "ipAddressPrefixTable": "1.3.6.1.2.1.4.32.1.5",
    "ipAddressTable": "1.3.6.1.2.1.4.34.1.3",
    "ipNetToPhysicalTable": "1.3.6.1.2.1.4.35.1.6",
    "icmpStatsTable": "1.3.6.1.2.1.5.29.1.2",
}
DROP_IN = os.path.dirname(os.path.abspath(__file__)) + "/../packaging/examples/snmpd.service.d/ipmib.conf"


class WithoutModules:
    """In front of a kind of snmpd: that one, without the modules that the packaged setting leaves out."""

    def commands(self):
        with open(DROP_IN, encoding="ascii") as file:
            modules = re.search(r"^ExecStart=/.* -I (\S+)", file.read(), re.M)[1]
        for command in super().commands():
            yield [modules if word == "-smux" else word for word in command]


class SubAgentInPlace(WithoutModules, SubAgent):
    pass


class ObjectInPlace(WithoutModules, InSnmpd):
    pass


AGENTS = {
    "snmpd alone": Snmpd,
    "with ipmibd as sub-agent": SubAgent,
    "the same, modules left out": SubAgentInPlace,
    "with the object inside": InSnmpd,
    "the object, modules left out": ObjectInPlace,
}


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--sizes", metavar="NUMBER", nargs=3, type=int, default=[20_000, 2_000, 256],
                        help="of neighbours, addresses and interfaces")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--seconds", type=int, default=4, help="of GETs for each table and round, and twice that of silence")
    parser.add_argument("--core", default="0", help="the processor core that all share")
    parser.add_argument("--write", metavar="FILE", help="put the tables between the marks in this file")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    if os.geteuid() != 0:
        parser.error("it makes network namespaces, which needs root")
    return options


def measure(options):
    """Of each agent the rounds: what GETs of each table took, and the processor time of silence."""
    neighbours, addresses, interfaces = options.sizes
    kernel_state.make(interfaces, addresses, neighbours)
    found = {name: [] for name in AGENTS}
    for _ in range(options.rounds):
        for name, kind in AGENTS.items():
            print(name, file=sys.stderr, flush=True)
            with kind(options.build, neighbours) as agent:
                measurement = Measurement(options.build, agent)
                measurement.wait_until_ready()
                gets = {table: measurement.load("gets", 100, options.seconds, column)
                        for table, column in COLUMNS.items()}
                found[name].append({"gets": gets, "idle_ms": agent.idle_ms(2 * options.seconds)})
    return found


def cell(rounds):
    """Of one table and agent."""
    text = f"{statistics.median(each['p99_ms'] for each in rounds):.2f}, {max(each['worst_ms'] for each in rounds):.2f}"
    unanswered = sum(each["unanswered"] for each in rounds)
    return text + (f", {unanswered} unanswered" if unanswered else "")


def tables(found, options):
    neighbours, addresses, interfaces = (report.grouped(size) for size in options.sizes)
    lines = [f"{report.machine()}; {neighbours} neighbours, {addresses} addresses, {interfaces} interfaces.", "",
             f"Single GETs, 100 a second, {options.rounds} times {options.seconds} s (median of the 99th percentiles and worst "
             f"of all, ms from the moment a request was due), and processor time in {2 * options.seconds} s in which nobody "
             "asks (median, ms):", "", report.header("table", *found)]
    for table in COLUMNS:
        lines.append(report.row(table, *(cell([each["gets"][table] for each in rounds]) for rounds in found.values())))
    silence = (statistics.median(each["idle_ms"] for each in rounds) for rounds in found.values())
    lines.append(report.row("nobody asks", *(f"{spent:.1f}" for spent in silence)))
    return "\n".join(lines)


def main(arguments):
    options = parse(arguments)
    if not options.inside:
        os.execvp("unshare", ["unshare", "-n", "taskset", "-c", options.core, sys.executable, os.path.abspath(__file__),
                              *arguments, "--inside"])
    text = tables(measure(options), options)
    print(text)
    if options.write:
        put_into(options.write, "bench/beside_snmpd.py", text)


if __name__ == "__main__":
    main(sys.argv[1:])
