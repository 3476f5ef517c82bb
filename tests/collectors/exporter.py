# SPDX-License-Identifier: BSD-3-Clause
"""Prometheus' snmp_exporter as a program that is asked for one target after the other."""
import re
import socket
import subprocess
import time
import urllib.error
import urllib.request

from agent import free_port, patience, root

folder = root + "/examples/collectors/snmp_exporter"


class Exporter:
    """with Exporter() as exporter: exporter.scrape("127.0.0.1:1161", "ipmib")"""

    def __init__(self, configuration=folder + "/snmp.yml"):
        self._port = free_port(socket.SOCK_STREAM)
        self._words = ["prometheus-snmp-exporter", f"--config.file={configuration}",
                       f"--web.listen-address=127.0.0.1:{self._port}"]

    def __enter__(self):
        self._process = subprocess.Popen(self._words, stderr=subprocess.DEVNULL)
        end = time.monotonic() + patience
        while True:
            try:
                socket.create_connection(("127.0.0.1", self._port)).close()
                return self
            except ConnectionRefusedError:
                if time.monotonic() > end or self._process.poll() is not None:
                    self.__exit__()
                    raise
                time.sleep(0.05)

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(patience)

    def scrape(self, target, module):
        """What the exporter tells, as {(name, labels): number}."""
        try:
            url = f"http://127.0.0.1:{self._port}/snmp?target={target}&module={module}"
            with urllib.request.urlopen(url, timeout=patience) as answer:
                text = answer.read().decode()
        except urllib.error.HTTPError as error:
            raise AssertionError(error.read().decode()) from error
        samples = {}
        for line in text.splitlines():
            match = re.match(r"(\w+)(?:\{(.*)\})? (\S+)$", line)
            if match and not line.startswith("#"):
                labels = frozenset(re.findall(r'(\w+)="([^"]*)"', match[2] or ""))
                samples[match[1], labels] = float(match[3])
        return samples


def scrape(target, module, configuration=folder + "/snmp.yml"):
    with Exporter(configuration) as exporter:
        return exporter.scrape(target, module)
