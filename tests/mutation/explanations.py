# SPDX-License-Identifier: BSD-3-Clause
"""The flips that no test can notice, each with the reason: explained.txt.

    at    addr/address.h: the line, with single blanks
    flip  old -> new
    why   the reason, in one line or more

A flip of `*` stands for all flips in that line. Lines that begin with # are comments.
"""
import sys


class Explanations:
    def __init__(self, path):
        self.entries = []
        self.used = set()
        last = None
        for number, text in enumerate(path.read_text().splitlines() if path.exists() else [], 1):
            word, _, rest = text.strip().partition(' ')
            rest = ' '.join(rest.split())
            if not word or word.startswith('#'):
                continue
            if word == 'at':
                last = {'at': rest, 'flips': [], 'why': ''}
                self.entries.append(last)
            elif word == 'flip' and last:
                last['flips'].append(rest)
            elif last and last['flips']:
                last['why'] = ' '.join(filter(None, [last['why'], rest if word == 'why' else text.strip()]))
            else:
                sys.exit(f'{path}:{number}: expected at, flip or why, found {word}')

    def reason(self, path, line, flip):
        for number, entry in enumerate(self.entries):
            text = ' '.join(f'{flip.old} -> {flip.new}'.split())
            for wanted in entry['flips']:
                if entry['at'] == f'{path}: {line}' and wanted in ('*', text):
                    self.used.add((number, wanted))
                    return entry['why']
        return None

    def unused(self, paths):
        """Explanations of flips in these sources that no flip needed."""
        return [f'{entry["at"]}: {wanted}' for number, entry in enumerate(self.entries) for wanted in entry['flips']
                if entry['at'].partition(':')[0] in paths and (number, wanted) not in self.used]
