#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Flips each comparison, constant and operator of the module, one at a time, and says which flips no test notices.

    check.py BUILD [--files PART...] [--minutes N] [--jobs N] [--again]

A flip is noticed when the sources no longer compile (a static_assert, mostly), when a test of the module fails, crashes
or does not end. A flip after which the compiler writes the same objects changes nothing of what ships: so it is with the
conditions that are proved at compile time. What is left must stand in explained.txt with its reason; anything else is a
failure, and so is an explanation that is no longer needed.
"""
import argparse
import concurrent.futures
import json
import os
import shlex
import shutil
import subprocess
import sys
import threading
import time
from collections import Counter
from pathlib import Path

from explanations import Explanations
from flips import flips_of

ROOT = Path(__file__).resolve().parents[2]
MODULE = ROOT / 'module'
WITHOUT_PROOFS = '-Dstatic_assert(...)=static_assert(true)'
PATIENCE = 30  # seconds for a run of the tests: an endless loop is noticed, a busy machine is not


class Unit:
    """A translation unit of the module or of its tests: how it is compiled; of the former, what it includes."""

    def __init__(self, entry):
        words = shlex.split(entry['command'])
        self.source = Path(entry['file'])
        if Path(words[0]).name == 'ccache' and self.is_module():  # no flip is met twice, tests are
            words = words[1:]
        at = words.index('-o')
        self.command = words[:at] + words[at + 2:]
        self.directory = entry['directory']
        self.command.remove(str(self.source))
        self.command.remove('-c')
        self.command = [word for word in self.command if not word.startswith(('-g', '-Werror'))]
        # One optimised object against another; and what one object of the module calls in another is found at run time.
        self.command += ['-g0', '-O1', '-w', '-fvisibility=default' if self.is_module() else '-fvisibility=hidden']
        self.name = str(self.source.relative_to(ROOT)).replace('/', '_').removesuffix('.cpp') + '.o'
        self.includes = self.find_includes() if self.is_module() else set()

    def is_module(self):
        return self.source.is_relative_to(MODULE) and not self.source.stem.endswith('_test')

    def find_includes(self):
        rules = subprocess.run(self.command + ['-MM', str(self.source)], cwd=self.directory, check=True,
                               capture_output=True, text=True).stdout
        paths = (Path(word) for word in rules.replace('\\\n', ' ').split()[1:])
        return {path.resolve().relative_to(MODULE) for path in paths if path.resolve().is_relative_to(MODULE)}

    def compile(self, module, target, options=()):
        """Compiles the unit as it stands in a copy of the module. Returns whether that went well."""
        command = [word.replace(str(MODULE), str(module)) for word in self.command]
        source = str(self.source).replace(str(MODULE), str(module))
        return subprocess.run(command + [*options, '-c', source, '-o', str(target)], cwd=self.directory,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


class Bed:
    """Where one worker breaks a copy of the module: its objects lie in a shared library, which the test program loads."""

    def __init__(self, place, units, libraries):
        self.place = place
        self.units = units
        self.libraries = libraries
        shutil.rmtree(place, ignore_errors=True)
        shutil.copytree(MODULE, place / 'module')
        (place / 'objects').mkdir()

    def object_of(self, unit):
        return self.place / 'objects' / unit.name

    def link(self, options=()):
        module = [str(self.object_of(unit)) for unit in self.units if unit.is_module()]
        return subprocess.run(['c++', '-shared', *options, '-o', str(self.place / 'libmodule.so'), *module],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0

    def link_tests(self):
        tests = [str(self.object_of(unit)) for unit in self.units if not unit.is_module()]
        return subprocess.run(['c++', '-rdynamic', '-o', str(self.place / 'tests'), *tests, str(self.place / 'libmodule.so'),
                               f'-Wl,-rpath,{self.place}', '-Wl,--whole-archive', self.libraries,
                               '-Wl,--no-whole-archive', '-lgtest_main', '-lgtest'],
                              check=False).returncode == 0

    def run(self, environment=None):
        """Whether all tests pass."""
        try:
            return subprocess.run([str(self.place / 'tests'), '--gtest_brief=1', '--gtest_fail_fast'], cwd=self.place,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  timeout=PATIENCE, env=environment, check=False).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def run_sanitized(self, changed):
        """The same with AddressSanitizer in what has changed of the module, as the project's tests run as well: a flip may
        write where nobody looks."""
        for unit in changed:
            if not unit.compile(self.place / 'module', self.object_of(unit), ['-fsanitize=address']):
                sys.exit(f'mutation: {unit.source} does not compile with AddressSanitizer')
        asan = subprocess.run(['c++', '-print-file-name=libasan.so'], capture_output=True, text=True, check=True).stdout
        return self.link(['-fsanitize=address']) and self.run(
            dict(os.environ, LD_PRELOAD=asan.strip(), ASAN_OPTIONS='detect_leaks=0'))

    def prepare(self, jobs):
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            compiled = pool.map(lambda unit: unit.compile(self.place / 'module', self.object_of(unit)), self.units)
        for unit, fine in zip(self.units, compiled):
            if not fine:
                sys.exit(f'mutation: {unit.source} does not compile')
        if not (self.link() and self.link_tests() and self.run()):
            sys.exit('mutation: the tests fail without any flip')
        self.sound = {unit: self.object_of(unit).read_bytes() for unit in self.units}

    def copy_from(self, other):
        for unit in self.units:
            shutil.copy(other.object_of(unit), self.object_of(unit))
        self.sound = other.sound
        if not (self.link() and self.link_tests() and self.run()):
            sys.exit('mutation: the tests fail without any flip')

    def affected(self, path):
        """The units of the module that a flip may change."""
        units = [unit for unit in self.units if path in unit.includes and unit.is_module()]
        if path.suffix == '.def':
            # Handlers look at the catalogue at compile time alone: their own proofs would only notice more.
            units = [unit for unit in units if unit.source.name == 'tree.cpp']
        return units

    def judge(self, path, source, flip):
        """What becomes of a flip: 'refused', 'noticed', 'same' or 'survived'."""
        copy = self.place / 'module' / path
        copy.write_text(flip.apply(source))
        changed = []
        try:
            # The tree's proofs would refuse many a flip of the catalogue; without them, tests have to notice.
            options = [WITHOUT_PROOFS] if path.suffix == '.def' else []
            for unit in self.affected(path):
                if not unit.compile(self.place / 'module', self.object_of(unit), options):
                    changed.append(unit)
                    return 'refused'
                if self.object_of(unit).read_bytes() != self.sound[unit]:
                    changed.append(unit)
            if not changed:
                return 'same'
            if not self.link():
                return 'refused'
            return 'survived' if self.run() and self.run_sanitized(changed) else 'noticed'
        finally:
            copy.write_text(source)
            for unit in changed:
                self.object_of(unit).write_bytes(self.sound[unit])


def sources_of(parts):
    paths = sorted(path.relative_to(MODULE) for path in MODULE.rglob('*') if path.suffix in ('.cpp', '.h', '.def'))
    # Tests and what only they include are no part of what ships.
    paths = [path for path in paths if not path.stem.endswith('_test') and path.name not in ('numbered_stat.h', 'tree_copy.h')]
    if not parts:
        return paths
    for part in parts:
        if not any(part in str(path) for path in paths):
            sys.exit(f'mutation: no source of the module has {part} in its path')
    return [path for path in paths if any(part in str(path) for part in parts)]


def line_at(source, offset):
    start = source.rfind('\n', 0, offset) + 1
    stop = source.find('\n', offset)
    return source.count('\n', 0, offset) + 1, ' '.join(source[start:stop].split())


def options():
    parser = argparse.ArgumentParser(description='Which flips of the module no test notices.')
    parser.add_argument('build', type=Path)
    parser.add_argument('--files', nargs='*', default=[], help='only sources with one of these in their path')
    parser.add_argument('--minutes', type=float, default=0, help='stop after so many minutes and say what was left out')
    parser.add_argument('--jobs', type=int, default=os.cpu_count())
    parser.add_argument('--again', action='store_true', help='only the flips that survived the last run')
    return parser.parse_args()


def load_units(build):
    entries = json.loads((build / 'compile_commands.json').read_text())
    wanted = [entry for entry in entries
              if Path(entry['file']).is_relative_to(MODULE)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(Unit, wanted))


def main():
    wanted = options()
    build = wanted.build.resolve()
    work = build / 'mutation'
    work.mkdir(exist_ok=True)
    survivors_file = work / 'survivors.json'
    explanations = Explanations(Path(__file__).parent / 'explained.txt')

    units = load_units(build)
    library = str(build / 'tests/scripted/libipmib_scripted.a')
    first = Bed(work / 'bed0', units, library)
    first.prepare(wanted.jobs)
    beds = [first]
    for number in range(1, wanted.jobs):
        beds.append(Bed(work / f'bed{number}', units, library))
        beds[-1].copy_from(first)

    again = {tuple(key) for key in json.loads(survivors_file.read_text())} if wanted.again else None
    paths = sources_of(wanted.files)
    todo = []
    for path in paths:
        source = (MODULE / path).read_text()
        for flip in flips_of(source, path.suffix == '.def'):
            if again is None or (str(path), flip.start, flip.old, flip.new) in again:
                todo.append((path, source, flip))

    deadline = time.monotonic() + wanted.minutes * 60 if wanted.minutes else None
    lock = threading.Lock()
    fates = {}

    def work_through(bed, queue):
        while True:
            with lock:
                if not queue or deadline is not None and time.monotonic() > deadline:
                    return
                path, source, flip = queue.pop()
            fate = bed.judge(path, source, flip)
            with lock:
                fates[(path, flip)] = fate
                if fate == 'survived':
                    number, line = line_at(source, flip.start)
                    print(f'survived: module/{path}:{number}: {flip.old} -> {flip.new}    {line}', file=sys.stderr, flush=True)
                if len(fates) % 50 == 0:
                    print(f'{len(fates)} of {len(todo)} flips', file=sys.stderr, flush=True)

    queue = list(reversed(todo))
    threads = [threading.Thread(target=work_through, args=(bed, queue)) for bed in beds]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()

    survivors, unexplained = [], 0
    counts = {path: Counter() for path in paths}
    for path, source, flip in todo:
        fate = fates.get((path, flip), 'left out')
        if fate == 'survived':
            survivors.append((str(path), flip.start, flip.old, flip.new))
            number, line = line_at(source, flip.start)
            reason = explanations.reason(str(path), line, flip)
            fate = 'explained' if reason else 'unnoticed'
            unexplained += not reason
            print(f'{"explained" if reason else "UNNOTICED"}: module/{path}:{number}: {flip.old} -> {flip.new}\n'
                  f'    {line}' + (f'\n    {reason}' if reason else ''))
        counts[path][fate] += 1
    survivors_file.write_text(json.dumps(survivors))

    columns = ['refused', 'noticed', 'explained', 'unnoticed', 'same', 'left out']
    print('\n| source | flips | refused by the compiler | noticed by a test | explained | unnoticed | without effect | left out |')
    print('|---|--:|--:|--:|--:|--:|--:|--:|')
    total = Counter()
    for path in paths:
        if sum(counts[path].values()):
            total += counts[path]
            print(f'| module/{path} | {sum(counts[path].values())} | ' + ' | '.join(str(counts[path][c]) for c in columns) + ' |')
    print(f'| all | {sum(total.values())} | ' + ' | '.join(str(total[c]) for c in columns) + ' |')

    stale = explanations.unused([str(path) for path in paths]) if again is None and not total['left out'] else []
    for where in stale:
        print(f'no longer needed in explained.txt: {where}')
    sys.exit(1 if unexplained or stale else 0)


if __name__ == '__main__':
    main()
