#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Puts what a measurement prints between its marks in a document.

  COMMAND | bench/put_into.py DOCUMENT PROGRAM      as preformatted text
"""
import re
import sys


def put_into(path, program, text):
    begin, end = f"<!-- printed by {program} -->", f"<!-- end of {program} -->"
    with open(path, encoding="utf-8") as file:
        content = file.read()
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    if not pattern.search(content):
        sys.exit(f"{path}: the marks {begin} and {end} are missing")
    with open(path, "w", encoding="utf-8") as file:
        file.write(pattern.sub(lambda _: f"{begin}\n{text}\n{end}", content))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    printed = sys.stdin.read().strip()
    if not printed:
        sys.exit("put_into.py: nothing was printed")
    put_into(sys.argv[1], sys.argv[2], f"```\n{printed}\n```")
