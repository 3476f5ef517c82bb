#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Kills ipmibd with SIGKILL at random moments of its start, of a reload and of its end, again and again, and looks whether
the state of the service is still there: all SNMPv3 users that it had when it last said that it was ready, whose passwords
stand nowhere else any more, its engine, and a count of starts that only grows.

  tests/e2e/state_soak.py IPMIBD [COUNT [SEED]]
"""
import os
import random
import re
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
UP_TIME = "1.3.6.1.2.1.1.3.0"
PATIENCE = 60
ASK_EVERY = 25  # rounds; a look into the file comes after each
PASSWORD = "as good as any"


def user(number):
    return f"user{number}"


class Service:
    """In a folder of its own; each start is one as a service's, without -C."""

    def __init__(self, folder, program):
        self.folder = folder
        self.program = program
        self.state = os.path.join(folder, "persistent", "ipmibd.conf")
        self.manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.manager.bind(os.path.join(folder, "notify"))
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", 0))
            self.address = f"udp:127.0.0.1:{probe.getsockname()[1]}"
        self.environment = dict(os.environ, SNMPCONFPATH=folder, SNMP_PERSISTENT_DIR=os.path.dirname(self.state), MIBS="",
                                NOTIFY_SOCKET=os.path.join(folder, "notify"))
        self.process = None

    def configure(self, users, created=""):
        """Lets the users in. Their passwords are only in the configuration that creates them."""
        with open(os.path.join(self.folder, "ipmibd.conf"), "w", encoding="ascii") as file:
            file.write("".join(f"rouser {name} auth\n" for name in users))
            file.write(f'createUser {created} SHA "{PASSWORD}"\n' if created else "")

    def start(self):
        while select.select([self.manager], [], [], 0)[0]:  # what one before has still said
            self.manager.recv(256)
        with open(os.path.join(self.folder, "log"), "a", encoding="utf-8") as log:
            self.process = subprocess.Popen(
                [self.program, "-f", "-Lo", "--platform", f"simulated:{root}/examples/home-router.json", "--at=0",
                 self.address], env=self.environment, stdout=log, stderr=log)

    def is_ready(self, patience):
        """Whether it says so within this time."""
        end = time.monotonic() + patience
        while select.select([self.manager], [], [], max(0, end - time.monotonic()))[0]:
            if self.manager.recv(256) == b"READY=1":
                return True
        return False

    def wait_until_ready(self):
        if not self.is_ready(PATIENCE):
            raise RuntimeError("it does not become ready")

    def end(self, number):
        self.process.send_signal(number)
        return self.process.wait(PATIENCE)

    def kept(self):
        with open(self.state, encoding="ascii") as file:
            return file.read()

    def answers(self, name):
        result = subprocess.run(
            ["snmpget", "-v3", "-l", "authNoPriv", "-u", name, "-a", "SHA", "-A", PASSWORD, "-On", "-t5", "-r3",
             self.address, UP_TIME], env=self.environment, capture_output=True, text=True, check=False)
        return result.returncode == 0


def timed(action):
    begin = time.monotonic()
    action()
    return time.monotonic() - begin


class Soak:
    def __init__(self, service, chance):
        self.service = service
        self.chance = chance
        self.users = []  # whom the service must know
        self.boots = 0
        self.engine = None
        self.killed = {"start": 0, "reload": 0, "end": 0}

    def check_file(self):
        text = self.service.kept()
        boots = int(re.search(r"^engineBoots (\d+)$", text, re.M).group(1))
        engine = re.search(r"^oldEngineID (\S+)$", text, re.M).group(1)
        if boots < self.boots or engine != (self.engine or engine):
            raise RuntimeError(f"engine {engine} with {boots} starts after {self.engine} with {self.boots}")
        self.boots, self.engine = boots, engine
        for name in self.users:
            if f'"{name}"' not in text and f"0x{name.encode().hex()}" not in text:
                raise RuntimeError(f"{name} is lost")

    def ask(self):
        self.service.configure(self.users)
        self.service.start()
        self.service.wait_until_ready()
        for name in (self.users[0], self.users[-1]):
            if not self.service.answers(name):
                raise RuntimeError(f"{name} is not answered")
        if self.service.end(signal.SIGTERM) != 0:
            raise RuntimeError("it does not end well")
        self.check_file()

    def create(self, name):
        self.service.configure(self.users + [name], name)
        self.service.process.send_signal(signal.SIGHUP)

    def measure(self):
        """Within which time of each of the three to kill; also the way to the first two users: a crash follows the reload at once."""
        started = timed(lambda: (self.service.start(), self.service.wait_until_ready()))
        reloaded = timed(lambda: (self.create(user(0)), self.service.wait_until_ready()))
        self.users = [user(0)]
        self.service.end(signal.SIGKILL)
        self.check_file()
        self.service.configure(self.users)
        self.service.start()
        self.service.wait_until_ready()
        ended = timed(lambda: self.service.end(signal.SIGTERM))
        self.ask()
        return {"start": started, "reload": 2 * reloaded, "end": ended}  # every other reload comes to its end

    def round(self, number, moment, duration):
        self.service.configure(self.users)
        self.service.start()
        delay = self.chance.uniform(0, duration)
        if moment != "start":
            self.service.wait_until_ready()
        if moment == "reload":
            self.create(user(number))
            if self.service.is_ready(delay):
                self.users.append(user(number))
        else:
            if moment == "end":
                self.service.process.send_signal(signal.SIGTERM)
            time.sleep(delay)
        if self.service.end(signal.SIGKILL) == -signal.SIGKILL:
            self.killed[moment] += 1
        self.check_file()

    def run(self, count):
        durations = self.measure()
        for number in range(1, count + 1):
            moment = ("start", "reload", "end")[number % 3]
            self.round(number, moment, durations[moment])
            if number % ASK_EVERY == 0:
                self.ask()
        self.ask()
        left = sorted(os.listdir(os.path.dirname(self.service.state)))
        if left != ["cert_indexes", "ipmibd.conf"]:
            raise RuntimeError(f"left beside the state: {left}")
        for moment, killed in self.killed.items():
            print(f"killed in the {moment}: {killed} times, within {1000 * durations[moment]:.0f} ms")
        print(f"{len(self.users)} users made by a reload and {self.boots} starts counted: nothing is lost")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 32)
    folder = tempfile.mkdtemp(prefix="ipmib-state-")
    service = Service(folder, os.path.abspath(sys.argv[1]))
    try:
        Soak(service, random.Random(seed)).run(count)
    except BaseException as error:
        with open(os.path.join(folder, "log"), encoding="utf-8") as log:
            print(log.read()[-4000:], file=sys.stderr)
        print(f"seed {seed}: {error!r}", file=sys.stderr)
        raise
    finally:
        if service.process and service.process.poll() is None:
            service.process.kill()
            service.process.wait()
        shutil.rmtree(folder)


main()
