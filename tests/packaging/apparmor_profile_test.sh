#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# The profile is good AppArmor, and the unit asks for the one that it defines. Usage: apparmor_profile_test.sh PROFILE UNIT
set -eu

command -v apparmor_parser >/dev/null || {
    echo "skipped: apparmor_parser is not installed"
    exit 77
}
apparmor_parser --skip-kernel-load --skip-cache --quiet "$1"
name=$(apparmor_parser --names "$1")
echo "profile $name"
grep -qx "AppArmorProfile=-$name" "$2"
