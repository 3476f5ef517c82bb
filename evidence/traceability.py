#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Traces each object to its line of the catalogue, its column in a handler, and its tests, as Markdown: those of the module's
tree, and those that the product's own tables answer.

    traceability.py MODULE_TEST        the program of the module's tests, which is run once

Each record of the tree is compared with a line of objects.txt by a test. An object that is served needs a test besides in
which the module answers it: the tests' message layer tells which. An object of the own tables needs a value that a test expects
of it over SNMP, by GET and by a walk. Fails when an object has no line, no handler or no test.
"""
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / 'tests/collectors'), str(ROOT / 'tests/tables')]
from catalogue import LISTS, Catalogue  # noqa: E402
import columns_test  # noqa: E402
import link_columns_test  # noqa: E402

CATALOGUE = 'module/mibtree/ip_mib.def'
OBJECTS = 'module/mibtree/objects.txt'
COLUMN_TESTS = {f'tests/tables/{test.__name__}.py': {name for name, _ in test.expected()} for test in (columns_test, link_columns_test)}
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


def handlers(folder):
    """The lines that answer an object: code with the object's name behind it."""
    found = defaultdict(list)
    for path in sorted((ROOT / folder).glob('*/*.cpp')):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if not path.stem.endswith('_test') and (match := re.search(r'[,;] +// (\w+)(: .*)?$', line)):
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


def of_the_module(program, missing):
    """A row for each object of the module's tree, and the number of tests that ran."""
    tests, ran = answering_tests(program)
    listed = lines_of_the_tree_test()
    columns = handlers('module')
    if TREE_TEST not in ran:
        missing.append(f'{TREE_TEST} did not run')
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
    return rows, len(ran)


def lines_of_all_lists():
    """Where each node is described, by descriptor; the first list counts."""
    found = {}
    for path in map(Path, LISTS):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if match := re.match(r'NODE\(\s*\w+,\s*\d+,\s*(\w+),', line):
                found.setdefault(match.group(1), f'{path.relative_to(ROOT)}:{number}')
    return found


def of_own_tables(missing):
    """A row for each object that the product's own tables answer and the module does not."""
    columns = handlers('tables')
    described = lines_of_all_lists()
    rows = []
    for node in Catalogue().nodes.values():
        if node.of_the_plug_in or not node.access.startswith('READ'):
            continue
        # What both tables of traffic have is written once, without the names of the tables.
        answering = columns[node.name] or columns[re.sub('^ip(SystemStats|IfStats)', '', node.name)]
        if len(answering) != 1:
            missing.append(f'{node.name} has {len(answering)} handlers')
        tests = [test for test, names in COLUMN_TESTS.items() if node.name in names]
        if not tests:
            missing.append(f'{node.name} has no value in a test')
        rows.append(('.'.join(map(str, node.oid)), node.name, described[node.name], ', '.join(answering), ', '.join(tests)))
    return rows


def print_table(rows):
    print('| identifier | object | catalogue | handler | tests |\n|---|---|---|---|---|')
    for row in rows:
        print(f'| {" | ".join(row)} |')


def main():
    missing = []
    module, ran = of_the_module(sys.argv[1], missing)
    own = of_own_tables(missing)
    served = sum(parameter != 0 for _, parameter, _ in objects())
    print(f'{len(module)} objects of the tree, of which the module answers {served}. `{TREE_TEST}` compares each record with its line of')
    print(f'`{OBJECTS}`; the other tests are those in which the module answers the object, of {ran} that passed. Behind them stand')
    print(f'{len(own)} objects that tables of the product answer, each with a value that a test expects over SNMP.\n')
    print(f'Without a handler or a test: {len(missing) or "none"}.\n')
    for what in missing:
        print(f'- {what}')
    print_table(module)
    print()
    print_table(own)
    sys.exit(bool(missing))


if __name__ == '__main__':
    main()
