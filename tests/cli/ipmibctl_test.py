#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""ipmibctl on a terminal, in a pipe, and with its own words handed back to it. The first argument is the program."""
import fcntl
import glob
import json
import os
import pty
import signal
import struct
import subprocess
import sys
import termios
import unittest

program = os.path.abspath(sys.argv.pop(1))
root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
examples = sorted(glob.glob(root + "/examples/*.json"))
home_router = ["--platform", f"simulated:{root}/examples/home-router.json", "--at=0"]
views = ["neighbours", "addresses", "prefixes", "routers", "interfaces", "statistics", "advertisements", "icmp"]
patience = 300  # for what hangs; under emulation on a busy machine a minute is not enough


def run(*words, **options):
    return subprocess.run([program, *words], capture_output=True, text=True, timeout=patience, check=False, **options)


def on_terminal(columns, *words):
    """What it writes to a terminal so many places wide."""
    terminal, end = pty.openpty()
    fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    with subprocess.Popen([program, *words], stdout=end, stderr=subprocess.DEVNULL) as process:
        os.close(end)
        written = b""
        try:
            while piece := os.read(terminal, 65536):
                written += piece
        except OSError:  # a terminal's way to say that nobody has it open any more
            pass
        process.wait(patience)
    os.close(terminal)
    return written.decode().replace("\r\n", "\n")


class Terminal(unittest.TestCase):
    def test_every_line_of_every_view_fits(self):
        for view in views:
            for columns in (80, 100, 132):
                lines = on_terminal(columns, "show", view, *home_router).splitlines()
                self.assertGreater(len(lines), 1)
                for line in lines:
                    self.assertLessEqual(len(line), columns, f"{view}: {line}")
        for line in on_terminal(80, "tree", *home_router).splitlines():
            self.assertLessEqual(len(line), 80, line)

    def test_all_columns_are_there_where_there_is_room(self):
        for view in views:
            wide = on_terminal(250, "show", view, *home_router)
            self.assertEqual(wide, run("show", view, *home_router).stdout)

    def test_watch_stays_in_its_place(self):
        written = on_terminal(100, "watch", "icmp", "--count=2", "--interval=0.05", *home_router)
        pictures = written.split("\033[H\033[2J")
        self.assertEqual(pictures[0], "")
        self.assertEqual(len(pictures), 3)
        self.assertTrue(all(picture.startswith("TYPE") for picture in pictures[1:]))


class Pipes(unittest.TestCase):
    def test_a_full_disk_is_no_success(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            for words in (["show", "icmp"], ["walk", "ip"], ["tree"], ["--help"]):
                result = subprocess.run([program, *words, *home_router], stdout=full, stderr=subprocess.PIPE, text=True,
                                        timeout=patience, check=False)
                self.assertEqual(result.returncode, 1, words)
                self.assertEqual(result.stderr, "ipmibctl: cannot write: No space left on device\n")

    def test_an_interrupted_watch_has_ended_well(self):
        with subprocess.Popen([program, "watch", "icmp", "--interval=0.05", *home_router], stdout=subprocess.PIPE,
                              text=True) as process:
            self.assertTrue(process.stdout.readline().startswith("TYPE"))
            process.send_signal(signal.SIGINT)
            process.stdout.read()
            self.assertEqual(process.wait(patience), 0)


class Words(unittest.TestCase):
    def test_every_name_that_it_writes_it_also_reads(self):
        for example in examples:
            platform = ["--platform", "simulated:" + example, "--at=0"]
            with open(example, encoding="utf-8") as scenario:
                big = "generate" in json.load(scenario)
            walked = json.loads(run("walk", "ipNetToPhysicalTable" if big else "1.3.6.1", "--json", *platform).stdout)
            self.assertGreater(len(walked), 100)
            some = walked[:: max(1, len(walked) // 2000)]  # a command line has an end
            for word in ("name", "oid"):
                got = run("get", "--json", *platform, *(each[word] for each in some))
                self.assertEqual(got.stderr, "")
                self.assertEqual(json.loads(got.stdout), some)

    def test_json_and_text_have_the_same_rows(self):
        for view in views:
            rows = json.loads(run("show", view, "--json", *home_router).stdout)
            lines = run("show", view, *home_router).stdout.splitlines()[1:]
            self.assertEqual(len(rows), len(lines), view)
            for row, line in zip(rows, lines):
                for value in row.values():
                    if isinstance(value, str):
                        self.assertIn(value, line)

    def test_one_interface_is_the_rows_of_all_that_are_its_own(self):
        for view in set(views) - {"icmp", "statistics"}:
            rows = json.loads(run("show", view, "--json", *home_router).stdout)
            for name in ("wan0", "lan0", "guest0"):
                shown = json.loads(run("show", view, name, "--json", *home_router).stdout)
                self.assertEqual(shown, [row for row in rows if row["interface"] == name])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
