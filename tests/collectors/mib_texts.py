#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Writes the MIB modules that collectors' tools want to load into a folder, out of the product's catalogue; and SNMPv2-MIB,
as far as its system group goes.

Debian has no IETF MIB texts, and those tools work by name. What is written here has names, types, labels and indexes, and
no descriptions: enough to translate with, no replacement for the modules themselves.
"""
import os
import re
import sys

from catalogue import Catalogue

ACCESS = {"NOT_ACCESSIBLE": "not-accessible", "READ_ONLY": "read-only", "READ_WRITE": "read-write",
          "READ_CREATE": "read-create"}
HINTS = {"PhysAddress": "1x:"}  # of those that tools look at

SMI = """
org OBJECT IDENTIFIER ::= { iso 3 }
dod OBJECT IDENTIFIER ::= { org 6 }
internet OBJECT IDENTIFIER ::= { dod 1 }
mgmt OBJECT IDENTIFIER ::= { internet 2 }
mib-2 OBJECT IDENTIFIER ::= { mgmt 1 }
"""
SYSTEM = [("sysDescr", 1, "OCTET STRING"), ("sysObjectID", 2, "OBJECT IDENTIFIER"), ("sysUpTime", 3, "TimeTicks"),
          ("sysContact", 4, "OCTET STRING"), ("sysName", 5, "OCTET STRING"), ("sysLocation", 6, "OCTET STRING"),
          ("sysServices", 7, "INTEGER (0..127)")]

# Objects beside the catalogue's, by name.
OUTSIDE = {name: (1, 3, 6, 1, 2, 1, 1, number) for name, number, _ in SYSTEM}


def smi_syntax(syntax, named):
    """In the words of the SMI: Unsigned32({0, 0}, {4, 9000}) is Unsigned32 (0 | 4..9000)."""
    labels = re.findall(r'\{"([\w-]+)", (-?\d+)\}', syntax)
    if labels:
        return "INTEGER { " + ", ".join(f"{name}({number})" for name, number in labels) + " }"
    base = re.match(r"\w+", syntax)[0]
    ranges = " | ".join(low if low == high else f"{low}..{high}"
                        for low, high in re.findall(r"\{(-?\d+), (\d+)\}", syntax))
    if base == "OctetString":
        return "OCTET STRING" + (f" (SIZE ({ranges}))" if ranges else "")
    if named.get(base, "").startswith("OctetString"):
        return base + (f" (SIZE ({ranges}))" if ranges else "")
    if base == "ObjectIdentifier":
        return "OBJECT IDENTIFIER"
    return base + (f" ({ranges})" if ranges else "")


def row_type(name):
    return name[0].upper() + name[1:]


def identifier(name, parent, number):
    return f"\n{name} OBJECT IDENTIFIER ::= {{ {parent} {number} }}\n"


def convention(name, syntax):
    hint = f'\n    DISPLAY-HINT "{HINTS[name]}"' if name in HINTS else ""
    return f'\n{name} ::= TEXTUAL-CONVENTION{hint}\n    STATUS current\n    DESCRIPTION ""\n    SYNTAX {syntax}\n'


def object_type(name, syntax, access, parent, number, index=None):
    clause = f"\n    INDEX {{ {', '.join(index)} }}" if index else ""
    return (f"\n{name} OBJECT-TYPE\n    SYNTAX {syntax}\n    MAX-ACCESS {access}\n    STATUS current\n"
            f'    DESCRIPTION ""{clause}\n    ::= {{ {parent} {number} }}\n')


def module_of(catalogue, module):
    named = catalogue.syntaxes_of[module]
    text = "".join(convention(name, smi_syntax(syntax, named)) for name, syntax in named.items())
    mib_2 = catalogue.nodes["mib_2"].oid
    for node in catalogue.nodes.values():
        if node.module != module or node.oid[: len(mib_2)] != mib_2 or node.oid == mib_2:
            continue
        parent = node.parent.name.replace("_", "-")
        if node.syntax == "Identifier":
            text += identifier(node.name, parent, node.number)
            continue
        syntax = {"Table": "SEQUENCE OF " + row_type(node.name).replace("Table", "Entry"),
                  "Entry": row_type(node.name)}.get(node.syntax) or smi_syntax(node.syntax, named)
        text += object_type(node.name, syntax, ACCESS[node.access], parent, node.number,
                            catalogue.indexes.get(node.name))
    return text


def imports(catalogue, module):
    """Of nodes that other modules describe."""
    others = {node.parent for node in catalogue.nodes.values()
              if node.module == module and node.parent and node.parent.module != module and node.parent.name != "mib_2"}
    return "IMPORTS mib-2 FROM SNMPv2-SMI" + "".join(f" {other.name} FROM {other.module}" for other in others) + ";\n"


def write(folder):
    catalogue = Catalogue()
    modules = {
        "SNMPv2-SMI": SMI,
        "SNMPv2-MIB": "IMPORTS mib-2 FROM SNMPv2-SMI;\n" + identifier("system", "mib-2", 1) + "".join(
            object_type(name, syntax, "read-only", "system", number) for name, number, syntax in SYSTEM),
    } | {module: imports(catalogue, module) + module_of(catalogue, module) for module in catalogue.syntaxes_of}
    os.makedirs(folder, exist_ok=True)
    for name, body in modules.items():
        with open(f"{folder}/{name}.txt", "w", encoding="utf-8") as file:
            file.write(f"{name} DEFINITIONS ::= BEGIN\n{body}\nEND\n")


if __name__ == "__main__":
    write(sys.argv[1])
