#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Compares the test cases of builds, after ctest has run in them: each program has to have the same in all of them.

    tests/cases.py [--part] BUILD...

A build starts each program once for all of its cases, which then stand in cases/PROGRAM.xml, or each case on its own. Fails
when a program has other cases than in the first build, or others were skipped, and when a build has other programs than the
first. With --part the builds after the first may lack programs.
"""
import json
import pathlib
import subprocess
import sys
import xml.etree.ElementTree as xml


def programs_of(build):
    """For each program (or script that is a test of its own) the names of its cases; and of all those that were skipped."""
    listing = subprocess.run(['ctest', '--test-dir', build, '--show-only=json-v1'], check=True, capture_output=True,
                             text=True)
    programs = {}
    skipped = set()
    for test in json.loads(listing.stdout)['tests']:
        report = pathlib.Path(build, 'cases', test['name'] + '.xml')
        if any(word.startswith('--gtest_filter') for word in test['command']):
            programs.setdefault(pathlib.Path(test['command'][0]).name, set()).add(test['name'])
        elif not any(word.startswith('--gtest_output') for word in test['command']):
            programs[test['name']] = {test['name']}
        elif not report.exists():
            sys.exit(f'{build}: {test["name"]} has not run')
        else:
            cases = programs.setdefault(test['name'], set())
            for case in xml.parse(report).iter('testcase'):
                cases.add(f"{case.get('classname')}.{case.get('name')}")
                if case.get('result') == 'skipped':
                    skipped.add(f"{case.get('classname')}.{case.get('name')}")
    return programs, skipped


def main():
    part = '--part' in sys.argv
    builds = [word for word in sys.argv[1:] if word != '--part']
    read = {build: programs_of(build) for build in builds}
    first, first_skipped = read[builds[0]]
    differences = []
    print(f'\n{"build":<16} {"programs":>8} {"cases":>8} {"skipped":>8}')
    for build, (programs, skipped) in read.items():
        print(f'{build:<16} {len(programs):>8} {sum(map(len, programs.values())):>8} {len(skipped):>8}')
        for program in sorted(programs.keys() if part else programs.keys() | first.keys()):
            for case in sorted(programs.get(program, set()) ^ first.get(program, set())):
                differences.append(f'{case} of {program} is not in both {builds[0]} and {build}')
        if not part:
            differences += [f'{case} is skipped in one of {builds[0]} and {build}'
                            for case in sorted(skipped ^ first_skipped)]
    print(*differences, sep='\n', end='\n' if differences else '')
    return 1 if differences else 0


if __name__ == '__main__':
    sys.exit(main())
