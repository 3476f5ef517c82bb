#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Deletes a network namespace and makes it again, again and again, in the middle of walks in its context and in that of
another one, which stays. What is shown under its name is the one that is there, the other one's walks are whole, and memory and
descriptors stay level. In namespaces that end with it; as root.

  tests/e2e/namespace_soak.py IPMIBD [COUNT [any-memory]]

With the last word memory is not looked at: sanitizers keep what has been freed.
"""
import random
import sys
import threading
import time

from namespaces_bed import Agent, IF_DESCR, Manager, PATIENCE, go_inside, ip

MEMORY_LIMIT = 1024  # KiB, of both processes
NEIGHBOURS = "1.3.6.1.2.1.4.35.1.4"
STAYING = 300  # neighbours


class Walker(threading.Thread):
    """Walks all the time."""

    def __init__(self, context, root, timeout):
        super().__init__(daemon=True)
        self.manager = Manager(context, timeout)
        self.root = root
        self.lengths = []
        self.goes_on = True

    def run(self):
        while self.goes_on:
            values = self.manager.walk(self.root)
            self.lengths.append(None if values is None else len(values))

    def end(self):
        self.goes_on = False
        self.join(PATIENCE)


def make(number):
    ip("netns", "add", "again")
    ip("-n", "again", commands=f"link add now{number} type veth peer name peer{number}\nlink set now{number} up\n"
                               f"link set peer{number} up\naddress add 2001:db8::{number + 1:x}/64 dev now{number}\n")


def wait_for(number, manager):
    """Until the context shows this one and none before it."""
    wanted = f"now{number}".encode()
    end = time.monotonic() + PATIENCE
    while True:
        names = manager.walk(IF_DESCR)
        if names and wanted in names:
            older = [name for name in names if name.startswith(b"now") and name != wanted]
            if older:
                raise RuntimeError(f"beside {wanted} there is {older}")
            return
        if time.monotonic() > end:
            raise RuntimeError(f"{wanted} is not shown, but {names}")
        time.sleep(0.002)


def level(agent):
    """Descriptors and memory of each process; one more descriptor is there for a moment while it is handed over."""
    counts = []
    for _ in range(20):
        counts.append(agent.descriptors())
        time.sleep(0.01)
    return [min(each) for each in zip(*counts)], agent.memory()


def soak(agent, count):
    warm = max(min(count // 4, 100), 5)
    manager = Manager("again", 0.5)
    walkers = [Walker("stays", NEIGHBOURS, 10.0), Walker("again", "1.3.6.1.2.1", 0.1)]
    for walker in walkers:
        walker.start()
    at_first = None
    for number in range(count):
        make(number)
        wait_for(number, manager)
        if number in (warm, count - 1):
            Manager("again").walk("1.3.6.1.2.1")  # what is opened when it is asked for is open
        if number == warm:
            at_first = level(agent)
        if number + 1 < count:
            time.sleep(random.random() * 0.01)
            ip("netns", "del", "again")
    for walker in walkers:
        walker.end()
    at_last = level(agent)
    stays, again = walkers[0].lengths, walkers[1].lengths
    print(f"made {count} times, while {len(stays)} walks went on beside it and {len(again)} in it, "
          f"{again.count(None)} of these to no end")
    print(f"descriptors: {at_first[0]}, at last {at_last[0]}; memory: {at_first[1]} KiB, at last {at_last[1]} KiB "
          f"(of ipmibd and ipmib-netns)")
    wrong = [length for length in stays if length != STAYING]
    if wrong:
        print(f"walks beside it that brought other than {STAYING} rows: {wrong[:10]}")
    return not wrong and len(stays) > 1 and at_first[0] == at_last[0] and \
        ("any-memory" in sys.argv or sum(at_last[1]) - sum(at_first[1]) <= MEMORY_LIMIT)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    go_inside()
    ip("netns", "add", "stays")
    ip("-n", "stays", commands="link add lan type veth peer name far\nlink set lan up\nlink set far up\n" + "".join(
        f"neigh add 2001:db8::{i:x} dev lan lladdr 02:00:00:00:{i >> 8:02x}:{i & 255:02x} nud permanent\n"
        for i in range(1, STAYING + 1)))
    agent = Agent(sys.argv[1])
    good = False
    try:
        good = soak(agent, int(sys.argv[2]) if len(sys.argv) > 2 else 1000)
    finally:
        log = agent.log()
        good = agent.end() and good
        if not good:
            print(log[-4000:], file=sys.stderr)
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
