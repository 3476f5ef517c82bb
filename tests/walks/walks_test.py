# SPDX-License-Identifier: BSD-3-Clause
"""ipmibctl import and export without an agent.

Usage: walks_test.py IPMIBCTL
"""
import json
import os
import subprocess
import sys
import tempfile
import unittest

root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
program = sys.argv.pop()
up_time = "1.3.6.1.2.1.1.3.0|"


def run(*words, text=None):
    return subprocess.run([program, *words], input=text, capture_output=True, text=True, check=False)


def export(scenario):
    """Of a scenario in a file, or of one as an object, without sysUpTime."""
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
        if not isinstance(scenario, str):
            json.dump(scenario, file)
            file.flush()
            scenario = file.name
        done = run("export", "--platform", "simulated:" + scenario, "--at=0")
    assert done.returncode == 0, done.stderr
    return [line for line in done.stdout.splitlines() if not line.startswith(up_time)]


def imported(text):
    with tempfile.NamedTemporaryFile("w") as file:
        file.write(text)
        file.flush()
        done = run("import", file.name)
    return done


class Walks(unittest.TestCase):
    def test_what_is_imported_is_exported_again(self):
        for name in ["home-router", "unsteady-access", "failing-services"]:
            with self.subTest(name):
                before = export(f"{root}/examples/{name}.json")
                self.assertGreater(len(before), 100)
                done = imported("\n".join(before) + "\n")
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertEqual(export(json.loads(done.stdout)), before)

    def test_the_model_has_what_a_scenario_can_say(self):
        done = imported("\n".join(export(f"{root}/examples/home-router.json")) + "\n")
        device = json.loads(done.stdout)
        with open(f"{root}/examples/home-router.json", encoding="utf-8") as file:
            original = json.load(file)
        self.assertEqual([interface["name"] for interface in device["interfaces"]],
                         [interface["name"] for interface in original["interfaces"]])
        by_model = int(done.stderr.split("by its model: ")[1].split()[0])
        self.assertGreater(by_model, len(device.get("objects", [])), done.stderr)

    def test_recorded_objects_stand_in_the_order_of_a_walk(self):
        walk = [".1.3.6.1.2.1.1.5.0 = STRING: \"old\"", ".1.3.6.1.2.1.2.1.0 = INTEGER: 1",
                ".1.3.6.1.2.1.2.2.1.1.4 = INTEGER: 4", ".1.3.6.1.2.1.2.2.1.2.4 = STRING: \"eth\"",
                ".1.3.6.1.2.1.2.2.1.8.4 = INTEGER: 7", ".1.3.6.1.4.1.9.1 = Hex-STRING: 00 FF "]
        done = imported("\n".join(walk) + "\n")
        device = json.loads(done.stdout)
        self.assertEqual(export(device), [
            "1.3.6.1.2.1.1.5.0|4|old", "1.3.6.1.2.1.2.1.0|2|1", "1.3.6.1.2.1.2.2.1.1.4|2|4",
            "1.3.6.1.2.1.2.2.1.2.4|4|eth", "1.3.6.1.2.1.2.2.1.8.4|2|7", "1.3.6.1.4.1.9.1|4x|00ff"])
        self.assertEqual(device["system"]["name"], "old")
        self.assertIn("1.3.6.1.4.1.9.1|4x|00ff", device["objects"])
        self.assertIn("1.3.6.1.2.1.31.1.1", device["lacking"])
        self.assertIn("of other MIBs, served as recorded: 1 (1.3.6.1.4.1.9.1)", done.stderr)

    def test_a_recorded_value_wins_in_every_command(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
            json.dump({"interfaces": [{"name": "a"}, {"name": "b"}], "lacking": ["1.3.6.1.2.1.2.2.1.4.2"],
                       "objects": ["1.3.6.1.2.1.2.2.1.4.1|2|65536"]}, file)
            file.flush()
            done = run("walk", "ifMtu", "--platform", "simulated:" + file.name)
        self.assertEqual(done.stdout, "ifMtu[a] = 65536\n", done.stderr)

    def test_a_mistake_is_told_with_its_line(self):
        done = imported(".1.3.6.1 = INTEGER: 1\nIF-MIB::ifIndex.1 = INTEGER: 1\n")
        self.assertEqual(done.returncode, 1)
        self.assertIn(": line 2: \"IF-MIB::ifIndex.1 = INTEGER: 1\" does not begin with a numeric identifier",
                      done.stderr)
        self.assertEqual(done.stdout, "")
        self.assertEqual(run("import").returncode, 2)
        self.assertIn("No such file", run("import", "/no/such/walk").stderr)


if __name__ == "__main__":
    unittest.main()
