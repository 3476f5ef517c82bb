#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""How long it takes from the moment before a link is set up or down to the packet for a real snmptrapd, by the kernel's
clock; so the kernel's own part is in it.

    bench/notification_delay.py IPMIBD [TRANSITIONS]

As root: it makes a network namespace of its own.
"""
import os
import socket
import struct
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "tests", "notifications"))
from receiver import Link, Program, Receiver, enter_namespace, make_links

SO_TIMESTAMPNS = 35
PATIENCE = 30


class Watch:
    """The packets to the receiver that tell of one interface."""

    def __init__(self, index, port):
        self.index, self.port = index, port
        self._socket = socket.socket(socket.AF_PACKET, socket.SOCK_DGRAM, socket.htons(0x0800))
        self._socket.bind(("lo", 0x0800))
        self._socket.setsockopt(socket.SOL_SOCKET, SO_TIMESTAMPNS, 1)
        self._socket.settimeout(PATIENCE)

    def next(self):
        """When the next one was on its way, in nanoseconds."""
        while True:
            packet, notes, _, _ = self._socket.recvmsg(65536, 256)
            to_trapd = struct.unpack_from("!H", packet, 22)[0] == self.port
            name = bytes([0x2b, 6, 1, 2, 1, 2, 2, 1, 1, self.index])  # ifIndex of this one
            if to_trapd and name in packet:
                seconds, nanoseconds = struct.unpack("qq", notes[0][2][:16])
                return seconds * 1_000_000_000 + nanoseconds


def main(program, transitions=1000):
    make_links()
    with tempfile.TemporaryDirectory() as folder:
        receiver = Receiver(folder)
        agent = Program(folder, [program], f"agentaddress udp:127.0.0.1:16100\nrocommunity public\n"
                                           f"trap2sink {receiver.target} public\nlinkNotifications all\n")
        link = Link("v0")
        watch = Watch(link.index, int(receiver.target.split(":")[1]))
        delays = []
        for number in range(int(transitions)):
            begun = time.time_ns()
            link.set(number % 2 == 1)
            delays.append((watch.next() - begun) / 1e6)
        receiver.wait_for(lambda: len(receiver.transitions(link.index)) >= int(transitions), "snmptrapd has them all")
        got = len(receiver.transitions(link.index))
        agent.close()
        receiver.close()
    delays.sort()
    print(f"{len(delays)} transitions, snmptrapd got {got}; from before the change to the packet, in milliseconds:")
    print("  median {:.2f}, 99th percentile {:.2f}, longest {:.2f}".format(
        delays[len(delays) // 2], delays[len(delays) * 99 // 100], delays[-1]))


if __name__ == "__main__":
    enter_namespace()
    main(*sys.argv[1:])
