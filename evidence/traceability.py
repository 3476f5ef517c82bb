#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Traces each object of the module's tree to its line of the catalogue, its column in a handler, and its tests, as Markdown.

    traceability.py MODULE_TEST        the program of the module's tests, which is run once

Each record of the tree is compared with a line of objects.txt by a test. An object that is served needs a test besides in
which the module answers it: the tests' message layer tells which. Fails when an object has no line, no handler or no test.
"""
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
CATALOGUE = 'module/mibtree/ip_mib.def'
OBJECTS = 'module/mibtree/objects.txt'
TREE_TEST = 'TreeObjects.AreThoseOfTheList'


def numbered_lines(path):
    return enumerate((ROOT / path).read_text().splitlines(), 1)


def objects():
    """Descriptor, parameter id (or 0) and line of each node of the catalogue."""
    for number, line in numbered_lines(CATALOGUE):
        if line.startswith('NODE('):
            fields = [field.strip() for field in re.sub(r'\(\{.*?\}\)|\{.*?\}', '', line[5:]).split(',')]
            yield fields[2], int(fields[6], 16), number


def lines_of_the_tree_test():
    """Identifier and line by descriptor, as C spells it."""
    found = {}
    for number, line in numbered_lines(OBJECTS):
        if line and not line.startswith('#'):
            identifier, descriptor = line.split()[:2]
            found[descriptor.replace('-', '_')] = identifier, number
    return found


def handlers():
    """The lines that answer an object: code with the object's name behind it."""
    found = defaultdict(list)
    for path in sorted((ROOT / 'module').glob('*/*.cpp')):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if not path.stem.endswith('_test') and (match := re.search(r'[,;] +// (\w+)$', line)):
                found[match.group(1)].append(f'{path.relative_to(ROOT)}:{number}')
    return found


def answering_tests(program):
    """Tests by parameter id, and all tests that ran. None may fail."""
    with tempfile.NamedTemporaryFile(suffix='.xml') as report:
        run = subprocess.run([program, '--gtest_brief=1', f'--gtest_output=xml:{report.name}'], capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(run.stdout + run.stderr)
        cases = ElementTree.parse(report.name).findall('.//testcase')
    tests = defaultdict(list)
    for case in cases:
        for answered in case.findall(".//property[@name='answered']"):
            for parameter in answered.get('value').split():
                tests[int(parameter, 0)].append(f'{case.get("classname")}.{case.get("name")}')
    return tests, {f'{case.get("classname")}.{case.get("name")}' for case in cases}


def main():
    tests, ran = answering_tests(sys.argv[1])
    listed = lines_of_the_tree_test()
    columns = handlers()
    missing = [] if TREE_TEST in ran else [f'{TREE_TEST} did not run']
    rows = []
    for descriptor, parameter, number in objects():
        identifier, line = listed.get(descriptor, ('', 0))
        if not line:
            missing.append(f'{descriptor} is not in {OBJECTS}')
        handler = 'described, not answered'
        of_value = []
        if parameter:
            handler = ', '.join(columns[descriptor])
            of_value = tests[parameter]
            if len(columns[descriptor]) != 1:
                missing.append(f'{descriptor} has {len(columns[descriptor])} handlers')
            if not of_value:
                missing.append(f'{descriptor} is answered in no test')
        rows.append((identifier, descriptor, f'{CATALOGUE}:{number}', handler, ', '.join([f'{OBJECTS}:{line}', *of_value])))

    served = sum(parameter != 0 for _, parameter, _ in objects())
    print(f'{len(rows)} objects of the tree, of which {served} are answered. `{TREE_TEST}` compares each record with its line of')
    print(f'`{OBJECTS}`; the other tests are those in which the module answers the object, of {len(ran)} that passed.\n')
    print(f'Without a handler or a test: {len(missing) or "none"}.\n')
    for what in missing:
        print(f'- {what}')
    print('| identifier | object | catalogue | handler | tests |\n|---|---|---|---|---|')
    for row in rows:
        print(f'| {" | ".join(row)} |')
    sys.exit(bool(missing))


if __name__ == '__main__':
    main()
