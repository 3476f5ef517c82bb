#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""docs/agentx.md has the table of tests/e2e/no_counterpart.json, which the test of losslessness goes by.

    counterparts.py [--update]     with --update the table of the document is written anew
"""
import json
import os
import sys

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
document = root + "/docs/agentx.md"
BEGIN, END = "<!-- from tests/e2e/no_counterpart.json -->\n", "<!-- end -->\n"


def table():
    with open(root + "/tests/e2e/no_counterpart.json", encoding="utf-8") as file:
        rows = json.load(file)
    text = "\n| Table | snmpd has | ipmib has | Why |\n|---|---|---|---|\n"
    for row in rows:
        names = ", ".join(f"`{name}`" for name in row["table"].split(", "))
        text += f"| {names} | {row['rows']} | {row['instead']} | {row['reason']} |\n"
    return text + "\n"


def main():
    with open(document, encoding="utf-8") as file:
        text = file.read()
    before, rest = text.split(BEGIN)
    expected = before + BEGIN + table() + END + rest.split(END)[1]
    if "--update" in sys.argv:
        with open(document, "w", encoding="utf-8") as file:
            file.write(expected)
    elif text != expected:
        print("make docs writes the table of docs/agentx.md anew")
        return False
    return True


if __name__ == "__main__":
    sys.exit(0 if main() else 1)
