# SPDX-License-Identifier: BSD-3-Clause
"""What an agent has of a simulated device beside what it should have: by GET, and by a walk, which has no others."""
import json
import os
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "collectors"))
from agent import Agent  # noqa: E402
from catalogue import Catalogue  # noqa: E402

catalogue = Catalogue()


class ColumnCheck:
    """Stands in front of unittest.TestCase. ipmibd is the last argument of the program."""

    scenario = {}
    wanted = {}  # texts by object and instance
    whole = []  # tables and groups whose expected rows are all there are
    maxDiff = None

    def is_expected(self, oid):
        """Whether it is of a kind that stands in `wanted`."""
        return True

    @classmethod
    def setUpClass(cls):
        with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
            json.dump(cls.scenario, file)
            file.flush()
            with Agent(os.path.abspath(sys.argv[-1]), file.name) as agent:
                cls.walked = cls.texts(agent.walk("1.3.6.1.2.1"))
                asked = [".".join(map(str, catalogue.nodes[name].oid + instance)) for name, instance in cls.wanted]
                cls.got = {}
                for begin in range(0, len(asked), 40):
                    cls.got |= cls.texts(agent.rows("snmpget", *asked[begin : begin + 40]))

    @staticmethod
    def texts(rows):
        found = {}
        for oid, _, text in rows:
            node, instance = catalogue.object_of(oid)
            if node is not None:
                found[node.name, instance] = text
        return found

    def test_each_is_got(self):
        self.assertEqual(self.got, self.wanted)

    def test_each_is_walked(self):
        self.assertEqual({row: self.walked.get(row) for row in self.wanted}, self.wanted)

    def test_a_walk_has_no_others(self):
        for name in self.whole:
            place = catalogue.nodes[name].oid
            for (column, instance), text in self.walked.items():
                oid = catalogue.nodes[column].oid + instance
                if oid[: len(place)] == place and self.is_expected(oid):
                    self.assertTrue((column, instance) in self.wanted, f"{column} {instance} = {text}")
