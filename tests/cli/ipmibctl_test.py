#!/usr/bin/python3
# SPDX-License-Identifier: BSD-3-Clause
"""ipmibctl on a terminal, in a pipe, and with its own words handed back to it. The first argument is the program."""
import fcntl
import glob
import json
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

program = os.path.abspath(sys.argv.pop(1))
root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
examples = sorted(glob.glob(root + "/examples/*.json"))
home_router = ["--platform", f"simulated:{root}/examples/home-router.json", "--at=0"]
views = ["neighbours", "addresses", "prefixes", "routers", "interfaces", "statistics", "advertisements", "icmp"]
patience = 300  # for what hangs; under emulation on a busy machine a minute is not enough


def run(*words, **options):
    return subprocess.run([program, *words], capture_output=True, timeout=patience, check=False,
                          **{"encoding": "utf-8", **options})


def on_terminal(columns, *words, lines=24, stderr=subprocess.DEVNULL, **environment):
    """What it writes to a terminal so many places wide and so many lines high."""
    terminal, end = pty.openpty()
    fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))
    variables = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "COLORFGBG", "TERM")}
    with subprocess.Popen([program, *words], stdout=end, stderr=end if stderr is None else stderr,
                          env={**variables, **environment}) as process:
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


def without_colour(text):
    return re.sub(r"\033\[[0-9;]*m", "", text)


class Terminal(unittest.TestCase):
    def test_every_line_of_every_view_fits(self):
        for view in views:
            for columns in (80, 100, 132):
                lines = without_colour(on_terminal(columns, "show", view, *home_router, stderr=None)).splitlines()
                self.assertGreater(len(lines), 1)
                for line in lines:
                    self.assertLessEqual(len(line), columns, f"{view}: {line}")
        for line in on_terminal(80, "tree", *home_router).splitlines():
            self.assertLessEqual(len(line), 80, line)

    def test_all_columns_are_there_where_there_is_room(self):
        for view in views:
            wide = on_terminal(250, "show", view, "--color=never", *home_router)
            self.assertEqual(wide, run("show", view, *home_router).stdout)

    def test_watch_stays_in_its_place(self):
        written = on_terminal(100, "watch", "icmp", "--count=2", "--interval=0.05", "-4", *home_router)
        pictures = written.split("\033[H\033[2J")
        self.assertEqual(pictures[0], "")
        self.assertEqual(len(pictures), 3)
        self.assertTrue(all(picture.startswith("VERSION") for picture in pictures[1:]))


    def test_the_columns_that_matter_stay(self):
        for view, staying in (("neigh", "STATE"), ("addr", "STATUS"), ("prefixes", "ORIGIN"), ("routers", "PREFERENCE")):
            text = without_colour(on_terminal(58, "show", view, *home_router, stderr=None))
            self.assertIn(staying, text.splitlines()[0])
            notes = [line for line in text.splitlines() if line.startswith("ipmibctl: ")]
            self.assertLessEqual(len(notes), 1)
            self.assertNotRegex(text.splitlines()[0], "UPDATED|CREATED|CHANGED|VALID")

    def test_colour_is_for_terminals_that_want_it(self):
        words = ["show", "neigh", *home_router]
        plain = run(*words).stdout
        self.assertNotIn("\033", plain)
        for words_of_colour in (["-c"], ["--color"], ["--color=always"], ["--colour=always"], ["-c=always"]):
            painted = run(*words, *words_of_colour, env={**os.environ, "NO_COLOR": "1"}).stdout
            self.assertIn("\033[35m203.0.113.1\033[0m", painted, words_of_colour)
            self.assertIn("\033[34mfe80::1%wan0\033[0m", painted)
            self.assertEqual(without_colour(painted), plain)
        self.assertIn("\033[32mreachable", on_terminal(200, *words))
        self.assertIn("\033[1;32mreachable", on_terminal(200, *words, COLORFGBG="15;0"))
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertEqual(on_terminal(200, *words, **environment), plain)
        self.assertEqual(on_terminal(200, *words, "--color=never"), plain)
        self.assertNotIn("\033", run(*words, "-c", "-j").stdout)

    def test_watch_of_more_rows_than_lines_shows_the_busiest(self):
        scenario = {"interfaces": [{"name": f"eth{i}", "counters": {"ipv6": {"inReceives": {"start": 0, "rate": i * 100}}}}
                                   for i in range(1, 31)]}
        with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
            json.dump(scenario, file)
            file.flush()
            words = ["watch", "interfaces", "-6", "--count=1", "--interval=0.5", "--platform", "simulated:" + file.name]
            lines = on_terminal(200, *words, "--color=never", lines=10, stderr=None).splitlines()
            self.assertEqual(len(lines), 9, lines)
            self.assertIn("INTERFACE", lines[0])
            self.assertEqual([line.split()[0] for line in lines[2:8]], [f"eth{i}" for i in range(30, 24, -1)])
            self.assertIn("24 more rows", lines[8])
            rows = json.loads(run(*words, "-j", "--filter", "interface=eth2", "--sort", "interface").stdout)
            self.assertEqual([row["interface"] for row in rows], ["eth2"] + [f"eth{i}" for i in range(20, 30)])


