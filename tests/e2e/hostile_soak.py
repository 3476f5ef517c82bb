#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Hostile clients of every kind at once, while a normal one asks a hundred times a second: tells how long that one waits, and
what the agent's memory and descriptors do. In a network namespace that ends with it; as root. The hostile ones run at a lower
priority, so that the time is the agent's and not that of their own computing.

  tests/e2e/hostile_soak.py IPMIBD [SECONDS]
"""
import multiprocessing
import os
import random
import shutil
import socket
import subprocess
import sys
import tempfile
import time

P99_LIMIT = 5.0  # milliseconds
LOST_LIMIT = 0.001  # of all questions
MEMORY_LIMIT = 2048  # KiB, between the first third, when everything has been met once, and the end
CONNECTION_LIMIT = 64 + 4  # the agent's own, and those that are just being closed
RATE = 100
PORT = 1161
AGENT = ("127.0.0.1", PORT)
HOP_LIMIT = "1.3.6.1.2.1.4.26.0"
HOP_LIMIT_FILE = "/proc/sys/net/ipv6/conf/default/hop_limit"
GET, GETNEXT, GETBULK, SET = 0xA0, 0xA1, 0xA5, 0xA3


def tlv(tag, content):
    length = len(content)
    if length < 128:
        return bytes([tag, length]) + content
    octets = length.to_bytes((length.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(octets)]) + octets + content


def integer(value):
    return tlv(2, value.to_bytes((value.bit_length() + 8) // 8, "big", signed=True))


def identifier(text):
    parts = [int(part) for part in text.split(".")]
    octets = bytearray([parts[0] * 40 + parts[1]])
    for part in parts[2:]:
        septets = [part & 127]
        while part := part >> 7:
            septets.append(part & 127 | 128)
        octets += bytes(reversed(septets))
    return tlv(6, bytes(octets))


def pdu(operation, names, non_repeaters=0, repetitions=0, number=1):
    variables = b"".join(tlv(0x30, identifier(name) + b"\x05\x00") for name in names)
    return tlv(operation, integer(number) + integer(non_repeaters) + integer(repetitions) + tlv(0x30, variables))


def v2(operation, names, repetitions=0, number=1, community=b"public"):
    return tlv(0x30, integer(1) + tlv(4, community) + pdu(operation, names, 0, repetitions, number))


def v3(operation, names, repetitions=0, engine=b"", user=b"", size=65507):
    security = tlv(0x30, tlv(4, engine) + integer(0) + integer(0) + tlv(4, user) + tlv(4, b"") + tlv(4, b""))
    header = tlv(0x30, integer(1) + integer(size) + tlv(4, b"\x04") + integer(3))
    scoped = tlv(0x30, tlv(4, engine) + tlv(4, b"") + pdu(operation, names, 0, repetitions))
    return tlv(0x30, integer(3) + header + tlv(4, security) + scoped)


DISCOVERY = v3(GET, [])


def datagrams():
    sock = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    sock.connect(AGENT)
    sock.setblocking(False)
    return sock


def connection(receive_buffer=0):
    sock = socket.socket()
    if receive_buffer:
        sock.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
    sock.settimeout(5)
    sock.connect(AGENT)
    return sock


def drain(sock):
    try:
        while sock.recv(65536, socket.MSG_DONTWAIT):
            pass
    except OSError:
        pass


def engine():
    sock = datagrams()
    sock.settimeout(5)
    sock.send(DISCOVERY)
    answer = sock.recv(65536)
    begin = answer.index(b"\x04\x11\x80\x00\x1f\x88") + 2
    return answer[begin:begin + 17]


def mutator():
    """Packets of each version with octets that are others."""
    kinds = [v2(GET, [HOP_LIMIT]), v2(GETBULK, ["1.3.6.1.2.1.4"], 20), v2(SET, [HOP_LIMIT]), DISCOVERY,
             v3(GETNEXT, ["1.3.6.1.2.1"] * 5, engine=engine(), user=b"open")]
    sock = datagrams()
    while True:
        packet = bytearray(random.choice(kinds))
        for _ in range(random.randint(1, 4)):
            packet[random.randrange(len(packet))] = random.randrange(256)
        sock.send(packet[:random.randint(1, len(packet))] if random.random() < 0.2 else packet)
        drain(sock)
        yield 500


def small_room():
    """SNMPv3 with room for little, of which much is asked."""
    mine = engine()
    sock = datagrams()
    while True:
        size = random.choice([484, 485, 600, 1472, 4000])
        names = ["1.3.6.1.2.1.4.31.3"] * random.choice([1, 5, 100])
        sock.send(v3(random.choice([GET, GETNEXT, GETBULK]), names, 100, mine, b"open", size))
        drain(sock)
        yield 50


def deaf():
    """Asks over TCP and does not read."""
    sock = connection(4096)
    while True:
        try:
            sock.send(DISCOVERY * 20, socket.MSG_DONTWAIT)
        except BlockingIOError:
            pass
        except OSError:
            sock.close()
            sock = connection(4096)
        yield 200


def idle():
    """Comes and does nothing, again and again, with two hundred connections at a time."""
    held = []
    while True:
        held.append(connection())
        if len(held) > 200:
            held.pop(0).close()
        yield 50


def hasty():
    """Asks for much over TCP and leaves."""
    while True:
        sock = connection()
        sock.send(v2(GETBULK, ["1.3.6.1.2.1"], 100))
        sock.close()
        yield 50


def babbler():
    """Octets over TCP that are no messages, or never become whole."""
    beginnings = [b"GET / HTTP/1.0\r\n\r\n", b"\x30\x84\x7f\xff\xff\xff" + bytes(1000), b"\x30", b"\x30\x82\xff\x00" + bytes(500),
                  os.urandom(100), DISCOVERY[:-1]]
    while True:
        sock = connection()
        for octet in random.choice(beginnings)[:50]:
            try:
                sock.send(bytes([octet]))
            except OSError:
                break
        sock.close()
        yield 20


def greedy():
    """Asks over TCP for as much as it can have, before it has read what it asked before."""
    sock = connection()
    while True:
        try:
            sock.send(v2(GETBULK, ["1.3.6.1.2.1"], 100) * 10)
        except OSError:
            sock.close()
            sock = connection()
        drain(sock)
        yield 10


def stranger():
    """Guesses communities and users."""
    sock = datagrams()
    while True:
        name = bytes(random.choices(range(97, 123), k=8))
        sock.send(v2(GET, [HOP_LIMIT], community=name))
        sock.send(v3(GET, [HOP_LIMIT], engine=engine_known, user=name))
        drain(sock)
        yield 100


engine_known = b""
KINDS = [mutator, small_room, deaf, idle, hasty, babbler, greedy, stranger]


def run_hostile(kind, end, mine):
    global engine_known
    engine_known = mine
    os.nice(10)
    random.seed(kind.__name__)
    while time.monotonic() < end:
        try:
            for rate in kind():
                if time.monotonic() >= end:
                    return
                time.sleep(1 / rate)
        except OSError:
            time.sleep(0.1)  # turned away; it tries again


class Normal:
    """Asks a hundred times a second, whatever becomes of the question before."""

    def __init__(self):
        self.sock = datagrams()
        self.asked = {}
        self.waits = []

    def ask(self, number):
        self.asked[number] = time.monotonic()
        self.sock.send(v2(GET, [HOP_LIMIT], number=number))

    def take(self, until):
        while (left := until - time.monotonic()) > 0:
            self.sock.settimeout(left)
            try:
                answer = self.sock.recv(65536)
            except (TimeoutError, OSError):
                continue
            now = time.monotonic()
            at = answer.index(b"\xa2") + 2
            number = int.from_bytes(answer[at + 2:at + 2 + answer[at + 1]], "big")
            if number in self.asked:
                self.waits.append((now - self.asked.pop(number)) * 1000)


def resources(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        memory = next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))
    return memory, len(os.listdir(f"/proc/{pid}/fd"))


def last_answer(value):
    with open(HOP_LIMIT_FILE, "w", encoding="ascii") as file:
        file.write(str(value))
    result = subprocess.run(["snmpget", "-v2c", "-cpublic", "-Oqvn", f"127.0.0.1:{PORT}", HOP_LIMIT],
                            capture_output=True, text=True)
    return result.stdout.strip()


def soak(agent, seconds):
    _, descriptors_at_first = resources(agent.pid)
    end = time.monotonic() + seconds
    mine = engine()
    hostile = [multiprocessing.Process(target=run_hostile, args=(kind, end, mine)) for kind in KINDS]
    for process in hostile:
        process.start()
    normal = Normal()
    samples = []
    begin = time.monotonic()
    for number in range(1, seconds * RATE + 1):
        if agent.poll() is not None:
            sys.exit(f"the agent has ended with {agent.returncode}")
        normal.ask(number)
        if number % RATE == 0:
            samples.append(resources(agent.pid))
        normal.take(begin + number / RATE)
    for process in hostile:
        process.join()
    normal.take(time.monotonic() + 2)
    lost = len(normal.asked)
    waits = sorted(normal.waits)
    p99 = waits[int(len(waits) * 0.99)]
    third = max(len(samples) // 3, 1)
    early, late = max(memory for memory, _ in samples[:third]), max(memory for memory, _ in samples[third:])
    descriptors = max(count for _, count in samples)
    answer = last_answer(77)
    print(f"{len(KINDS)} kinds of hostile clients for {seconds} s: {', '.join(kind.__name__ for kind in KINDS)}")
    print(f"GETs at {RATE} a second: median {waits[len(waits) // 2]:.2f} ms, p99 {p99:.2f} ms, longest {waits[-1]:.2f} ms, "
          f"{lost} of {seconds * RATE} without an answer")
    print(f"memory: at most {early} KiB in the first third, {late} KiB after it; "
          f"descriptors: {descriptors_at_first} at first, {descriptors} at most")
    print(f"the last answer is {answer}, the kernel has 77")
    return p99 < P99_LIMIT and lost <= seconds * RATE * LOST_LIMIT and late - early <= MEMORY_LIMIT and \
        descriptors <= descriptors_at_first + CONNECTION_LIMIT and answer == "77"


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    if os.environ.get("IPMIB_SOAK_INSIDE") is None:
        os.environ["IPMIB_SOAK_INSIDE"] = "1"
        os.execvp("unshare", ["unshare", "-n", sys.executable, *sys.argv])
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    folder = tempfile.mkdtemp(prefix="ipmib-soak-")
    os.environ["SNMP_PERSISTENT_DIR"] = folder
    os.environ["MIBS"] = ""
    settings = os.path.join(folder, "conf")
    with open(settings, "w", encoding="ascii") as file:
        file.write("rocommunity public 127.0.0.1\ncreateUser open\nrouser open noauth\n")
    log = os.path.join(folder, "log")
    agent = subprocess.Popen([sys.argv[1], "-f", "-Lf", log, "-C", "-c", settings, f"udp:127.0.0.1:{PORT}",
                              f"tcp:127.0.0.1:{PORT}"])
    good = False
    try:
        for _ in range(100):
            time.sleep(0.1)
            try:
                engine()
                break
            except OSError:
                pass
        good = soak(agent, int(sys.argv[2]) if len(sys.argv) > 2 else 300)
    finally:
        agent.terminate()
        good = agent.wait(10) == 0 and good
        with open(log, encoding="utf-8", errors="replace") as file:
            lines = file.readlines()
        print(f"lines in the log: {len(lines)}")
        if not good:
            print("".join(lines)[-4000:], file=sys.stderr)
        shutil.rmtree(folder)
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
