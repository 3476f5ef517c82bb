# SPDX-License-Identifier: BSD-3-Clause
"""A network namespace of the test's own: two interfaces that are connected, with rows for each table of addresses, neighbours
and routes."""
import os
import subprocess
import sys
import time

INSIDE = "IPMIB_TEST_NAMESPACE"
PATIENCE = 60
TENTATIVE = 0x40  # as if_inet6 has it
COMMANDS = """
link set lo up
link add left address 02:00:5e:00:53:01 type veth peer name right address 02:00:5e:00:53:02
link set left up
link set right up
address add 192.0.2.1/24 dev left
address add 192.0.2.129/25 dev right
address add 2001:db8::1/64 dev left nodad
address add 2001:db8:1::1/64 dev right nodad
neighbour add 192.0.2.2 lladdr 02:00:5e:00:53:03 nud permanent dev left
neighbour add 2001:db8::2 lladdr 02:00:5e:00:53:03 nud permanent dev left
neighbour add 2001:db8:1::2 lladdr 02:00:5e:00:53:03 nud permanent dev right
route add default via 192.0.2.2
route add default via 2001:db8::2
"""


def enter():
    """Starts this program anew in such a namespace. False where there can be none."""
    if INSIDE in os.environ:
        return True
    alone = ["unshare", "-rn"]
    if subprocess.run([*alone, "true"], capture_output=True, check=False).returncode != 0:
        return False
    os.environ[INSIDE] = "yes"
    os.execvp(alone[0], [*alone, sys.executable, *sys.argv])


def has_link_local(device):
    """And may use all of its addresses: the kernel comes to that some time after the command."""
    with open("/proc/net/if_inet6", encoding="ascii") as file:
        own = [line.split() for line in file if line.split()[-1] == device]
    return any(address.startswith("fe80") for address, *_ in own) and not any(int(row[4], 16) & TENTATIVE for row in own)


def make():
    for scope in ("all", "default"):
        with open(f"/proc/sys/net/ipv6/conf/{scope}/accept_dad", "w", encoding="ascii") as settings:
            settings.write("0")
    subprocess.run(["ip", "-batch", "-"], input=COMMANDS, text=True, check=True)
    end = time.monotonic() + PATIENCE
    while not (has_link_local("left") and has_link_local("right")):
        assert time.monotonic() < end, "no link-local addresses"
        time.sleep(0.005)
