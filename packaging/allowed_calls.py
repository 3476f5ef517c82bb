# SPDX-License-Identifier: BSD-3-Clause
"""Compares the system calls of a trace with the filter of a unit: names those that would be refused, and fails.

Usage: allowed_calls.py UNIT TRACE PROGRAM (of strace -f; calls before the program is executed do not count)
"""
import re
import subprocess
import sys


def known_sets():
    """What systemd means by @name."""
    sets, name = {}, None
    text = subprocess.run(["systemd-analyze", "syscall-filter", "--no-pager"], capture_output=True, text=True, check=True)
    for line in text.stdout.splitlines():
        if line.startswith("@"):
            name = line.strip()
            sets[name] = set()
        elif name and re.match(r" +[@\w]", line):
            sets[name].add(line.strip())
        elif not line.startswith(" "):
            name = None
    return sets


def expand(word, sets):
    return set().union(*(expand(each, sets) for each in sets[word])) if word in sets else {word}


def allowed_by(unit):
    sets = known_sets()
    allowed = expand("@default", sets)  # whatever the filter says
    for line in unit.splitlines():
        if line.startswith("SystemCallFilter="):
            value = line.partition("=")[2]
            calls = set().union(*(expand(word, sets) for word in value.lstrip("~").split()))
            allowed = allowed - calls if value.startswith("~") else allowed | calls
    return allowed


def calls_of(trace, program):
    called, started = set(), False
    for line in trace.splitlines():
        call = re.match(r"(?:\d+ +)?(\w+)\(", line)
        if call and call.group(1) == "execve" and f'"{program}"' in line:
            called, started = {"execve"}, True
        elif call and started:
            called.add(call.group(1))
    return called


def main(unit, trace, program):
    with open(unit, encoding="utf-8") as file:
        allowed = allowed_by(file.read())
    with open(trace, encoding="utf-8", errors="replace") as file:
        called = calls_of(file.read(), program)
    print(f"  {len(called)} kinds of system calls, {len(called & allowed)} of them allowed")
    for call in sorted(called - allowed):
        print(f"  the filter refuses {call}")
    return 0 if called and called <= allowed else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
