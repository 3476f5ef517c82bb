#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Draws a terminal with commands and what they write, as SVG.

    picture.py --programs DIR [--update] PICTURE COMMANDS      COMMANDS is a file with one command in a line

Without --update it is compared with the picture that is there.
"""
import argparse
import re
import sys
from xml.sax.saxutils import escape

from transcript import run

LINE, PLACE, MARGIN, SIZE = 19, 8.43, 16, 14
HEAD = """<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}">
<rect width="100%" height="100%" rx="8" fill="#11151c"/>
<g font-family="ui-monospace, 'DejaVu Sans Mono', Menlo, Consolas, monospace" font-size="{size}" fill="#c9d1d9" xml:space="preserve" style="white-space: pre">
"""


COLOURS = {"31": "#ff7b72", "32": "#7ee787", "33": "#e3b341", "34": "#79c0ff", "35": "#d2a8ff", "36": "#56d4dd"}
PAINTED = re.compile("\033\\[([0-9]+)m(.*?)\033\\[0m")


def plain(line):
    return PAINTED.sub(lambda match: match[2], line)


def text(place, line, style=""):
    drawn = PAINTED.sub(lambda match: f'<tspan fill="{COLOURS[match[1]]}">{match[2]}</tspan>', escape(line))
    return f'<text x="{MARGIN}" y="{MARGIN + LINE * place + SIZE}"{style}>{drawn}</text>\n'


def draw(commands, outputs):
    lines = []
    for command, output in zip(commands, outputs):
        lines.append((f"$ {command}", ' fill="#7ee787"'))
        for number, line in enumerate(output):
            heading = number == 0 and line.isupper()
            lines.append((line, ' font-weight="bold"' if heading else ""))
        if output:
            lines.append(("", ""))
    lines.append(("$ \u2588", ' fill="#7ee787"'))
    width = round(2 * MARGIN + PLACE * max(len(plain(line)) for line, _ in lines))
    picture = HEAD.format(width=width, height=2 * MARGIN + LINE * len(lines), size=SIZE)
    return picture + "".join(text(i, *line) for i, line in enumerate(lines) if line[0]) + "</g>\n</svg>\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("picture")
    parser.add_argument("commands")
    arguments = parser.parse_args()
    with open(arguments.commands, encoding="utf-8") as file:
        commands = file.read().splitlines()
    drawn = draw(commands, run(commands, arguments.programs))
    if arguments.update:
        with open(arguments.picture, "w", encoding="utf-8") as file:
            file.write(drawn)
        return True
    with open(arguments.picture, encoding="utf-8") as file:
        same = file.read() == drawn
    if not same:
        print(f"{arguments.picture} is not what the commands write; make docs draws it anew")
    return same


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
