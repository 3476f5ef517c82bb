# SPDX-License-Identifier: BSD-3-Clause
"""Every member and every word of the scenario schema stands in the manual page.

Usage: scenario_manual_test.py PAGE SCHEMA
"""
import json
import re
import sys


def words(schema):
    if isinstance(schema, list):
        return set().union(*map(words, schema), set())
    if not isinstance(schema, dict):
        return set()
    found = set(schema.get("properties", {}))
    # The names of services are those of a header that the page names.
    found |= {str(word) for word in schema.get("enum", []) if not re.match("[A-Z0-9]+_|IP6", str(word))}
    return found.union(*map(words, schema.values()))


def main(page, schema):
    with open(page, encoding="utf-8") as file:
        marked = set(re.findall(r"[\w$]+", " ".join(re.findall(r"^\.(?:It |Pq )?Cm .*|^\.Po Cm .*", file.read(), re.M))))
    with open(schema, encoding="utf-8") as file:
        wanted = words(json.load(file))
    for word in sorted(wanted - marked):
        print(f"{page} lacks {word}")
    print(f"{len(wanted)} words")
    return 0 if wanted and wanted <= marked else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
