# SPDX-License-Identifier: BSD-3-Clause
"""The flips of a C++ source: each comparison, constant and operator, replaced by another one.

Works on tokens. Comments, texts, preprocessor lines, static_asserts and what stands between template brackets are left
alone: they say nothing at run time.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(r'''
      (?P<space>\s+)
    | (?P<comment>//[^\n]*|/\*.*?\*/)
    | (?P<line>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
    | (?P<text>"(?:[^"\\]|\\.)*")
    | (?P<character>'(?:[^'\\]|\\.)*')
    | (?P<number>0[xX][0-9a-fA-F']+[uUlL]*|\d[\d']*(?:\.\d+)?[uUlL]*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<operator><=>|->\*|<<=|>>=|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[-+*/%&|^~!<>=?:;,.(){}\[\]])
''', re.VERBOSE | re.DOTALL | re.MULTILINE)

COMPARISONS = {'==': ['!='], '!=': ['=='], '<': ['<=', '>='], '<=': ['<', '>'], '>': ['>=', '<='], '>=': ['>', '<']}
BINARY = {'+': ['-'], '-': ['+'], '*': ['/'], '/': ['*'], '%': ['*'], '&': ['|'], '|': ['&'], '^': ['&'], '<<': ['>>'],
          '>>': ['<<'], '&&': ['||'], '||': ['&&']}
ASSIGNMENTS = {'+=': ['-='], '-=': ['+='], '*=': ['/='], '|=': ['&='], '&=': ['|='], '++': ['--'], '--': ['++']}

# Constants with a name of which there are several: each is replaced by the following one of its row.
FAMILIES = [
    ['ERR_TABLE_UNKNOWN', 'ERR_READ_ONLY', 'ERR_END_OF_TABLE', 'ERR_BAD_PARAM', 'ERR_NO_INSTANCE', 'ERR_NEXT_FAILED'],
    ['RC_NOT_FOUND', 'RC_NO_MORE'],
    ['OP_GET', 'OP_SET', 'OP_GETNEXT'],
    ['VT_INTEGER', 'VT_COUNTER32', 'VT_UNSIGNED32', 'VT_TIMETICKS', 'VT_OCTETS', 'VT_OID', 'VT_COUNTER64'],
    ['typeIpv4', 'typeIpv6', 'typeIpv4z', 'typeIpv6z'],
    ['versionIp4', 'versionIp6'],
    ['addressSize', 'zonedSize'],
    ['globalClass', 'linkLocalClass'],
    ['outsideLinkLocal', 'withinLinkLocal'],
    ['IP6_DaemonCheck', 'IP_DaemonCheck'],
    ['requireIp4', 'requireIp6'],
    ['true', 'false'],
    ['ND_FLAG_MANAGED', 'ND_FLAG_OTHER_CONFIG', 'ND_FLAG_RETRANSMIT_VALID', 'ND_FLAG_REACHABLE_VALID',
     'ND_FLAG_SEND_ADVERTS', 'ND_FLAG_NO_MTU_OPTION', 'ND_FLAG_LIFETIME_VALID', 'ND_FLAG_NO_HOP_LIMIT'],
    ['MIB_ACCESS_NONE', 'MIB_ACCESS_NOT_ACCESSIBLE', 'MIB_ACCESS_READ_ONLY', 'MIB_ACCESS_READ_WRITE'],
]
FOLLOWING = {name: family[(i + 1) % len(family)] for family in FAMILIES for i, name in enumerate(family)}

# The words of the catalogue: access and status of a node.
CATALOGUE_WORDS = {'NOT_ACCESSIBLE': 'READ_ONLY', 'READ_ONLY': 'READ_CREATE', 'READ_WRITE': 'READ_ONLY',
                   'READ_CREATE': 'READ_ONLY', 'CURRENT': 'DEPRECATED', 'DEPRECATED': 'CURRENT',
                   'Counter32': 'Counter64', 'Counter64': 'Counter32', 'Integer32': 'Unsigned32',
                   'Unsigned32': 'Integer32', 'TimeTicks': 'Counter32'}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int


@dataclass(frozen=True)
class Flip:
    start: int
    end: int
    old: str
    new: str

    def apply(self, source):
        return source[:self.start] + self.new + source[self.end:]


def tokens_of(source):
    tokens = []
    at = 0
    while at < len(source):
        match = TOKEN.match(source, at)
        if match is None:
            raise ValueError(f'no token at offset {at}: {source[at:at + 20]!r}')
        if match.lastgroup not in ('space', 'comment'):
            tokens.append(Token(match.lastgroup, match.group(), at))
        at = match.end()
    return tokens


def closing(tokens, at):
    """The place of the bracket that closes the one at a place."""
    pairs = {'(': ')', '[': ']', '{': '}'}
    opened = tokens[at].text
    depth = 0
    for i in range(at, len(tokens)):
        depth += {opened: 1, pairs[opened]: -1}.get(tokens[i].text, 0) if tokens[i].kind == 'operator' else 0
        if depth == 0:
            return i
    raise ValueError(f'{opened} is not closed')


def skipped(tokens, source):
    """The places of tokens that are left alone."""
    skip = set()
    i = 0
    while i < len(tokens):
        token = tokens[i]
        if token.kind in ('line', 'text'):
            skip.add(i)
        elif token.text == 'static_assert' and tokens[i + 1].text == '(':
            end = closing(tokens, i + 1)
            skip.update(range(i, end + 1))
            i = end
        elif token.text == '[' and tokens[i + 1].text == '[':
            end = closing(tokens, i)
            skip.update(range(i, end + 1))
            i = end
        elif token.text == '__attribute__':
            end = closing(tokens, i + 1)
            skip.update(range(i, end + 1))
            i = end
        elif token.text == '<' and source[token.start - 1] != ' ' and source[token.start + 1] != ' ' or \
                token.text == '<' and i and tokens[i - 1].text == 'template':
            depth = 0
            for j in range(i, len(tokens)):
                depth += {'<': 1, '>': -1, '>>': -2}.get(tokens[j].text, 0) if tokens[j].kind == 'operator' else 0
                if depth <= 0:
                    skip.update((k for k in range(i, j + 1) if tokens[k].kind == 'operator'))
                    break
        i += 1
    return skip


def is_binary(tokens, at, source):
    """Whether an operator that may be unary or part of a declaration stands between two operands: our layout puts
    blanks on both sides then."""
    token = tokens[at]
    end = token.start + len(token.text)
    return source[token.start - 1] in ' \n' and source[end] in ' \n'


def number_flips(text, both_ways):
    """A constant becomes the next one, and the one before where there is one."""
    match = re.fullmatch(r"(0[xX][0-9a-fA-F']+|\d[\d']*)([uUlL]*)", text)
    if match is None:
        return []
    digits, suffix = match.group(1).replace("'", ''), match.group(2)
    value = int(digits, 0)
    write = (lambda number: f'0x{number:X}{suffix}') if digits[:2].lower() == '0x' else (lambda number: f'{number}{suffix}')
    following = 0xFFFFFFFE if value == 0xFFFFFFFF else value + 1
    return [write(following)] + ([write(value - 1)] if both_ways and 0 < value < 0xFFFFFFFF else [])


def branches(tokens, at):
    """The two branches of the ?: at a place, as ranges of tokens."""
    depth = 0
    colon = None
    questions = 0
    for i in range(at + 1, len(tokens)):
        text = tokens[i].text if tokens[i].kind == 'operator' else ''
        if text in ('(', '[', '{'):
            depth += 1
        elif text in (')', ']', '}'):
            depth -= 1
            if depth < 0:
                return colon and ((at + 1, colon), (colon + 1, i))
        elif depth == 0 and text == '?' and colon is None:
            questions += 1
        elif depth == 0 and text == ':' and colon is None:
            if questions == 0:
                colon = i
            else:
                questions -= 1
        elif depth == 0 and text in (';', ',') and colon is not None:
            return (at + 1, colon), (colon + 1, i)
    return None


def field_flips(tokens, source):
    """The offset of a field becomes that of the field that the source names next, of the same record."""
    uses = []
    for i, token in enumerate(tokens):
        if token.text == 'offsetof':
            first, last = i + 4, closing(tokens, i + 1)
            uses.append((i, tokens[i + 2].text, tokens[first].start, tokens[last].start))
    flips = {}
    for place, (i, record, start, stop) in enumerate(uses):
        field = source[start:stop]
        others = [source[use[2]:use[3]] for use in uses[place + 1:] + uses[:place] if use[1] == record]
        other = next((name for name in others if name != field), field)
        flips[i] = Flip(start, stop, field, other)
    return flips


def flips_of(source, catalogue=False):
    """All flips of a source, in its order."""
    tokens = tokens_of(source)
    skip = skipped(tokens, source)
    flips = []
    fields = field_flips(tokens, source)

    def end(i):
        return tokens[i].start + len(tokens[i].text)

    def flip(i, new):
        flips.append(Flip(tokens[i].start, end(i), tokens[i].text, new))

    for i, token in enumerate(tokens):
        if i in skip:
            continue
        text = token.text
        if token.kind == 'number':
            for new in number_flips(text, both_ways=not catalogue):
                flip(i, new)
        elif token.kind == 'character' and len(text) == 3:
            flip(i, f"'{chr(ord(text[1]) + 1)}'")
        elif token.kind == 'name':
            if catalogue and text in CATALOGUE_WORDS:
                flip(i, CATALOGUE_WORDS[text])
            elif text == 'offsetof':
                flips.append(fields[i])
            elif text in FOLLOWING and not is_declared(tokens, i):
                flip(i, FOLLOWING[text])
            elif text == 'if' and i + 1 < len(tokens):
                at = i + 2 if tokens[i + 1].text == 'constexpr' else i + 1
                last = closing(tokens, at)
                condition = source[end(at):tokens[last].start]
                if ';' not in condition and not re.search(r'[^=!<>]=[^=]', condition) and \
                        not re.search(r'==|!=|<|>|&&|\|\|', condition):
                    flips.append(Flip(end(at), tokens[last].start, condition, f'!({condition})'))
        elif token.kind == 'operator':
            if text in COMPARISONS and is_binary(tokens, i, source):
                for new in COMPARISONS[text]:
                    flip(i, new)
            elif text in BINARY and is_binary(tokens, i, source):
                for new in BINARY[text]:
                    flip(i, new)
            elif text in ASSIGNMENTS:
                for new in ASSIGNMENTS[text]:
                    flip(i, new)
            elif text == '!':
                flip(i, '')
            elif text == '~' and tokens[i + 1].kind != 'name':
                flip(i, '')
            elif text == '-' and not is_binary(tokens, i, source) and tokens[i + 1].kind == 'number':
                flip(i, '')
            elif text == '?' and (both := branches(tokens, i)):
                (a, b), (c, d) = both
                whole = source[tokens[a].start:end(d - 1)]
                swapped = (source[tokens[c].start:end(d - 1)] + ' ' + source[tokens[b].start] + ' ' +
                           source[tokens[a].start:end(b - 1)])
                if a < b and c < d:
                    flips.append(Flip(tokens[a].start, end(d - 1), whole, swapped))
    return flips


def is_declared(tokens, at):
    """Whether the name at a place is being declared, or defined as an enumerator or function, rather than used."""
    following = tokens[at + 1].text if at + 1 < len(tokens) else ''
    before = tokens[at - 1] if at else None
    if following == '=' and before is not None and before.kind in ('name',):
        return True
    return following == '(' and before is not None and before.kind == 'name' and before.text not in ('return',)
