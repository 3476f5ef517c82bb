#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Kernel state to measure on, in the network namespace of whoever runs this.

  bench/kernel_state.py make INTERFACES ADDRESSES NEIGHBOURS    makes it
  bench/kernel_state.py neighbours add|del FIRST NUMBER         prints commands for ip -batch
"""
import subprocess
import sys


def devices(interfaces):
    """They come in pairs, leftN and rightN."""
    return [f"{side}{pair}" for pair in range((interfaces + 1) // 2) for side in ("left", "right")]


def interface_commands(interfaces):
    for pair in range((interfaces + 1) // 2):
        yield f"link add left{pair} type veth peer name right{pair}"
        yield f"link set left{pair} up"
        yield f"link set right{pair} up"


def address_commands(number, interfaces):
    """Each address has a prefix of its own."""
    names = devices(interfaces)
    for i in range(number):
        yield f"address add 2001:db8:1:{i + 1:x}::1/64 dev {names[i % len(names)]}"


def neighbour_commands(command, first, number, interfaces=16):
    """A tenth of them is link-local; the last three bytes of a link-layer address follow from those of the address, so
    that a wrong row shows. Permanent ones do not count against the kernel's limit."""
    names = devices(interfaces)
    for i in range(first, first + number):
        network = "2001:db8" if i % 10 else "fe80"
        device = names[i % len(names)]
        yield (f"neigh {command} {network}::{i >> 16:x}:{i & 0xffff:x} dev {device} "
               f"lladdr 02:00:00:{i >> 16 & 255:02x}:{i >> 8 & 255:02x}:{i & 255:02x} nud permanent")


def route_commands(number):
    """Of IPv4, by way of fifty gateways."""
    if number > 0:
        yield "address add 10.0.0.1/16 dev left0"
    for i in range(number):
        yield f"route add {20 + (i >> 16)}.{i >> 8 & 255}.{i & 255}.0/24 via 10.0.0.{2 + i % 50} proto bgp"


def carry_out(commands):
    subprocess.run(["ip", "-batch", "-"], input="".join(line + "\n" for line in commands), text=True, check=True)


def make(interfaces, addresses, neighbours, routes=0):
    for scope in ("all", "default"):  # addresses count at once
        with open(f"/proc/sys/net/ipv6/conf/{scope}/accept_dad", "w", encoding="ascii") as file:
            file.write("0")
    carry_out(["link set lo up"])
    carry_out(interface_commands(interfaces))
    carry_out(address_commands(addresses, interfaces))
    # As if learned: not every agent lists a configured one.
    carry_out([f"route add default via fe80::1 dev {devices(interfaces)[0]} proto ra expires 36000"])
    carry_out(neighbour_commands("add", 1, neighbours, interfaces))
    carry_out(route_commands(routes))


def main(arguments):
    if len(arguments) == 4 and arguments[0] == "make":
        make(*map(int, arguments[1:]))
    elif len(arguments) == 4 and arguments[0] == "neighbours" and arguments[1] in ("add", "del"):
        print("\n".join(neighbour_commands(arguments[1], int(arguments[2]), int(arguments[3]))))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
