# SPDX-License-Identifier: BSD-3-Clause
"""Makes of an unpacked image's settings for a runtime those of a container in the network that it is started in, with
nothing that it could do beyond what any user can: no capabilities, nothing to write to but /tmp and its state.

Usage: container_settings.py SETTINGS CONFIGURATION [COMMAND...] >config.json
"""
import json
import sys


def main(settings, configuration, *command):
    with open(settings, encoding="utf-8") as file:
        container = json.load(file)
    process = container["process"]
    process.update(terminal=False, noNewPrivileges=True, capabilities={})
    if command:
        process["args"] = list(command)
    container["root"]["readonly"] = True
    linux = container["linux"]
    linux["namespaces"] = [each for each in linux["namespaces"] if each["type"] != "network"]
    container["mounts"] += [
        {"destination": "/tmp", "type": "tmpfs", "source": "tmpfs", "options": ["nosuid", "nodev", "mode=1777"]},
        {"destination": "/var/lib/ipmibd", "type": "tmpfs", "source": "tmpfs",
         "options": ["nosuid", "nodev", f"uid={process['user']['uid']}", "mode=0750"]},
        {"destination": "/etc/snmp/ipmibd.conf", "type": "bind", "source": configuration, "options": ["bind", "ro"]},
    ]
    json.dump(container, sys.stdout)


if __name__ == "__main__":
    main(*sys.argv[1:])
