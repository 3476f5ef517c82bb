# SPDX-License-Identifier: BSD-3-Clause
"""Every option of a program's --help stands in its manual page, and the other way round.

Usage: options_in_manual_test.py PROGRAM PAGE
"""
import re
import subprocess
import sys

# The platform's own options, which --help leaves to the platform.
OF_PLATFORMS = {"--ipv4-accounting", "--radvd-conf", "--route-tables", "--router-anycast"}


def options_of_help(text):
    """Those at the beginning of a line: "  -h, --help   ...", "      --json   ..."."""
    found = set()
    for line in text.splitlines():
        if match := re.match(r" +(-[^\s,]+(?:, -[^\s,]+)*)", line):
            found |= set(re.findall(r"(?<![\w-])--?[A-Za-z][\w-]*", match.group(1)))
    return found


def options_of_page(text):
    """Those of the items of the list: ".It Fl h , Fl -help", ".It Fl -width Ar places"."""
    found = set()
    for line in re.findall(r"^\.It Fl .*", text, re.M):
        found |= {"-" + name for name in re.findall(r"Fl (-?[A-Za-z][\w-]*)", line)}
    return found


def main(program, page):
    help_text = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
    described = options_of_help(help_text) - {"--OPTION"}
    with open(page, encoding="utf-8") as file:
        listed = options_of_page(file.read()) - OF_PLATFORMS
    for option in sorted(described - listed):
        print(f"{page} lacks {option}")
    for option in sorted(listed - described):
        print(f"{program} --help lacks {option}")
    print(f"{len(described)} options")
    return 0 if described and described == listed else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
