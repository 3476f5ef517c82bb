#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What network namespaces cost as contexts. In namespaces that end with it; as root, some two
minutes.

  bench/namespaces.py [--count 500] [--neighbours 20000] [--only namespaces|beside] [--write docs/contexts.md]
"""
import argparse
import multiprocessing
import os
import random
import statistics
import sys
import time

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(root, "tests", "e2e"))

from namespaces_bed import Agent, GET, IF_DESCR, Manager, go_inside, ip  # noqa: E402
from put_into import put_into  # noqa: E402

ALL = "1.3.6.1.2.1"
NEIGHBOURS = "1.3.6.1.2.1.4.35.1.4"
IDLE_SECONDS = 20
RATE = 100
ASKING_SECONDS = 10


def make(name, neighbours=0):
    """A router with a line, both ends of which are in it."""
    ip("netns", "add", name)
    ip("-n", name, commands="link set lo up\nlink add lan type veth peer name far\nlink set lan up\nlink set far up\n"
                            "address add 192.0.2.1/24 dev lan\naddress add 2001:db8::1/64 dev lan nodad\n" + "".join(
                                f"neigh add 2001:db8::{i >> 16:x}:{i & 0xffff:x} dev lan "
                                f"lladdr 02:00:00:{i >> 16:02x}:{i >> 8 & 255:02x}:{i & 255:02x} nud permanent\n"
                                for i in range(2, neighbours + 2)))


def mebibytes(kibibytes):
    return f"{kibibytes / 1024:.2f} MB"


def started(program, *options, **settings):
    began = time.monotonic()
    agent = Agent(program, *options, **settings)
    return agent, time.monotonic() - began


def idle(agent):
    """Share of a processor, and how often any of its processes woke up, while nobody asks."""
    time.sleep(15)  # the kernel itself has things to announce for a while after it made them
    seconds, wakeups = agent.seconds(), sum(agent.wakeups())
    time.sleep(IDLE_SECONDS)
    return (agent.seconds() - seconds) / IDLE_SECONDS, sum(agent.wakeups()) - wakeups


def namespaces(program, count):
    alone, _ = started(program)
    own, own_descriptors = alone.memory()[0], alone.descriptors()[0]
    alone.end()
    names = [f"router{number:03}" for number in range(count)]
    for name in names:
        make(name)
    agent, ready = started(program)
    time.sleep(1)
    processor = agent.seconds()
    memory, descriptors = agent.memory(), agent.descriptors()
    share, wakeups = idle(agent)
    for name in names:
        if len(Manager(name, 30).walk(ALL, 50) or []) < 100:
            sys.exit(f"{name} is not shown: {agent.log()[-2000:]}")
    asked, asked_descriptors = agent.memory(), agent.descriptors()
    agent.end()
    for name in names:
        ip("netns", "del", name)
    yield f"{count} namespaces of 3 interfaces, until all are served", f"{ready:.1f} s, {processor:.1f} s of a processor"
    yield "memory, each", mebibytes((memory[0] - own) / count)
    yield "memory, each, after a walk over everything", mebibytes((asked[0] - own) / count)
    yield "memory of `ipmib-netns`", mebibytes(memory[1])
    yield "descriptors, each", f"{(descriptors[0] - own_descriptors) / count:.0f}, after a walk " \
                               f"{(asked_descriptors[0] - own_descriptors) / count:.0f}"
    yield f"processor time while nobody asks, {IDLE_SECONDS} s", f"{share:.4%}, woken up {wakeups} times"


def walk_for_ever(context, walks):
    manager = Manager(context, 30)
    while True:
        manager.walk(NEIGHBOURS, 50)
        walks.value += 1


def waits(context):
    """Milliseconds until a GET is answered, at a fixed rate whatever the answers."""
    manager = Manager(context, 5)
    found, turn = [], time.monotonic()
    for _ in range(RATE * ASKING_SECONDS):
        turn += 1 / RATE
        time.sleep(max(turn - time.monotonic(), 0))
        began = time.monotonic()
        if manager.ask(GET, [random.choice([IF_DESCR + ".1", "1.3.6.1.2.1.4.31.1.1.3.2", "1.3.6.1.2.1.1.5.0"])]) is None:
            sys.exit("a GET was not answered")
        found.append((time.monotonic() - began) * 1000)
    return sorted(found)


def told(found):
    return f"median {statistics.median(found):.2f} ms, p99 {found[int(len(found) * 0.99)]:.2f} ms, longest {found[-1]:.1f} ms"


def beside(program, neighbours):
    os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(5))  # all of it: the question is what the agent does, and not what else the machine has to do
    make("small")
    make("large", neighbours)
    agent, _ = started(program)
    try:
        length = len(Manager("large", 30).walk(NEIGHBOURS, 50) or [])
        if length < neighbours:
            sys.exit(f"{length} neighbours are shown")
        alone = waits("small")
        walks = multiprocessing.Value("i", 0)
        walker = multiprocessing.Process(target=walk_for_ever, args=("large", walks), daemon=True)
        walker.start()
        time.sleep(1)
        walked = waits("small")
        walker.kill()
        walker.join()
    finally:
        agent.end()
    yield f"GETs in a namespace, {RATE} a second", told(alone)
    yield f"the same beside one with {neighbours:,} neighbours that is walked all the time, {walks.value} times meanwhile", told(walked)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default=os.path.join(root, "build"))
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--neighbours", type=int, default=20_000)
    parser.add_argument("--only", choices=["namespaces", "beside"])
    parser.add_argument("--write")
    options = parser.parse_args()
    go_inside()
    program = os.path.join(options.build, "sbin", "ipmibd")
    rows = []
    for part, measure in (("namespaces", lambda: namespaces(program, options.count)),
                          ("beside", lambda: beside(program, options.neighbours))):
        if options.only in (None, part):
            rows += measure()
    text = "\n".join(["| | |", "|---|---|"] + [f"| {what} | {figure} |" for what, figure in rows])
    print(text)
    if options.write:
        put_into(options.write, "bench/namespaces.py", text)


if __name__ == "__main__":
    main()
