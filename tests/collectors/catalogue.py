# SPDX-License-Identifier: BSD-3-Clause
"""The catalogue of all that the product describes, read from the lists that it is made of: the plug-in's and its own."""
import glob
import os
import re

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PLUG_INS = root + "/module/mibtree/ip_mib.def"
LISTS = [PLUG_INS] + sorted(glob.glob(root + "/tables/mib/*.def"))


class Node:
    def __init__(self, parent, number, name, syntax, access, module):
        self.parent = parent
        self.name = name
        self.number = number
        self.oid = (parent.oid if parent else ()) + (number,)
        self.syntax = syntax  # as the catalogue writes it
        self.access = access
        self.module = module  # the MIB module, IP-MIB
        self.of_the_plug_in = False  # it answers for this one


class Catalogue:
    """nodes by name and by oid, indexes by entry, syntaxes by name. Of a node that several lists describe the first one's
    description counts."""

    def __init__(self):
        self.syntaxes = {}
        self.syntaxes_of = {}  # by module
        self.indexes = {}
        self.nodes = {}
        for path in LISTS:
            self._read(path, os.path.basename(path)[: -len(".def")].upper().replace("_", "-"))
        self.by_oid = {node.oid: node for node in self.nodes.values()}

    def _read(self, path, module):
        with open(path, encoding="utf-8") as file:
            text = re.sub(r"[ \t]*(//.*)?$", "", file.read(), flags=re.M)
        self.syntaxes_of[module] = dict(re.split(r",\s*", each, maxsplit=1) for each in self._entries("SYNTAX", text))
        self.syntaxes = self.syntaxes_of[module] | self.syntaxes
        for each in self._entries("INDEX", text):
            entry, *columns = re.split(r",\s*", each)
            self.indexes.setdefault(entry, [column.strip('"') for column in columns])
        for each in self._entries("NODE", text):
            parent, number, name, rest = re.split(r",\s*", each, maxsplit=3)
            syntax, access, more = re.match(r"(.*?),\s*(NONE|NOT_ACCESSIBLE|READ_\w+),\s*\w+(.*)", rest, re.S).groups()
            if name not in self.nodes:
                self.nodes[name] = Node(self.nodes.get(parent), int(number), name, syntax, access, module)
            if path == PLUG_INS:
                parameter = int(re.match(r",\s*(\w+),", more)[1], 16)
                self.nodes[name].of_the_plug_in = access != "NOT_ACCESSIBLE" and parameter != 0

    @staticmethod
    def _entries(name, text):
        return [match[1] for match in re.finditer(rf"^{name}\((.*?)\)$", text, re.M | re.S)]

    def labels(self, name):
        """Of an object whose syntax is an enumeration: label by number."""
        syntax = self.syntaxes.get(self.nodes[name].syntax, "")
        return {int(number): label for label, number in re.findall(r'\{"([\w-]+)", (-?\d+)\}', syntax)}

    def object_of(self, oid):
        """The object that an instance belongs to, and the rest of its identifier; None for none of ours."""
        for length in range(len(oid), 0, -1):
            if oid[:length] in self.by_oid:
                return self.by_oid[oid[:length]], oid[length:]
        return None, oid

    def version(self, oid):
        """Of which version of IP an instance is, as its index says: 4, 6 or None."""
        node, instance = self.object_of(oid)
        place = 0
        for column in self.indexes.get(node.parent.name if node and node.parent else None, []):
            syntax = self.nodes[column].syntax
            if syntax in ("InetAddressType", "InetVersion"):
                return {1: 4, 2: 6, 3: 4, 4: 6}.get(instance[place])
            if syntax not in ("InterfaceIndex", "Integer32"):
                return None
            place += 1
        return None
