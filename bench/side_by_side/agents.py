# SPDX-License-Identifier: BSD-3-Clause
"""The agents that are compared. Each is started and stopped the same way, and is known by its processes."""
import glob
import os
import shutil
import signal
import subprocess
import tempfile
import time

ADDRESS = "udp:127.0.0.1:1161"


class Agent:
    """An agent that runs while this is entered. `pids` are the processes whose time and memory count."""

    def __init__(self, build, neighbours):
        self.build = build
        self.neighbours = neighbours
        self.processes = []

    def commands(self):
        """One for each process, in the order in which they start."""
        raise NotImplementedError

    def configuration(self):
        return "rocommunity public 127.0.0.1\n"

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="ipmib-bench-")
        self.configuration_file = os.path.join(self.folder, "conf")
        with open(self.configuration_file, "w", encoding="ascii") as file:
            file.write(self.configuration())
        self.log = open(os.path.join(self.folder, "log"), "w", encoding="utf-8")
        environment = dict(os.environ, MIBS="", SNMP_PERSISTENT_DIR=self.folder)
        for command in self.commands():
            self.processes.append(subprocess.Popen(command, env=environment, stdout=self.log, stderr=self.log))
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.send_signal(signal.SIGTERM)
        for process in self.processes:
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
        self.log.close()
        shutil.rmtree(self.folder)

    @property
    def pids(self):
        return [process.pid for process in self.processes]

    def log_text(self):
        with open(self.log.name, encoding="utf-8") as file:
            return file.read()

    def is_ready(self):
        """Whether it serves what it is to serve, when it answers at all."""
        return True

    def check(self):
        for process in self.processes:
            if process.poll() is not None:
                raise RuntimeError(f"{process.args[0]} has ended: {self.log_text().strip()}")

    def processor_ms(self):
        spent = 0
        for pid in self.pids:
            with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
                spent += int(file.read().split()[0])
        return spent / 1e6

    def peak_memory_mb(self):
        peak = 0
        for pid in self.pids:
            with open(f"/proc/{pid}/status", encoding="ascii") as file:
                peak += next(int(line.split()[1]) for line in file if line.startswith("VmHWM"))
        return peak / 1024

    def idle_ms(self, seconds):
        time.sleep(3)  # what the last question has begun may end
        before = self.processor_ms()
        time.sleep(seconds)
        return self.processor_ms() - before


class Ipmibd(Agent):
    """Ours, stand-alone."""

    def commands(self):
        yield [f"{self.build}/sbin/ipmibd", "-f", "-Lo", "-C", "-c", self.configuration_file, ADDRESS]


class Snmpd(Agent):
    """The agent that users have today, with a configuration as bare as ours."""

    def commands(self):
        yield [snmpd_program(), "-f", "-Lo", "-C", "-c", self.configuration_file, "-I", "-smux", ADDRESS]


class SubAgent(Snmpd):
    """Ours as a sub-agent of snmpd, in charge of all tables; the time and the memory of both count."""

    def configuration(self):
        return super().configuration() + f"master agentx\nagentXSocket {self.folder}/master\n"

    def commands(self):
        yield from super().commands()
        own = os.path.join(self.folder, "ipmibd.conf")
        with open(own, "w", encoding="ascii") as file:
            file.write("serve all take\n")
        yield [f"{self.build}/sbin/ipmibd", "-f", "-Lo", "-C", "-c", own, "-x", f"{self.folder}/master"]

    def is_ready(self):
        return "connected to the master" in self.log_text()


class InSnmpd(Snmpd):
    """Ours loaded by snmpd into its own process, in charge of all tables."""

    def configuration(self):
        folder = glob.glob(f"{self.build}/lib*/**/ipmib_snmpd.so", recursive=True)
        if not folder:
            raise RuntimeError("ipmib_snmpd.so is not built")
        return super().configuration() + f"dlmod ipmib {os.path.abspath(folder[0])}\nipmibServe all take\n"


class Floor(Agent):
    """Our own agent with a table that costs nothing in place of the plug-in."""

    def commands(self):
        yield [f"{self.build}/bench/bench_floor_agent", self.configuration_file, ADDRESS, str(max(1, self.neighbours))]


AGENTS = {"ipmibd": Ipmibd, "snmpd": Snmpd, "floor": Floor, "dlmod": InSnmpd, "agentx": SubAgent}


def snmpd_program():
    return shutil.which("snmpd", path=os.environ["PATH"] + ":/usr/sbin:/sbin")
