#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""How long it takes from the kernel's announcement of a link that goes up or down to the packet for a real snmptrapd.

    bench/notification_delay.py IPMIBD [TRANSITIONS]

As root: it makes a network namespace of its own.
"""
import os
import select
import socket
import struct
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "tests", "notifications"))
from receiver import Link, Program, Receiver, enter_namespace, make_links

RTMGRP_LINK, RTM_NEWLINK, IFLA_OPERSTATE, IF_OPER_UP = 1, 16, 16, 6


def oper_states(data):
    """(ifIndex, whether it is up) of each message of a datagram."""
    while len(data) >= 16:
        size, kind = struct.unpack_from("IH", data)
        if kind == RTM_NEWLINK:
            index, = struct.unpack_from("i", data, 20)
            place = 32
            while place + 4 <= size:
                length, attribute = struct.unpack_from("HH", data, place)
                if attribute == IFLA_OPERSTATE:
                    yield index, data[place + 4] == IF_OPER_UP
                place += (max(length, 4) + 3) & ~3
        data = data[(size + 3) & ~3:]


class Watch:
    def __init__(self, index, port):
        self.index, self.port = index, port
        self.kernel = socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, socket.NETLINK_ROUTE)
        self.kernel.bind((0, RTMGRP_LINK))
        self.packets = socket.socket(socket.AF_PACKET, socket.SOCK_DGRAM, socket.htons(0x0800))
        self.packets.bind(("lo", 0x0800))
        self.up = True
        self.announced, self.sent = [], []

    def take(self, timeout):
        """Reads what has come; whether anything has."""
        ready = select.select([self.kernel, self.packets], [], [], timeout)[0]
        now = time.monotonic()
        if self.kernel in ready:
            for index, up in oper_states(self.kernel.recv(65536)):
                if index == self.index and up != self.up:
                    self.up = up
                    self.announced.append(now)
        if self.packets in ready:
            packet = self.packets.recv(65536)
            to_trapd = struct.unpack_from("!H", packet, 22)[0] == self.port
            name = bytes([0x2b, 6, 1, 2, 1, 2, 2, 1, 1, self.index])  # ifIndex of this one
            if to_trapd and name in packet:
                self.sent.append(now)
        return bool(ready)


def main(program, transitions=1000):
    make_links()
    with tempfile.TemporaryDirectory() as folder:
        receiver = Receiver(folder)
        agent = Program(folder, [program], f"agentaddress udp:127.0.0.1:16100\nrocommunity public\n"
                                           f"trap2sink {receiver.target} public\nlinkNotifications all\n")
        link = Link("v0")
        watch = Watch(link.index, int(receiver.target.split(":")[1]))
        while len(watch.announced) < int(transitions):
            link.set(not watch.up)
            wanted = len(watch.announced) + 1
            end = time.monotonic() + 30
            while (len(watch.announced) < wanted or len(watch.sent) < wanted) and time.monotonic() < end:
                watch.take(1)
            assert len(watch.announced) == len(watch.sent) == wanted, (len(watch.announced), len(watch.sent))
        receiver.wait_for(lambda: len(receiver.transitions(link.index)) >= int(transitions), "snmptrapd has them all")
        got = len(receiver.transitions(link.index))
        agent.close()
        receiver.close()
    delays = sorted(1000 * (sent - announced) for sent, announced in zip(watch.sent, watch.announced))
    print(f"{len(delays)} transitions, snmptrapd got {got}; from the kernel's word to the packet, in milliseconds:")
    print("  median {:.2f}, 99th percentile {:.2f}, longest {:.2f}".format(
        delays[len(delays) // 2], delays[len(delays) * 99 // 100], delays[-1]))


if __name__ == "__main__":
    enter_namespace()
    main(*sys.argv[1:])
