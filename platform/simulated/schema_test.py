#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""The schema of scenarios accepts and refuses what the platform accepts and refuses."""
import glob
import json
import sys

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed")
    sys.exit(77)

source = sys.argv[1]
testdata = source + "/platform/simulated/testdata/"


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


schema = load(source + "/docs/scenario.schema.json")
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
failures = []

accepted = sorted(glob.glob(source + "/examples/*.json")) + [testdata + "full.json"]
for path in accepted:
    for error in validator.iter_errors(load(path)):
        failures.append(f"{path}: {error.json_path}: {error.message}")
for case in load(testdata + "refused.json"):
    by_schema = not validator.is_valid(case["scenario"])
    if by_schema != case.get("bySchema", True):
        verdict = "refuses" if by_schema else "accepts"
        failures.append(f"the schema {verdict} {json.dumps(case['scenario'])}")

print("\n".join(failures))
sys.exit(1 if failures else 0)
