# SPDX-License-Identifier: BSD-3-Clause
"""Compares what a program opened, by its trace, with an AppArmor profile: names what the profile would refuse, and fails.

Usage: allowed_files.py PROFILE TRACE PROGRAM [ROOT]
The trace is of strace -f -y -s 4096; calls before the program is executed do not count. ROOT is where its / was.
"""
import re
import subprocess
import sys

MAKES = r"(?:mkdir|unlink|rename|link|symlink|chmod|chown)(?:at)?2?\("


def without_braces(pattern):
    """The patterns that {a,b{c,d}} stands for, one by one."""
    match = re.search(r"(?<!\\)(?<!@)\{([^{}]*)\}", pattern)
    if not match:
        return [pattern]
    return [each for choice in match[1].split(",")
            for each in without_braces(pattern[: match.start()] + choice + pattern[match.end():])]


def as_regular_expression(pattern):
    parts = re.split(r"(\*\*|\*|\?|\[[^\]]*\])", pattern)
    meanings = {"**": ".*", "*": "[^/]*", "?": "[^/]"}
    return "".join(part if part.startswith("[") else meanings.get(part, re.escape(part)) for part in parts)


class Profile:
    def __init__(self, file):
        text = subprocess.run(["apparmor_parser", "--skip-kernel-load", "--skip-cache", "--preprocess", file], check=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
        lines = [line.split("#")[0].strip() for line in text.splitlines()]
        self.variables = {}
        self.rules = []
        self.families = set()
        for line in lines:
            if match := re.match(r"@\{(\w+)\}\s*\+?=\s*(.*)", line):
                self.variables.setdefault(match[1], []).extend(match[2].split())
            elif match := re.match(r"network (\w+)", line):
                self.families.add("AF_" + match[1].upper())
        for line in lines:
            if match := re.match(r'(?:owner )?"?([/@][^\s"]*)"?\s+(\w+),$', line):
                choices = "|".join(map(as_regular_expression, without_braces(self.expanded(match[1]))))
                self.rules.append((re.compile(re.sub("/+", "/", f"(?:{choices})")), set(match[2])))

    def expanded(self, pattern):
        while match := re.search(r"@\{(\w+)\}", pattern):
            values = ",".join(self.variables[match[1]])
            pattern = pattern[: match.start()] + "{" + values + "}" + pattern[match.end():]
        return pattern

    def allows(self, path, mode):
        return any(mode in modes and rule.fullmatch(path) for rule, modes in self.rules)


def reached(trace, program):
    """What was reached as {(path, r, w or m)}, and the address families of sockets."""
    paths, families, started = set(), set(), False
    for line in trace.splitlines():
        call = re.sub(r"^\d+ +", "", line)
        if call.startswith("execve(") and f'"{program}"' in call:
            started = True
        if not started or re.search(r"= -1 |\(deleted\)", call):
            continue
        if match := re.match(r"open(?:at)?\(.*?, (O_\S+?)(?:, \d+)?\) += \d+<(/.*)>$", call):
            # Of folders a profile speaks with a stroke at the end.
            path = match[2] + "/" * ("O_DIRECTORY" in match[1])
            if "O_PATH" not in match[1]:
                paths |= {(path, mode) for mode, flags in {"r": "O_RDONLY|O_RDWR", "w": "O_WRONLY|O_RDWR|O_CREAT"}.items()
                          if re.search(flags, match[1])}
        elif match := re.match(r"mmap\(.*PROT_EXEC.*, \d+<(/.*?)>", call):
            paths.add((match[1], "m"))
        elif match := re.match(r"(?:bind|connect)\(.*sun_path=\"(/.*?)\"", call):
            paths.add((match[1], "w"))
        elif match := re.match(MAKES, call):
            paths |= {(path, "w") for path in re.findall(r'"(/.*?)"', call)}
        elif match := re.match(r"socket\((AF_\w+)", call):
            families.add(match[1])
    return paths, families


def main(profile, trace, program, root=""):
    allowed = Profile(profile)
    with open(trace, encoding="utf-8", errors="replace") as file:
        paths, families = reached(file.read(), program)
    paths = {(path.removeprefix(root), mode) for path, mode in paths}
    refused = sorted((path, mode) for path, mode in paths if not allowed.allows(path, mode))
    print(f"  {len(paths)} files reached, {len(paths) - len(refused)} of them allowed")
    for path, mode in refused:
        print(f"  the profile refuses {mode} of {path}")
    for family in sorted(families - allowed.families):
        print(f"  the profile refuses sockets of {family}")
    return 0 if paths and not refused and families <= allowed.families else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
