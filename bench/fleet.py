#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Prints what a fleet of simulated devices costs: memory, the time to start, and requests a second over all devices.

  bench/fleet.py [--devices N] [--requests N] [--scenario FILE] [IPMIBD]

A thousand switches of 24 ports (examples/campus.json) behind one agent. Requests are SNMPv2c GETs of sysName and of
counters of a port and GETBULKs of ten rows of ifTable, each of the next device, 32 of them under way at a time; and the first
once more, at a port of each device's own.
"""
import argparse
import json
import os
import pathlib
import select
import socket
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNDER_WAY = 32


def ber(tag, content):
    length = len(content)
    if length < 128:
        return bytes((tag, length)) + content
    octets = length.to_bytes((length.bit_length() + 7) // 8, "big")
    return bytes((tag, 0x80 | len(octets))) + octets + content


def integer(value):
    return ber(2, value.to_bytes(value.bit_length() // 8 + 1, "big"))


def identifier(text):
    numbers = [int(part) for part in text.split(".")]
    content = bytearray([numbers[0] * 40 + numbers[1]])
    for number in numbers[2:]:
        part = [number & 0x7f]
        while number := number >> 7:
            part.append(0x80 | number & 0x7f)
        content += bytes(reversed(part))
    return ber(6, bytes(content))


def request(community, kind, objects, repetitions=0):
    """A message whose request id, the same in all, is left to the device's place in the order of answers."""
    variables = b"".join(ber(0x30, identifier(each) + b"\x05\x00") for each in objects)
    pdu = ber(kind, integer(1) + integer(0) + integer(repetitions) + ber(0x30, variables))
    return ber(0x30, integer(1) + ber(4, community.encode()) + pdu)


GET, GETBULK = 0xa0, 0xa5
SHAPES = (
    ("GET sysName", GET, ["1.3.6.1.2.1.1.5.0"], 0),
    ("GET of 4 counters of a port", GET, [f"1.3.6.1.2.1.2.2.1.{column}.7" for column in (10, 14, 16, 20)], 0),
    ("GETBULK of 10 rows of ifTable", GETBULK, ["1.3.6.1.2.1.2.2.1.10"], 10),
)


def processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def memory_kb(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS"):
            return int(line.split()[1])
    return 0


def expect_value(answer):
    """Ends the program when the first variable has no value: a figure is one of answers."""
    def content(octets):
        length = octets[1]
        return octets[2:2 + length] if length < 128 else octets[2 + (length & 0x7f):]

    def rest(octets):
        length = octets[1]
        size = 2 + length if length < 128 else 2 + (length & 0x7f) + int.from_bytes(octets[2:2 + (length & 0x7f)], "big")
        return octets[size:]

    pdu = content(rest(rest(content(answer))))
    variable = content(content(rest(rest(rest(pdu)))))
    if content(rest(pdu)) != b"\0" or rest(variable)[0] & 0x80:
        sys.exit("an answer has no value")


def ask(targets, count):
    """Sends the messages to their addresses in turn; returns how many were answered."""
    asker = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    asker.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4 << 20)
    asker.setblocking(False)
    sent = answered = 0
    while answered < count:
        while sent < count and sent - answered < UNDER_WAY:
            message, address = targets[sent % len(targets)]
            asker.sendto(message, address)
            sent += 1
        if not select.select([asker], [], [], 5)[0]:
            break
        try:
            while True:
                expect_value(asker.recv(65536))
                answered += 1
        except BlockingIOError:
            pass
    return answered


class Agent:
    def __init__(self, program, scenario):
        self.directory = tempfile.TemporaryDirectory()
        configuration = pathlib.Path(self.directory.name, "ipmibd.conf")
        configuration.write_text("rocommunity public 127.0.0.1\ncontextcommunity lab 127.0.0.1\n")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as free:
            free.bind(("127.0.0.1", 0))
            self.address = free.getsockname()
        begin = time.monotonic()
        self.process = subprocess.Popen(
            [program, "-f", "-Lo", "-C", "-c", configuration, "--platform", f"simulated:{scenario}",
             f"udp:127.0.0.1:{self.address[1]}"],
            stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if line.startswith("contexts: ") or "ipmibd stops" in line:
                break
        self.seconds = time.monotonic() - begin

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.directory.cleanup()


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--devices", type=int, default=1000)
    parser.add_argument("--requests", type=int, default=100_000)
    parser.add_argument("--scenario", default=ROOT / "examples" / "campus.json")
    parser.add_argument("ipmibd", nargs="?", default=ROOT / "build" / "sbin" / "ipmibd")
    options = parser.parse_args(arguments)
    scenario = json.loads(pathlib.Path(options.scenario).read_text())
    switches = next(each for each in scenario["devices"] if "count" in each)
    switches["count"] = options.devices
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
        def start(devices):
            scenario["devices"] = devices
            file.seek(0)
            file.truncate()
            json.dump(scenario, file)
            file.flush()
            return Agent(options.ipmibd, file.name)

        with start([dict(switches, count=1)]) as alone:
            before = memory_kb(alone.process.pid)
        with start([switches]) as agent:
            pid = agent.process.pid
            print(f"{options.devices} devices: started in {agent.seconds:.1f} s, "
                  f"{(memory_kb(pid) - before) / max(options.devices - 1, 1) / 1024:.2f} MB each at the start")
            numbers = range(1, options.devices + 1)
            port = int(switches["listen"].rsplit("+", 1)[1].rstrip("}"))  # udp:127.0.0.1:{n+PORT}
            measured = [(name, [(request(f"lab@access{n}", *what), agent.address) for n in numbers])
                        for name, *what in SHAPES]
            measured.append((SHAPES[0][0] + " at its own port",
                             [(request("lab", *SHAPES[0][1:]), ("127.0.0.1", port + n)) for n in numbers]))
            for name, targets in measured:
                ask(targets, options.devices)
                used, begin = processor_seconds(pid), time.monotonic()
                answered = ask(targets, options.requests)
                seconds, used = time.monotonic() - begin, processor_seconds(pid) - used
                print(f"{name}: {answered / seconds:,.0f} requests/s over all, "
                      f"{used / max(answered, 1) * 1e6:.0f} us of processor time each"
                      + ("" if answered == options.requests else f", {options.requests - answered} unanswered"))
            print(f"memory then: {(memory_kb(pid) - before) / max(options.devices - 1, 1) / 1024:.2f} MB each")


if __name__ == "__main__":
    main(sys.argv[1:])
