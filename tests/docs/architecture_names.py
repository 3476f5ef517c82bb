#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""The files, folders and rooms that docs/architecture.md names are there, under these names."""
import os
import re
import subprocess
import sys

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def paths():
    """Of all files and folders, as git has them or, without it, as they stand there."""
    listed = subprocess.run(["git", "-C", root, "ls-files"], capture_output=True, text=True, check=False).stdout.split()
    if not listed:
        listed = [os.path.relpath(os.path.join(folder, name), root) for folder, _, names in os.walk(root) for name in names]
    folders = {name[: end + 1] for name in listed for end, letter in enumerate(name) if letter == "/"}
    return set(listed) | folders


def rooms(block):
    """The folders of a list: two spaces in front of one make it part of the one above it."""
    above = ""
    for line in block.splitlines():
        names = re.match(r"( *)((?:[a-z_0-9/-]+/ *)+)", line)
        if names and len(names[1]) <= 2:
            found = names[2].split()
            above = above if names[1] else found[-1]
            yield from (above + name if names[1] else name for name in found)


def main():
    with open(root + "/docs/architecture.md", encoding="utf-8") as file:
        text = file.read()
    there = paths()
    quoted = {name for name in re.findall(r"`([\w./-]+)`", text) if re.search(r"\w/\w|/$|\.(h|cpp|py|sh|cmake|def|pc)$", name)}
    quoted = {name for name in quoted if not name.startswith("/") and name != "ipmib.pc"}  # of another machine
    wrong = [name for name in quoted if not any(path == name or path.endswith("/" + name) for path in there)]
    blocks = re.findall(r"^```\n(.*?)^```", text, re.M | re.S)
    listed = [room for block in blocks for room in rooms(block)]
    wrong += [room for room in listed if room not in there]
    print(f"{len(quoted)} names and {len(listed)} rooms" + "".join(f"\nthere is no {name}" for name in sorted(wrong)))
    return 0 if len(quoted) > 50 and len(listed) > 40 and not wrong else 1


if __name__ == "__main__":
    sys.exit(main())
