# SPDX-License-Identifier: BSD-3-Clause
"""The plug-in's catalogue of the IP-MIB, read."""
import os
import re

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class Node:
    def __init__(self, parent, number, name, syntax, access, served):
        self.parent = parent
        self.name = name
        self.number = number
        self.oid = (parent.oid if parent else ()) + (number,)
        self.syntax = syntax  # as the catalogue writes it
        self.access = access
        self.served = served


class Catalogue:
    """nodes by name and by oid, indexes by entry, syntaxes by name."""

    def __init__(self):
        with open(root + "/module/mibtree/ip_mib.def", encoding="utf-8") as file:
            text = re.sub(r"[ \t]*(//.*)?$", "", file.read(), flags=re.M)
        self.syntaxes = dict(re.split(r",\s*", each, maxsplit=1) for each in self._entries("SYNTAX", text))
        self.indexes = {}
        for each in self._entries("INDEX", text):
            entry, *columns = re.split(r",\s*", each)
            self.indexes[entry] = columns
        self.nodes = {}
        for each in self._entries("NODE", text):
            parent, number, name, rest = re.split(r",\s*", each, maxsplit=3)
            syntax, access, parameter = re.match(r"(.*?),\s*(NONE|NOT_ACCESSIBLE|READ_\w+),\s*\w+,\s*(\w+),", rest).groups()
            served = access != "NOT_ACCESSIBLE" and int(parameter, 16) != 0
            self.nodes[name] = Node(self.nodes.get(parent), int(number), name, syntax, access, served)
        self.by_oid = {node.oid: node for node in self.nodes.values()}

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
