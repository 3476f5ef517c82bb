#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Runs clang-tidy's CERT and bugprone checks, all of them, over the sources and headers of the module.

    static_analysis.py BUILD        a configured build without precompiled headers, as `make lint` makes it

A finding stands in deviations.txt with the reason why it is left, or the run fails; so it does when a deviation has lost its
finding. Prints, as Markdown, what was looked at and each deviation.
"""
import concurrent.futures
import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
GROUPS = ('bugprone', 'cert')
OPTIONS = ['--quiet', '--config={}', '--warnings-as-errors=-*', '--checks=-*,' + ','.join(f'{group}-*' for group in GROUPS),
           '--header-filter=/(module|include/ipmib)/', '--extra-arg=-Wno-unknown-warning-option']
FINDING = re.compile(r'(/\S+):\d+:\d+: (?:warning|error): (.*) \[([\w.,-]+)\]$')


class Deviations:
    """Blocks of `check NAME`, lines of `at FILE: NAME`, and `why REASON` in one line or more."""

    def __init__(self, path):
        self.reasons = {}
        check, places, reason = None, [], []
        for number, line in enumerate(path.read_text().splitlines() + ['check end'], 1):
            word, _, rest = line.strip().partition(' ')
            rest = rest.strip()
            if not word or word.startswith('#'):
                continue
            if word == 'check':
                for place in places:
                    self.reasons[check, place] = ' '.join(reason)
                if check and not (places and reason):
                    sys.exit(f'{path}:{number}: {check} has no place or no reason')
                check, places, reason = rest, [], []
            elif word == 'at' and not reason:
                places.append(rest)
            elif word == 'why' or reason:
                reason.append(rest if word == 'why' else line.strip())
            else:
                sys.exit(f'{path}:{number}: expected check, at or why, found {word}')

    def reason(self, check, place):
        return self.reasons.get((check, place))


def findings_of(build, source):
    run = subprocess.run(['clang-tidy', *OPTIONS, '-p', build, str(source)], cwd=ROOT, capture_output=True, text=True)
    found = set()
    for line in run.stdout.splitlines():
        if match := FINDING.match(line):
            path, message, check = match.groups()
            path = os.path.realpath(path)
            name = re.search(r"'(\w+)'", message)
            found.add((check, f"{os.path.relpath(path, ROOT)}: {name.group(1) if name else message}"))
    if run.returncode != 0 and not found:
        sys.exit(f'clang-tidy of {source}: {run.stdout}{run.stderr}')
    return found


def main():
    build = sys.argv[1]
    sources = sorted(path for path in (ROOT / 'module').glob('*/*.cpp') if not path.stem.endswith('_test'))
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        findings = set().union(*pool.map(lambda source: findings_of(build, source), sources))
    listed = subprocess.run(['clang-tidy', *OPTIONS, '--list-checks'], check=True, capture_output=True, text=True).stdout
    checks = [line.strip() for line in listed.splitlines() if line.strip().startswith(GROUPS)]
    deviations = Deviations(ROOT / 'evidence/deviations.txt')

    version = subprocess.run(['clang-tidy', '--version'], capture_output=True, text=True).stdout
    version = re.search(r'version (\S+)', version).group(1)
    counts = ', '.join(f'{sum(check.startswith(group) for check in checks)} {group}' for group in GROUPS)
    print(f'clang-tidy {version}: {counts} checks over {len(sources)} sources of the module and the headers that they include,')
    print(f'{len(findings)} findings.\n')
    unexplained = sorted(finding for finding in findings if not deviations.reason(*finding))
    for check, place in unexplained:
        print(f'- **not explained**: {place} ({check})')
    if findings:
        print('| finding | check | why it is left |\n|---|---|---|')
    for check, place in sorted(findings - set(unexplained)):
        print(f'| {place} | {check} | {deviations.reason(check, place)} |')
    unused = sorted(set(deviations.reasons) - findings)
    for check, place in unused:
        print(f'- **no longer found**: {place} ({check})')
    sys.exit(bool(unexplained or unused))


if __name__ == '__main__':
    main()
