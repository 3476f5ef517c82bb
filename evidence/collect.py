#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Writes a folder for a reviewer: what each command of the project that proves something prints, and an index.

    collect.py FOLDER [PART...]

Each part is a target of the Makefile, whose standard output is the document; what it tells besides is in logs/. A part that
fails stands as failed in the index, and the run fails. Parts that are not asked for stay as an earlier run left them.
"""
import datetime
import hashlib
import json
import platform
import re
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
# Target, document, and what it shows.
PARTS = {
    'sbom': ('sbom.spdx', 'every source file with its hash, copyright and licence (SPDX, by reuse)'),
    'dependencies': ('dependencies.txt', "the Debian packages that it is built from and runs with: this machine's versions, and their licences"),
    'traceability': ('traceability.md', 'each object of the tree and of own tables: its line of the catalogue, its handler, its tests'),
    'abi': ('abi.txt', 'the binary interface of the plug-in and of what it needs, beside the stored one'),
    'coverage': ('coverage.txt', "lines and branches of the module that its tests run"),
    'mutation': ('mutation.md', 'changes to the module that its tests notice, and those that none can notice'),
    'static-analysis': ('static-analysis.md', "clang-tidy's CERT and bugprone checks over the module, with each deviation"),
    'footprint': ('footprint.md', 'bytes, stack, imports and instructions of the module on four processors'),
    'fuzz': ('fuzz.txt', 'executions of each fuzzer'),
    'reproducible': ('reproducible.txt', 'two builds in different surroundings: hashes of all that is installed'),
}


def output(*command):
    return subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True).stdout.strip()


def version():
    return re.search(r'project\(ipmib VERSION (\S+)', (ROOT / 'CMakeLists.txt').read_text()).group(1)


def make(part, folder):
    """Runs one part; a line of the index."""
    document = folder / PARTS[part][0]
    began = time.monotonic()
    with document.open('w') as out, (folder / 'logs' / f'{part}.log').open('w') as log:
        code = subprocess.run(['make', '--silent', '--no-print-directory', part], cwd=ROOT, stdout=out, stderr=log,
                              stdin=subprocess.DEVNULL).returncode
    return {
        'result': 'passed' if code == 0 else 'FAILED',
        'seconds': round(time.monotonic() - began),
        'at': datetime.datetime.now(datetime.timezone.utc).strftime('%Y-%m-%d %H:%M UTC'),
        'commit': output('git', 'describe', '--always', '--dirty', '--abbrev=12'),
    }


def index(runs, folder):
    yield '# Evidence\n'
    yield 'What the commands of the project print, as they printed it. Each can be run by itself; `logs/` has what they said besides.\n'
    yield '| document | shows | command | result | commit | when | seconds | SHA-256 |\n|---|---|---|---|---|---|--:|---|'
    for part, (document, shows) in PARTS.items():
        if run := runs.get(part):
            digest = hashlib.sha256((folder / document).read_bytes()).hexdigest()
            yield (f'| [{document}]({document}) | {shows} | `make {part}` | {run["result"]} | {run["commit"]} | {run["at"]} '
                   f'| {run["seconds"]} | `{digest}` |')
        else:
            yield f'| {document} | {shows} | `make {part}` | not run | | | | |'
    yield ''
    commits = sorted({run['commit'] for run in runs.values()})
    if len(commits) > 1 or any(commit.endswith('-dirty') for commit in commits):
        yield f'**These are not documents of one commit:** {", ".join(commits)} (dirty: with changes that are in none).\n'
    yield f'- ipmib: {version()}'
    yield f'- machine: {platform.freedesktop_os_release()["PRETTY_NAME"]}, {platform.machine()}'
    for tool in ('gcc', 'clang', 'cmake', 'reuse'):
        yield f'- {tool}: {output(tool, "--version").splitlines()[0]}'


def main():
    folder = Path(sys.argv[1]).resolve()
    wanted = sys.argv[2:] or list(PARTS)
    if unknown := set(wanted) - set(PARTS):
        sys.exit(f'no such part: {", ".join(sorted(unknown))}; there are {", ".join(PARTS)}')
    (folder / 'logs').mkdir(parents=True, exist_ok=True)
    memory = folder / 'logs' / 'runs.json'
    runs = json.loads(memory.read_text()) if memory.exists() else {}
    for part in wanted:
        print(f'{part} ...', flush=True)
        runs[part] = make(part, folder)
        memory.write_text(json.dumps(runs, indent=2))
        (folder / 'index.md').write_text('\n'.join(index(runs, folder)) + '\n')
        print(f'{part}: {runs[part]["result"]}, {runs[part]["seconds"]} s', flush=True)
    failed = [part for part in wanted if runs[part]['result'] != 'passed']
    print(f'{folder / "index.md"}')
    sys.exit(f'failed: {", ".join(failed)}' if failed else 0)


if __name__ == '__main__':
    main()