class Watching(unittest.TestCase):
    def test_what_comes_goes_and_changes(self):
        """The kernel's own neighbours, in a namespace."""
        if os.geteuid() != 0 or subprocess.run(["unshare", "-n", "true"], stderr=subprocess.DEVNULL,
                                               check=False).returncode != 0:
            self.skipTest("needs network namespaces")
        if shutil.which("ip") is None or not os.path.exists(os.path.dirname(os.path.dirname(program)) +
                                                            "/lib/ipmib/platform_linux.so"):
            self.skipTest("needs ip and the Linux platform")
        with subprocess.Popen(["unshare", "-n", "sh"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              text=True) as shell:
            def told(command):
                shell.stdin.write(command + "\n")
                shell.stdin.flush()
                self.assertTrue(select.select([shell.stdout], [], [], 60)[0], command)
                return shell.stdout.readline().split()
            self.assertEqual(told("trap 'kill $!' EXIT; ip link add v0 type veth peer name v1; ip link set v1 up; "
                                  "ip link set v0 up; ip addr add 192.0.2.1/24 dev v0; "
                                  f"'{program}' watch arp --interval 0.05 &")[:2], ["TIME", "CHANGE"])
            neighbour = "192.0.2.7 lladdr 02:00:5e:00:53:07 dev v0 nud"
            self.assertEqual(told(f"ip neigh replace {neighbour} permanent")[1:],
                             ["new", "192.0.2.7", "v0", "02:00:5e:00:53:07", "reachable", "static"])
            self.assertEqual(told(f"ip neigh replace {neighbour} stale")[1:],
                             ["changed", "192.0.2.7", "v0", "02:00:5e:00:53:07", "stale", "dynamic"])
            self.assertEqual(told("ip neigh del 192.0.2.7 dev v0")[1:3], ["gone", "192.0.2.7"])
            shell.stdin.close()
            shell.wait(patience)


class Shells(unittest.TestCase):
    """Shells complete what the program knows."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        os.symlink(program, self.folder.name + "/ipmibctl")
        self.environment = {**os.environ, "PATH": self.folder.name + ":" + os.environ["PATH"], "HOME": self.folder.name,
                            "TERM": "xterm"}

    def tearDown(self):
        self.folder.cleanup()

    device = f"--platform simulated:{root}/examples/home-router.json"
    # What is written, and what may stand there in place of the last word.
    lines = {
        "sh": {"show"},
        "show ne": {"neighbours"},
        "neigh dev ": None,
        "watch stat": {"statistics"},
        f"{device} get ipv6IpDef": {"ipv6IpDefaultHopLimit"},
        "neigh --sort up": {"updated"},
        "--platform simulated:x.json show ro": {"routers", "routes", "route"},
        "--platform sim": {"simulated:"},
        "completion ": {"bash", "zsh", "fish"},
        "--color=al": {"--color=always"},
    }
    interfaces = f"{device} neigh dev l"

    def candidates(self, line):
        *words, last = line.split(" ")
        told = run("__complete", *words, last)
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        return {candidate.split("\t")[0] for candidate in told.stdout.splitlines()}

    def test_candidates(self):
        for line, expected in self.lines.items():
            if expected is not None:
                self.assertEqual(self.candidates(line), expected, line)
        self.assertEqual(self.candidates(self.interfaces), {"lan0"})
        self.assertEqual(self.candidates("show neigh wan0 "), set())
        for line in ("nonsense ", "get [[ ", "--count x show ", "show neigh --sort "):
            self.candidates(line)

    def test_every_command_and_option_has_its_place(self):
        helped = run("--help").stdout
        offered = {word for word in self.candidates("") | self.candidates("-") if "=" not in word}
        for word in offered:
            self.assertIn(word, helped)
        self.assertEqual(set(re.findall(r" (--[a-z]+)", helped)), {word for word in offered if word.startswith("--")})

    def test_bash(self):
        script = run("completion", "bash").stdout + """
            ask() {
                COMP_LINE="ipmibctl $1" COMP_POINT=$((9 + ${#1})) COMPREPLY=()
                compopt() { :; }
                _ipmibctl
                printf '%s ' "${COMPREPLY[@]}"; echo
            }
            ask 'show ne'; ask '--platform sim'; ask '--platform simulated:x.json show neighbo'; ask '--color=al'
        """ + f"ask '{self.interfaces}'\n"
        told = subprocess.run(["bash", "-u", "-c", script], env=self.environment, capture_output=True, text=True,
                              timeout=patience, check=False)
        self.assertEqual(told.stderr, "")
        self.assertEqual([line.split() for line in told.stdout.splitlines()],
                         [["neighbours"], ["simulated:"], ["neighbours"], ["always"], ["lan0"]])

    def test_fish(self):
        if shutil.which("fish") is None:
            self.skipTest("fish is not installed")
        for line, expected in {**self.lines, self.interfaces: {"lan0"}}.items():
            if expected is None:
                continue
            told = subprocess.run(["fish", "--no-config", "-c", run("completion", "fish").stdout +
                                   f"complete -C 'ipmibctl {line}'"], env=self.environment, capture_output=True,
                                  text=True, timeout=patience, check=False)
            self.assertEqual({each.split("\t")[0] for each in told.stdout.splitlines()}, expected, line)

    def test_zsh(self):
        if shutil.which("zsh") is None:
            self.skipTest("zsh is not installed")
        with open(self.folder.name + "/_ipmibctl", "w", encoding="utf-8") as file:
            file.write(run("completion", "zsh").stdout)
        terminal, end = pty.openpty()
        with subprocess.Popen(["zsh", "-f", "-i"], stdin=end, stdout=end, stderr=end, env=self.environment,
                              start_new_session=True) as shell:
            os.close(end)
            setup = f"PS1=; fpath=({self.folder.name} $fpath); autoload -Uz compinit; compinit -u -D; echo re''ady\n"
            os.write(terminal, setup.encode())
            self.read_until(terminal, "ready")
            os.write(terminal, b"echo ipmibctl; ipmibctl completion ba\t | grep -c compopt; echo en''d\n")
            written = self.read_until(terminal, "end\r")
            os.write(terminal, b"exit\n")
            shell.wait(patience)
        os.close(terminal)
        self.assertRegex(written, r"completion bash")

    def read_until(self, terminal, mark):
        written = ""
        end = time.monotonic() + patience
        while mark not in written and time.monotonic() < end:
            if select.select([terminal], [], [], 1)[0]:
                written += os.read(terminal, 65536).decode(errors="replace")
        return written


class Pipes(unittest.TestCase):
    def test_a_full_disk_is_no_success(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            for words in (["show", "icmp"], ["walk", "ip"], ["tree"], ["--help"]):
                result = subprocess.run([program, *words, *home_router], stdout=full, stderr=subprocess.PIPE, text=True,
                                        timeout=patience, check=False)
                self.assertEqual(result.returncode, 1, words)
                self.assertEqual(result.stderr, "ipmibctl: cannot write: No space left on device\n")

    def test_an_interrupted_watch_says_what_ended_it(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with subprocess.Popen([program, "watch", "icmp", "--interval=0.05", *home_router], stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, text=True) as process:
                self.assertTrue(process.stdout.readline().startswith("VERSION"))
                process.send_signal(number)
                process.stdout.read()
                self.assertEqual(process.wait(patience), status)
                self.assertEqual(process.stderr.read(), "")


class Names(unittest.TestCase):
    """Whoever may create interfaces shall not write to the terminal."""

    # The bytes of a name in UTF-8, and how they are shown.
    names = {
        "\x1b[31m".encode(): "\\x1b[31m",
        "\u009b31m".encode(): "\\u009b31m",
        "a\u202eb".encode(): "a\\u202eb",
        "a\u200bb".encode(): "a\\u200bb",
        "büro".encode(): "büro",
    }

    def setUp(self):
        with tempfile.NamedTemporaryFile("w", suffix=".json", delete=False, encoding="utf-8") as file:
            json.dump({"interfaces": [{"name": name.decode(), "addresses": [f"2001:db8::{i}/64"]}
                                      for i, name in enumerate(self.names, 1)]}, file)
        self.scenario = file.name
        self.platform = ["--platform", "simulated:" + file.name, "--at=0"]

    def tearDown(self):
        os.unlink(self.scenario)

    def assert_harmless(self, words, result):
        for written in (result.stdout, result.stderr):
            self.assertEqual({character for character in written if not character.isprintable()} - {"\n"}, set(), words)

    def test_nothing_that_is_written_does_anything(self):
        commands = [("show", view) for view in views] + [("walk", "1.3.6.1"), ("tree",)]
        commands += [("watch", view, "--count=1", "--interval=0.01") for view in ("statistics", "interfaces", "icmp")]
        for words in commands:
            for form in ([], ["--json"]):
                result = run(*words, *form, *self.platform)
                self.assertEqual((result.returncode, result.stderr), (0, ""), words)
                self.assert_harmless(words, result)
        shown = run("show", "interfaces", *self.platform).stdout
        for name in self.names.values():
            self.assertIn(name, shown)

    def test_a_name_is_found_as_it_is_and_as_it_is_shown(self):
        for raw, name in self.names.items():
            rows = json.loads(run("show", "addresses", name, "--json", *self.platform).stdout)
            self.assertEqual({row["interface"] for row in rows}, {name})
            self.assertEqual(json.loads(run("show", "addresses", raw, "--json", *self.platform).stdout), rows)
            result = run("get", f"ipv6InterfaceForwarding[{name}]", *self.platform)
            self.assertEqual(result.stdout, f"ipv6InterfaceForwarding[{name}] = forwarding(1)\n")

    def test_nor_does_what_it_complains_about(self):
        evil = b"\x9b31m\xe2\x80\xae\x1b[2J"
        platform = [word.encode() for word in self.platform]
        for words, status in (
            (["show", "neighbours", evil, *platform], 1),
            (["show", evil, *platform], 2),
            ([evil, *platform], 2),
            (["get", evil, *platform], 2),
            (["get", b"ipv6InterfaceForwarding[1]", b"ipAddressIfIndex." + evil, *platform], 2),
            (["walk", evil, *platform], 2),
            (["tree", evil, *platform], 2),
            (["show", "icmp", b"--width=" + evil, *platform], 2),
            (["show", "icmp", b"--" + evil, *platform], 2),
            (["show", "icmp", b"--at=" + evil, *platform], 2),
            (["show", "icmp", b"--platform", evil], 2),
            (["show", "icmp", b"--platform", b"./" + evil], 1),
            (["show", "icmp", b"--platform", b"simulated:" + evil], 1),
            (["show", "icmp", b"--module", evil, *platform], 1),
        ):
            result = run(*words, encoding="utf-8")
            self.assertEqual(result.returncode, status, result.stderr)
            self.assertEqual(result.stdout, "")
            self.assertRegex(result.stderr, r"^ipmibctl: .*\\x9b31m\\u202e\\x1b\[2J.*\n$")
            self.assert_harmless(words, result)

    def test_nor_does_what_the_platform_logs(self):
        radvd = self.scenario + ".radvd"
        with open(radvd, "wb") as file:
            file.write(b"interface lan0 {\n  AdvSendAdvert \x1b[2J\x9b\xe2\x80\xae;\n};\n")
        try:
            result = run("show", "icmp", "--radvd-conf=" + radvd, encoding="utf-8")
        finally:
            os.unlink(radvd)
        if "no option --radvd-conf" in result.stderr or result.returncode == 2:
            self.skipTest("there is no Linux platform here")
        self.assertIn("radvd: " + radvd + ":2: ", result.stderr)
        self.assert_harmless(["radvd"], result)


class Files(unittest.TestCase):
    def test_what_has_no_end_does_not_keep_it(self):
        with tempfile.TemporaryDirectory() as folder:
            pipe = os.path.join(folder, "pipe")
            os.mkfifo(pipe)
            for name, reason in ((pipe, "line 1, column 1: syntax error"), ("/dev/zero", "it is no regular file")):
                result = run("show", "icmp", "--platform", "simulated:" + name)
                self.assertEqual(result.returncode, 1)
                self.assertIn(reason, result.stderr)

    def test_a_program_may_write_the_scenario(self):
        result = run("show", "interfaces", "--platform", "simulated:/dev/stdin", input='{"interfaces": [{"name": "x1"}]}')
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("x1", result.stdout)


class Contexts(unittest.TestCase):
    platform = ["--platform", f"simulated:{root}/examples/campus.json", "--at=0"]

    def test_each_is_a_device_of_its_own(self):
        listed = json.loads(run("show", "contexts", "--json", *self.platform).stdout)
        self.assertEqual(len(listed), 1001)
        self.assertEqual(listed[0]["context"], "core")
        for number in (1, 300, 1000):
            rows = json.loads(run("show", "addresses", "management", "--json", "--context", f"access{number}", *self.platform).stdout)
            self.assertEqual(rows[0]["address"], f"10.{number // 256}.{number % 256}.1/24")
        own = run("show", "addresses", "--json", *self.platform)
        self.assertEqual(json.loads(own.stdout), [])

    def test_one_that_is_not_there_is_said(self):
        result = run("show", "interfaces", "--context", "nobody", *self.platform)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, 'ipmibctl: there is no context "nobody"; ipmibctl show contexts lists them\n')


class Words(unittest.TestCase):
    def test_every_name_that_it_writes_it_also_reads(self):
        for example in examples:
            platform = ["--platform", "simulated:" + example, "--at=0"]
            with open(example, encoding="utf-8") as file:
                scenario = json.load(file)
            big = "generate" in scenario
            if "devices" in scenario:
                platform += ["--context", scenario["devices"][0]["name"]]
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

    def test_the_rows_of_either_version_are_all_rows(self):
        for view in views:
            rows = json.loads(run("show", view, "--json", *home_router).stdout)
            ipv4 = json.loads(run("show", view, "-4", "--json", *home_router).stdout)
            ipv6 = json.loads(run("show", view, "-6", "--json", *home_router).stdout)
            self.assertEqual([row for row in rows if row in ipv4], ipv4, view)
            self.assertEqual([row for row in rows if row not in ipv4], ipv6, view)
            self.assertEqual((bool(ipv4), bool(ipv6)), (view != "advertisements", True), view)
            for row in rows:
                told = row.get("version") or row.get("address") or row.get("prefix")
                if told is not None:
                    self.assertEqual(row in ipv6, ":" in told or told == "ipv6", row)

    def test_all_counters_of_one_version(self):
        rows = json.loads(run("show", "statistics", "lan0", "--json", *home_router).stdout)
        for version, option in (("ipv4", "-4"), ("ipv6", "-6")):
            shown = json.loads(run("show", "statistics", "lan0", option, "--json", *home_router).stdout)
            self.assertEqual(shown, [{"counter": row["counter"], version: row[version]} for row in rows])

    def test_one_interface_is_the_rows_of_all_that_are_its_own(self):
        for view in set(views) - {"icmp", "statistics"}:
            rows = json.loads(run("show", view, "--json", *home_router).stdout)
            for name in ("wan0", "lan0", "guest0"):
                shown = json.loads(run("show", view, name, "--json", *home_router).stdout)
                self.assertEqual(shown, [row for row in rows if row["interface"] == name])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
