#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""Writes the MIB modules that collectors' tools want to load into a folder: IP-MIB out of the plug-in's catalogue, and of
SNMPv2-MIB and IF-MIB what stands beside it.

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
STATUS = "INTEGER { up(1), down(2), testing(3), unknown(4), dormant(5), notPresent(6), lowerLayerDown(7) }"
IF_TABLE = [("ifIndex", 1, "INTEGER"), ("ifDescr", 2, "DisplayString"), ("ifType", 3, "INTEGER"), ("ifMtu", 4, "INTEGER"),
            ("ifSpeed", 5, "Gauge32"), ("ifPhysAddress", 6, "PhysAddress"), ("ifAdminStatus", 7, STATUS),
            ("ifOperStatus", 8, STATUS), ("ifLastChange", 9, "TimeTicks"), ("ifInOctets", 10, "Counter32"),
            ("ifInUcastPkts", 11, "Counter32"), ("ifInDiscards", 13, "Counter32"), ("ifInErrors", 14, "Counter32"),
            ("ifOutOctets", 16, "Counter32"), ("ifOutUcastPkts", 17, "Counter32"), ("ifOutDiscards", 19, "Counter32"),
            ("ifOutErrors", 20, "Counter32")]
IF_X_TABLE = [("ifName", 1, "DisplayString"), ("ifInMulticastPkts", 2, "Counter32"), ("ifHCInOctets", 6, "Counter64"),
              ("ifHCInUcastPkts", 7, "Counter64"), ("ifHCInMulticastPkts", 8, "Counter64"),
              ("ifHCOutOctets", 10, "Counter64"), ("ifHCOutUcastPkts", 11, "Counter64"), ("ifHighSpeed", 15, "Gauge32"),
              ("ifAlias", 18, "DisplayString")]


MIB_2 = (1, 3, 6, 1, 2, 1)
# Where they stand, by name.
OUTSIDE = {name: base + (number,)
           for base, columns in ((MIB_2 + (1,), SYSTEM), (MIB_2 + (2, 2, 1), IF_TABLE), (MIB_2 + (31, 1, 1, 1), IF_X_TABLE))
           for name, number, _ in columns}


def smi_syntax(syntax):
    """In the words of the SMI: Unsigned32({0, 0}, {4, 9000}) is Unsigned32 (0 | 4..9000)."""
    labels = re.findall(r'\{"(\w+)", (-?\d+)\}', syntax)
    if labels:
        return "INTEGER { " + ", ".join(f"{name}({number})" for name, number in labels) + " }"
    base = re.match(r"\w+", syntax)[0]
    ranges = " | ".join(low if low == high else f"{low}..{high}"
                        for low, high in re.findall(r"\{(\d+), (\d+)\}", syntax))
    if base == "OctetString":
        return "OCTET STRING" + (f" (SIZE ({ranges}))" if ranges else "")
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


def table(name, parent, number, index, columns):
    entry = name.replace("Table", "Entry")
    text = object_type(name, f"SEQUENCE OF {row_type(entry)}", "not-accessible", parent, number)
    text += object_type(entry, row_type(entry), "not-accessible", name, 1, index)
    return text + "".join(object_type(column, syntax, "read-only", entry, place) for column, place, syntax in columns)


def ip_mib():
    catalogue = Catalogue()
    module = "".join(convention(name, smi_syntax(syntax)) for name, syntax in catalogue.syntaxes.items())
    mib_2 = catalogue.nodes["mib_2"].oid
    for node in catalogue.nodes.values():
        if node.oid[: len(mib_2)] != mib_2 or node.oid == mib_2:
            continue
        parent = node.parent.name.replace("_", "-")
        if node.syntax == "Identifier":
            module += identifier(node.name, parent, node.number)
            continue
        syntax = {"Table": "SEQUENCE OF " + row_type(node.name).replace("Table", "Entry"),
                  "Entry": row_type(node.name)}.get(node.syntax) or smi_syntax(node.syntax)
        module += object_type(node.name, syntax, ACCESS[node.access], parent, node.number,
                              catalogue.indexes.get(node.name))
    return module


def write(folder):
    modules = {
        "SNMPv2-SMI": SMI,
        "SNMPv2-MIB": identifier("system", "mib-2", 1) + "".join(
            object_type(name, syntax, "read-only", "system", number) for name, number, syntax in SYSTEM),
        "IF-MIB": identifier("interfaces", "mib-2", 2) + identifier("ifMIB", "mib-2", 31)
        + identifier("ifMIBObjects", "ifMIB", 1) + convention("DisplayString", "OCTET STRING")
        + convention("PhysAddress", "OCTET STRING") + object_type("ifNumber", "INTEGER", "read-only", "interfaces", 1)
        + table("ifTable", "interfaces", 2, ["ifIndex"], IF_TABLE)
        + table("ifXTable", "ifMIBObjects", 1, ["ifIndex"], IF_X_TABLE),
        "IP-MIB": ip_mib(),
    }
    os.makedirs(folder, exist_ok=True)
    for name, body in modules.items():
        imports = "" if name == "SNMPv2-SMI" else "IMPORTS mib-2 FROM SNMPv2-SMI;\n"
        with open(f"{folder}/{name}.txt", "w", encoding="utf-8") as file:
            file.write(f"{name} DEFINITIONS ::= BEGIN\n{imports}{body}\nEND\n")


if __name__ == "__main__":
    write(sys.argv[1])
