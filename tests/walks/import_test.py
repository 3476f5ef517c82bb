# SPDX-License-Identifier: BSD-3-Clause
"""A walk of Debian's snmpd, imported and served, is the same walk; and so it is in a fleet's context.

Usage: import_test.py IPMIBCTL IPMIBD
"""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

patience = 120
skipped = 77
up_time = ".1.3.6.1.2.1.1.3.0 "
# What an agent says of itself, which is its own where no context is named.
own = re.compile(r"\.1\.3\.6\.1\.(6\.|2\.1\.11\.|2\.1\.1\.[389]\.|2\.1\.47\.|2\.1\.88\.|2\.1\.92\.|4\.1\.8072\.)")


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def walk(port, community, tool="snmpwalk"):
    done = subprocess.run([tool, "-v2c", "-c", community, "-On", "-t", "60", "-r", "0", f"127.0.0.1:{port}", ".1"],
                          env=dict(os.environ, MIBS=""), capture_output=True, encoding="latin-1", timeout=patience,
                          check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


class Agent:
    """Until it answers."""

    def __init__(self, words, port, community, environment):
        self._process = subprocess.Popen(words, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(patience):
            asked = subprocess.run(["snmpget", "-v2c", "-c", community, "-On", "-t", "1", "-r", "0", f"127.0.0.1:{port}",
                                    "1.3.6.1.2.1.1.3.0"], env=dict(os.environ, MIBS=""), capture_output=True, check=False)
            if asked.returncode == 0:
                return
            assert self._process.poll() is None, "it has ended"
            time.sleep(0.1)
        raise AssertionError("no answer")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(patience)


def without(walked, pattern):
    return [row for row in walked if not pattern.match(row)]


def rows(walked):
    """Values may take several lines."""
    return re.split(r"\n(?=\.1\.)", walked.rstrip("\n"))


def main(ctl, daemon):
    if not all(map(shutil.which, ("snmpd", "snmpwalk", "snmpbulkwalk", "snmpget"))):
        print("snmpd or the net-snmp tools are missing")
        return skipped
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, MIBS="", SNMPCONFPATH=folder, SNMP_PERSISTENT_DIR=folder)
        with open(folder + "/snmpd.conf", "w", encoding="utf-8") as file:
            file.write("rocommunity public 127.0.0.1\nsysname recorded\nsysservices 72\n")
        with open(folder + "/ipmibd.conf", "w", encoding="utf-8") as file:
            file.write("rocommunity public 127.0.0.1\ncontextcommunity public 127.0.0.1\n")
        port = free_port()
        with Agent(["snmpd", "-f", "-C", "-c", folder + "/snmpd.conf", f"udp:127.0.0.1:{port}"], port, "public",
                   environment):
            recorded = walk(port, "public")
        with open(folder + "/device.walk", "w", encoding="latin-1", newline="") as file:
            file.write(recorded)
        with open(folder + "/device.json", "wb") as file:
            subprocess.run([ctl, "import", folder + "/device.walk"], stdout=file, timeout=patience, check=True)
        with open(folder + "/device.json", encoding="utf-8") as file:
            scenario = json.load(file)
        scenario["devices"] = [{"name": "again", "scenario": "device.json"}]
        with open(folder + "/fleet.json", "w", encoding="utf-8") as file:
            json.dump(scenario, file)
        port = free_port()
        with Agent([daemon, "-f", "-C", "-c", folder + "/ipmibd.conf", "--platform", f"simulated:{folder}/fleet.json",
                    f"udp:127.0.0.1:{port}"], port, "public", environment):
            again = walk(port, "public@again")
            bulk = walk(port, "public@again", "snmpbulkwalk")
            unnamed = walk(port, "public")

    times = re.compile(re.escape(up_time))
    expected = without(rows(recorded), times)
    assert len(expected) > 500, len(expected)
    assert without(rows(again), times) == expected, "by GETNEXT"
    assert without(rows(bulk), times) == expected, "by GETBULK"
    end = re.compile(".*No more variables left", re.S)
    assert without(without(rows(unnamed), own), end) == without(without(expected, own), end), "without a context"
    print(f"{len(expected)} values")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
