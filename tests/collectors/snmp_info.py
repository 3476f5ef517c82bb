# SPDX-License-Identifier: BSD-3-Clause
"""netdisco's library SNMP::Info, through a program of its own language."""
import json
import os
import subprocess
import sys
import tempfile

import mib_texts

script = os.path.dirname(os.path.abspath(__file__)) + "/snmp_info.pl"


def is_installed():
    return subprocess.run(["perl", "-MSNMP::Info::IPv6", "-e", "1"], capture_output=True, check=False).returncode == 0


def ask(target, communities, methods):
    """What the library's methods tell: {community: {method: value, or {row: value}}}."""
    with tempfile.TemporaryDirectory() as mibs:
        mib_texts.write(mibs)
        host, port = target.split(":")
        result = subprocess.run(["perl", script, host, port, mibs, ",".join(communities), *methods], capture_output=True,
                                text=True, timeout=1800, check=False)
    assert result.returncode == 0, result.stderr
    sys.stderr.write(result.stderr)
    return json.loads(result.stdout)
