#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Runs the commands in the ```console blocks of documents and compares what they write with what stands there.

    transcript.py --programs DIR [--update] DOCUMENT...

A line that begins with "$ " is a command; what it writes, to standard output and standard error, stands below it. The
commands of a document run in one shell, in the folder of the project, so that what one of them sets is there for the
next. In a block marked ```console approximately numbers may differ by a quarter, and by 1: rates are measured. With
--update the documents are rewritten to say what is true.
"""
import argparse
import difflib
import os
import re
import subprocess
import sys

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
END_OF_OUTPUT = "=== end of the output of command"
NUMBER = re.compile(r"^(-?[0-9.]+)([kMGT]?)$")
BIG_ENDIAN_ONLY = re.compile(r"\nThis processor is big-endian: .*\n")
UNITS = {"": 1, "k": 1e3, "M": 1e6, "G": 1e9, "T": 1e12}


class Block:
    def __init__(self, kind):
        self.kind = kind
        self.commands = []
        self.outputs = []

    def add(self, line):
        if line.startswith("$ "):
            self.commands.append(line[2:])
            self.outputs.append([])
        elif self.commands:
            self.outputs[-1].append(line)

    def text(self):
        lines = []
        for command, output in zip(self.commands, self.outputs):
            lines += ["$ " + command] + output
        return lines


def parse(path):
    """The document as a list of lines and blocks."""
    parts = []
    block = None
    with open(path, encoding="utf-8") as file:
        for line in file.read().split("\n"):
            if block is not None and line != "```":
                block.add(line)
                continue
            if block is not None:
                block = None
            elif re.match(r"^```console( approximately)?$", line):
                block = Block(line[3:])
                parts += [line, block]
                continue
            parts.append(line)
    return parts


def run(commands, programs):
    """What each of them writes, as lines."""
    script = "".join(
        f"{command}\nstatus=$?; echo '{END_OF_OUTPUT}'; (exit $status)\n" for command in commands)
    environment = dict(os.environ, PATH=programs + ":" + os.environ["PATH"], LC_ALL="C.UTF-8")
    result = subprocess.run(["sh"], input=script, cwd=root, env=environment, text=True, encoding="utf-8",
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, check=False)
    written = result.stdout.replace(os.path.realpath(programs + "/.."), "/usr")
    outputs = BIG_ENDIAN_ONLY.sub("", written).split(END_OF_OUTPUT + "\n")
    if len(outputs) != len(commands) + 1:
        sys.exit(f"{len(outputs) - 1} of {len(commands)} commands came to their end:\n{result.stdout}")
    return [output.split("\n")[:-1] for output in outputs[:-1]]


def near(a, b):
    first, second = NUMBER.match(a), NUMBER.match(b)
    if a == b or first is None or second is None:
        return a == b
    x, y = (float(match[1]) * UNITS[match[2]] for match in (first, second))
    return abs(x - y) <= max(1, abs(x) / 4, abs(y) / 4)


def same(expected, actual, approximately):
    if not approximately:
        return expected == actual
    return len(expected) == len(actual) and all(
        len(a.split()) == len(b.split()) and all(map(near, a.split(), b.split()))
        for a, b in zip(expected, actual))


def check(path, programs, update):
    """Whether the document says what is true, or does so now."""
    parts = parse(path)
    blocks = [part for part in parts if isinstance(part, Block)]
    outputs = run([command for block in blocks for command in block.commands], programs)
    good = bool(blocks)
    for block in blocks:
        before = block.text()
        told = block.outputs
        block.outputs = [outputs.pop(0) for _ in block.commands]
        approximately = "approximately" in block.kind
        if all(same(a, b, approximately) for a, b in zip(told, block.outputs)):
            block.outputs = told
            continue
        good = update
        if not update:
            print("make docs writes it anew:")
            print("\n".join(difflib.unified_diff(before, block.text(), path, "what the commands write", lineterm="")))
    if update:
        lines = [line for part in parts for line in (part.text() if isinstance(part, Block) else [part])]
        with open(path, "w", encoding="utf-8") as file:
            file.write("\n".join(lines))
    return good


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("documents", nargs="+")
    arguments = parser.parse_args()
    programs = os.path.abspath(arguments.programs)
    return all([check(path, programs, arguments.update) for path in arguments.documents])


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
