#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What users have today, Debian's snmpd, and what they get: the short table of README.md.

As root, on a machine that does nothing else, some six minutes:

  bench/first_page.py                       prints it
  bench/first_page.py --write README.md     puts it there, too

Both agents see the same kernel state, in network namespaces of their own, one after the other: a router of 20,000
neighbours, 2,000 addresses and 256 interfaces, and one of 120,000 routes.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor

import full_table
import kernel_state
from put_into import put_into
from side_by_side import report
from side_by_side.agents import ADDRESS, AGENTS, snmpd_program
from side_by_side.measure import Measurement

COMPARED = ("snmpd", "ipmibd")
NEIGHBOURS, ADDRESSES, INTERFACES = 20_000, 2_000, 256
IPV4, IPV6 = 100_000, 20_000
PATIENCE = 60  # seconds for an answer about routes
LOOKS = 90  # seconds for a change to be seen
ASKED = ("1.3.6.1.2.1.4.31.3.1.3", "1.3.6.1.2.1.4.34.1.3", "1.3.6.1.2.1.4.35.1.4")


def standards(options):
    """Tables with rows, and what of the standards is broken."""
    done = subprocess.run([f"{options.build}/bin/ipmib-agentcheck", "--json", "--rate=20000", "-v2c", "-cpublic", "-t5",
                           ADDRESS], stdout=subprocess.PIPE, text=True, check=False)
    found = json.loads(done.stdout)
    tables = [fact for fact in found["facts"] if " rows" in fact]
    return {"tables": sum(not fact.endswith(": 0 rows") for fact in tables), "of": len(tables),
            "broken": len({finding["rule"] for finding in found["findings"]})}


def on_the_router(options, name):
    with AGENTS[name](options.build, NEIGHBOURS) as agent:
        measurement = Measurement(options.build, agent)
        measurement.wait_until_ready()
        gets = measurement.load("gets", 100, options.seconds, *ASKED)
        idle = agent.idle_ms(20)
        changes = measurement.staleness("left0", 20, LOOKS, together=True)
        memory = agent.peak_memory_mb()
        return {"gets": gets, "idle_ms": idle, "staleness": changes, "memory_mb": memory, "standards": standards(options)}


def waited(name):
    """Milliseconds for an answer; None without one."""
    begin = time.monotonic()
    answer = full_table.ask(name, PATIENCE)
    return None if answer is None else (time.monotonic() - begin) * 1000


def on_a_full_table(options, name):
    with AGENTS[name](options.build, 0) as agent:
        Measurement(options.build, agent).wait_until_ready()
        with ThreadPoolExecutor() as pool:
            answer = pool.submit(waited, full_table.NUMBER)
            others = [waited("1.3.6.1.2.1.1.3.0")]
            while not answer.done():
                others.append(waited("1.3.6.1.2.1.1.3.0"))
        return {"routes_ms": answer.result(), "other_ms": None if None in others else max(others),
                "memory_mb": agent.peak_memory_mb()}


def router(options):
    kernel_state.make(INTERFACES, ADDRESSES, NEIGHBOURS)
    return {name: on_the_router(options, name) for name in COMPARED}


def routes(options):
    full_table.make_links()
    with tempfile.NamedTemporaryFile("w") as batch:
        batch.writelines(line + "\n" for line in full_table.route_commands("add", IPV4, IPV6, 1_000, False))
        batch.flush()
        subprocess.run(["ip", "-batch", batch.name], check=True)
    return {name: on_a_full_table(options, name) for name in COMPARED}


BEDS = {"router": router, "routes": routes}


def time_of(milliseconds):
    if milliseconds is None:
        return f"none within {PATIENCE} s"
    if milliseconds >= 1000:
        return f"{milliseconds / 1000:.1f} s"
    return f"{milliseconds:.0f} ms" if milliseconds >= 10 else f"{milliseconds:.2g} ms"


def stale(each):
    return f"not within {LOOKS} s" if each["unseen"] else time_of(each["max_ms"])


def table(router_bed, routes_bed):
    def line(what, cell):
        return report.row(what, *(cell(router_bed[name], routes_bed[name]) for name in COMPARED))

    yield f"{report.machine()}; {NEIGHBOURS:,} neighbours, {ADDRESSES:,} addresses, {INTERFACES} interfaces, and apart from that " \
          f"{IPV4 + IPV6:,} routes.\n"
    yield report.header("", "snmpd", "ipmibd")
    yield line("a GET waits, at most (100 a second)", lambda on, _: time_of(on["gets"]["worst_ms"]))
    for kind in ("neighbour", "address", "route", "interface"):
        yield line(f"a change shows after, at most: {kind}", lambda on, _, kind=kind: stale(on["staleness"][kind]))
    yield line("the number of routes is answered after",
               lambda _, on: time_of(on["routes_ms"]))
    yield line("a GET of sysUpTime waits meanwhile, at most", lambda _, on: time_of(on["other_ms"]))
    yield line("tables with rows", lambda on, _: f"{on['standards']['tables']} of {on['standards']['of']}")
    yield line("rules of the standards that [ipmib-agentcheck](docs/agentcheck.md) finds broken", lambda on, _: on["standards"]["broken"])
    yield line("memory at most: neighbours; routes", lambda on, full: f"{on['memory_mb']:.0f} MB; {full['memory_mb']:.0f} MB")
    yield line("processor time while nobody asks", lambda on, _: f"{on['idle_ms'] / 20:.2g} ms/s")


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--seconds", type=int, default=20, help="of single GETs")
    parser.add_argument("--write", metavar="FILE", help="put the table between the marks in this file")
    parser.add_argument("--inside", choices=BEDS, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    if options.inside:
        json.dump(BEDS[options.inside](options), sys.stdout)
        return
    if os.geteuid() != 0:
        parser.error("it makes network namespaces, which needs root")
    if not snmpd_program():
        parser.error("snmpd is not installed")
    found = [json.loads(subprocess.run(["unshare", "-n", sys.executable, os.path.abspath(__file__), *arguments, "--inside", bed],
                                       stdout=subprocess.PIPE, text=True, check=True).stdout) for bed in BEDS]
    text = "\n".join(table(*found))
    print(text)
    if options.write:
        put_into(options.write, "bench/first_page.py", text)


if __name__ == "__main__":
    main(sys.argv[1:])
